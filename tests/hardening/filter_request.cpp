#include "hardening/filter_request.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "hardening/plain_filter.h"
#include "support/guarded_buffer.h"
#include "support/temp_folder.h"

namespace hardening {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

struct Reader {
  const char* name;
  Kind kind;
  std::vector<double> params;
};

const std::vector<Reader>& Readers() {
  static const std::vector<Reader> readers = {
      {"BeamPel", support::BeamPel, {16}},        {"BeamData", support::BeamData, {8}},
      {"BeamData speed", support::BeamData, {5}}, {"GlotSyn", support::GlotSyn, {}},
      {"FricSyn", support::FricSyn, {}},          {"PulseSyn", support::PulseSyn, {}},
      {"SetTrack", support::SetTrack, {}}};
  return readers;
}

// The request's files under the names that filters look for beside a signal.
class Beside {
 public:
  explicit Beside(const Json& files) : signal(folder.Path("take.wav")) {
    // The pellet readers put the stem of the path in front of the whole path.
    const std::string pellets = folder.Path("take" + folder.Path("take.xyd"));
    fs::create_directories(fs::path(pellets).parent_path());
    for (const auto& [format, path] : files.items()) {
      const std::string link = format == "xyd"   ? pellets
                               : format == "pal" ? signal + "pal.dat"
                                                 : folder.Path("take." + format);
      fs::create_symlink(path.get<std::string>(), link);
    }
  }
  const char* Signal() const { return signal.c_str(); }

 private:
  support::TempFolder folder;
  std::string signal;
};

void Change(const std::string& how, const std::string& path) {
  if (how == "grow") {
    std::ofstream(path, std::ios::app) << std::string(5000, '7') << "\n1 2 3\n";
  } else if (how == "vanish") {
    fs::remove(path);
  } else if (how == "cut") {
    fs::resize_file(path, fs::file_size(path) / 3);
  } else if (how == "replace") {
    fs::remove(path);
    fs::create_directory(path);
  }
}

struct Digest {
  int came = 0;
  std::uint64_t bits = 0xcbf29ce484222325U;

  void Add(const float* samples, int count) {
    came += count;
    for (int i = 0; i < count; ++i) {
      bits = (bits ^ std::bit_cast<std::uint32_t>(samples[i])) * 0x100000001b3U;
    }
  }
};

void Require(bool holds, const std::string& what) {
  if (!holds) {
    throw std::runtime_error(what);
  }
}

Json PullAll(const Reader& reader, const char* signal, const Json& request) {
  constexpr int Block = 4096;
  PlainHost host;
  const int length = request.at("length");
  host.Describe(length, request.at("interval_ms"), signal);
  const std::string change = request.value("change", "");
  Digest digest;
  int announced = 0;
  {
    PlainFilter filter(reader.kind);
    filter.Set_param_list(reader.params);
    std::srand(1);
    filter.Attach(host, 1);
    announced = filter.Length();
    const int most = std::min(announced, length);
    bool changed = change.empty();
    while (!filter.EndOfSrc() && digest.came < most) {
      if (!changed && digest.came >= most / 2) {
        changed = true;
        Change(change, request.at("changing"));
      }
      support::GuardedBuffer buffer(Block);
      const int came = filter.Pull(buffer.data(), std::min(Block, most - digest.came));
      Require(came >= 0 && came <= Block, "a pull produced too much");
      digest.Add(buffer.data(), came);
    }
    filter.Dispose();
    Require(filter.Release() == 0, "a reference to the filter was left over");
  }
  Require(static_cast<bool>(host.Balanced()), host.Balanced().message());
  return {{"announced", announced}, {"came", digest.came}, {"bits", std::to_string(digest.bits)}};
}

}  // namespace

Json AnswerFilterRequest(const Json& request) {
  Json answer = Json::object();
  const Json only = request.value("only", Json());
  const Beside beside(request.at("files"));
  for (const Reader& reader : Readers()) {
    if (only.is_null() || only == reader.name) {
      answer[reader.name] = PullAll(reader, beside.Signal(), request);
    }
  }
  return answer;
}

}  // namespace hardening
