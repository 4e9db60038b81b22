#include <fcntl.h>

#include <array>
#include <cctype>
#include <filesystem>
#include <fstream>

#include "host/failure.h"
#include "host/file.h"
#include "host/provenance.h"
#include "host/sound_file.h"
#include "host/ssff_reader.h"

namespace wavechain {
namespace {

using Object = nlohmann::ordered_json;

constexpr std::string_view RecordStart = "{\"wavechain\":";

std::string SoundComment(const std::string& path) {
  const File file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  SF_INFO info = {};
  const SoundFile sound(file.Descriptor(), SFM_READ, info);
  const char* comment =
      sound.Get() == nullptr ? nullptr : ::sf_get_string(sound.Get(), SF_STR_COMMENT);
  return comment == nullptr ? "" : comment;
}

// The line of a simple signal file's header; nothing in other files.
std::string SsffComment(const std::string& path) {
  constexpr std::string_view Key = "Comment CHAR ";
  std::ifstream file(path, std::ios::binary);
  std::string line(SsffMagic.size(), '\0');
  file.read(line.data(), static_cast<std::streamsize>(line.size()));
  if (line != SsffMagic) {
    return "";
  }
  while (std::getline(file, line) && !line.starts_with("-----")) {
    if (line.starts_with(Key)) {
      return line.substr(Key.size());
    }
  }
  return "";
}

std::string WholeFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  constexpr std::size_t Longest = 1 << 22;
  std::string text(Longest, '\0');
  file.read(text.data(), static_cast<std::streamsize>(text.size()));
  text.resize(static_cast<std::size_t>(file.gcount()));
  return text;
}

// The record that the text ends with, if it is one.
std::optional<Object> Found(const std::string& text) {
  Object json = Object::parse(text.begin(), text.end(), nullptr, false);
  const bool isRecord = json.is_object() && json.contains("wavechain");
  return isRecord ? std::optional(std::move(json)) : std::nullopt;
}

std::optional<Object> InComment(const std::string& comment) {
  const std::size_t start = comment.find(RecordStart);
  return start == std::string::npos ? std::nullopt : Found(comment.substr(start));
}

}  // namespace

bool IsRecord(const std::string& path) { return Found(WholeFile(path)).has_value(); }

Object ReadRecord(const std::string& path) {
  if (!std::ifstream(path).is_open() || std::filesystem::is_directory(path)) {
    Fail(ExitStatus::Input, "{}: cannot be opened: {}", path,
         std::filesystem::is_directory(path) ? "it is a folder" : SystemText(errno));
  }
  if (auto inside = InComment(SsffComment(path))) {
    return *inside;
  }
  if (auto inside = InComment(SoundComment(path))) {
    return *inside;
  }
  if (auto beside = Found(WholeFile(RecordPath(path)))) {
    return *beside;
  }
  if (auto itself = path.ends_with(".json") ? Found(WholeFile(path)) : std::nullopt) {
    return *itself;
  }
  Fail(ExitStatus::Input,
       "{}: carries no record of how it was made, nor is there one in {}; wavechain run writes it",
       path, RecordPath(path));
}

}  // namespace wavechain
