#include <archive.h>
#include <archive_entry.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <memory>
#include <new>
#include <sstream>

#include "host/failure.h"
#include "host/parse_json.h"
#include "host/picture_comment.h"
#include "host/provenance.h"
#include "host/regular_file.h"
#include "host/sound_file.h"
#include "host/ssff_reader.h"

namespace wavechain {
namespace {

using Object = nlohmann::ordered_json;

constexpr std::size_t WholeLimit = 1 << 22;  // of a record, in bytes
constexpr std::string_view RecordStart = "{\"wavechain\":";

std::string SoundComment(int descriptor) {
  ::lseek(descriptor, 0, SEEK_SET);
  SF_INFO info = {};
  // Where it finds no memory for the comment, it is silent about that.
  errno = 0;
  const SoundFile sound(descriptor, SFM_READ, info);
  if (errno == ENOMEM) {
    throw std::bad_alloc();
  }
  const char* comment =
      sound.Get() == nullptr ? nullptr : ::sf_get_string(sound.Get(), SF_STR_COMMENT);
  return comment == nullptr ? "" : comment;
}

// The line of a simple signal file's header; nothing in other files.
std::string SsffComment(int descriptor) {
  constexpr std::string_view Key = "Comment CHAR ";
  if (ReadPart(descriptor, 0, SsffMagic.size()) != SsffMagic) {
    return "";
  }
  std::istringstream header(ReadPart(descriptor, SsffMagic.size(), WholeLimit));
  std::string line;
  while (std::getline(header, line) && !line.starts_with("-----")) {
    if (line.starts_with(Key)) {
      return line.substr(Key.size());
    }
  }
  return "";
}

// That there is no such member would not be true.
void RequireMemory(archive* zip) {
  if (::archive_errno(zip) == ENOMEM) {
    throw std::bad_alloc();
  }
}

// A member of a file of arrays; nothing in other files.
std::string NpzComment(int descriptor) {
  constexpr std::string_view Magic = "PK";
  if (ReadPart(descriptor, 0, Magic.size()) != Magic) {
    return "";
  }
  const std::unique_ptr<archive, decltype(&::archive_read_free)> zip(::archive_read_new(),
                                                                     &::archive_read_free);
  constexpr std::size_t BlockBytes = 1 << 16;
  if (!zip || ::archive_read_support_format_zip_seekable(zip.get()) != ARCHIVE_OK) {
    throw std::bad_alloc();
  }
  ::lseek(descriptor, 0, SEEK_SET);
  if (::archive_read_open_fd(zip.get(), descriptor, BlockBytes) != ARCHIVE_OK) {
    RequireMemory(zip.get());
    return "";
  }
  archive_entry* entry = nullptr;
  while (::archive_read_next_header(zip.get(), &entry) == ARCHIVE_OK) {
    const char* const member =
        ::archive_entry_pathname(entry);  // none where it cannot be converted
    if (member != nullptr && std::string_view(member) == "record.json") {
      std::string text(WholeLimit, '\0');
      const la_ssize_t came = ::archive_read_data(zip.get(), text.data(), text.size());
      text.resize(static_cast<std::size_t>(std::max<la_ssize_t>(came, 0)));
      RequireMemory(zip.get());
      return text;
    }
  }
  RequireMemory(zip.get());
  return "";
}

// Nothing where it is no regular file.
std::string WholeFile(const std::string& path) {
  const File file = OpenRegularFile(path);
  return file.IsOpen() ? ReadPart(file.Descriptor(), 0, WholeLimit) : "";
}

[[noreturn]] void CannotOpen(const std::string& path, int error) {
  std::error_code none;
  const std::filesystem::file_status status = std::filesystem::status(path, none);
  const bool isOther = std::filesystem::is_other(status);
  Fail(ExitStatus::Input, "{}: cannot be opened: {}", path,
       std::filesystem::is_directory(status) ? "it is a folder"
       : isOther                             ? "it is no regular file"
                                             : SystemText(error));
}

// The record that the text ends with, if it is one.
std::optional<Object> Found(const std::string& text) {
  std::optional<Object> json = ParseObject<Object>(text);
  if (json && !json->contains("wavechain")) {
    json.reset();
  }
  return json;
}

std::optional<Object> InComment(const std::string& comment) {
  const std::size_t start = comment.find(RecordStart);
  return start == std::string::npos ? std::nullopt : Found(comment.substr(start));
}

}  // namespace

std::optional<std::string> RecordLineOf(const std::string& path) {
  try {
    return RecordLine(ReadRecord(path));
  } catch (const Failure&) {
    return std::nullopt;
  }
}

bool IsRecord(const std::string& path) { return Found(WholeFile(path)).has_value(); }

Object ReadRecord(const std::string& path) {
  const File file = OpenRegularFile(path);
  if (!file.IsOpen()) {
    CannotOpen(path, errno);
  }
  for (const auto commentOf : {SsffComment, NpzComment, PictureComment, SoundComment}) {
    if (auto inside = InComment(commentOf(file.Descriptor()))) {
      return *inside;
    }
  }
  if (auto beside = Found(WholeFile(RecordPath(path)))) {
    return *beside;
  }
  if (auto itself = path.ends_with(".json") ? Found(WholeFile(path)) : std::nullopt) {
    return *itself;
  }
  Fail(ExitStatus::Input,
       "{}: carries no record of how it was made, nor is there one in {}; wavechain run and plot "
       "write it",
       path, RecordPath(path));
}

}  // namespace wavechain
