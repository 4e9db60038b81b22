#include "host/rerun.h"

#include <fmt/ranges.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <new>
#include <utility>

#include "host/failure.h"
#include "host/file.h"
#include "host/filter_library.h"
#include "host/out_of_memory.h"
#include "host/plot.h"
#include "host/provenance.h"
#include "host/run.h"
#include "host/sha256.h"
#include "host/unfinished.h"

namespace wavechain {
namespace {

constexpr std::string_view Beside = ".json";

// A folder that is gone at the end.
class ScratchFolder {
 public:
  ScratchFolder() : folder(TemporaryFolder() + "/wavechain-XXXXXX") {
    if (::mkdtemp(folder.data()) == nullptr) {
      const int error = errno;
      Fail(ExitStatus::Output, "cannot make a temporary folder in {}: {}; set TMPDIR",
           TemporaryFolder(), SystemText(error));
    }
  }
  ~ScratchFolder() { RemoveWithContents(folder); }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  std::string Path(const std::string& name) const { return folder + "/" + name; }

 private:
  std::string folder;
  TemporaryPath abandoned{folder};
};

std::string Absolute(const std::string& path) {
  return path == "-" ? path : std::filesystem::absolute(path).string();
}

void RequireSame(const FileRecord& file, const std::string& path, const std::string& hint) {
  const std::optional<std::string> now = Sha256(path);
  if (now == file.sha256) {
    return;
  }
  if (!now) {
    Fail(ExitStatus::Input, "{}: cannot be opened: {}; {}", path, SystemText(errno), hint);
  }
  if (!file.sha256) {
    Fail(ExitStatus::Input, "{}: was not there when the output was made", path);
  }
  Fail(ExitStatus::Input, "{}: is not the file that the output was made from: SHA-256 {}, not {}",
       path, now->substr(0, 16), file.sha256->substr(0, 16));
}

void RequireInputs(const Provenance& record, const RerunRequest& request) {
  constexpr const char* Hint = "name the folder that it is relative to by --folder DIR";
  if (record.input && record.input->name == "-" && !request.input) {
    Fail(ExitStatus::Input,
         "{}: was made from standard input; save that in a file and name it by --input FILE",
         request.file);
  }
  if (record.input) {
    RequireSame(*record.input, request.input.value_or(record.input->name),
                fmt::format("{}, or the recording by --input FILE", Hint));
  }
  for (const FileRecord& file : record.files) {
    RequireSame(file, file.name, Hint);
  }
}

// A file may come from anybody, its record with it, and to load a library is to run it: one other
// than the usual one has to be named by whoever calls, not by the record.
void RequireLibrary(const Provenance& record, const RerunRequest& request) {
  if (record.givenLibrary && !request.library) {
    Fail(
        ExitStatus::Input,
        "{}: was made with the library {}, which a record alone does not have loaded; if you trust "
        "it, name it by --library FILE",
        request.file, OneLine(*record.givenLibrary));
  }
  if (request.otherLibrary) {
    return;
  }
  constexpr const char* Hint = "--other-library takes what is there";
  if (record.program != WAVECHAIN_VERSION || record.block != BlockSamples) {
    Fail(ExitStatus::Input, "{}: was made by wavechain {}, this is {}; {}", request.file,
         record.program, WAVECHAIN_VERSION, Hint);
  }
  const std::string path = FilterLibrary(request.library).Path();
  if (Sha256(path) != record.library.sha256) {
    Fail(ExitStatus::Input, "{}: was made with another library than {}; {}", request.file, path,
         Hint);
  }
}

PlotRequest AsPlot(const Provenance& record, const RerunRequest& request) {
  PlotRequest plot;
  plot.input = record.input ? request.input.value_or(record.input->name) : "";
  plot.recorded = {record.input ? record.input->name : "", record.givenLibrary};
  for (const std::string& filter : record.filters) {
    plot.chain.push_back({false, filter});
  }
  for (const TrackRecord& track : record.tracks) {
    plot.tracks.push_back(fmt::format("{}={}", track.name, fmt::join(track.filters, " | ")));
  }
  plot.library = request.library;
  plot.channel = record.channel;
  plot.type = record.type;
  plot.format = record.format;
  plot.silence_s = record.silence_s;
  plot.rate = record.rate;
  plot.seed = record.seed;
  plot.allowTruncated = record.allowTruncated;
  plot.allowMissing = record.allowMissing;
  plot.libraryTail = record.libraryTail;
  plot.response = record.picture->response;
  plot.phase = record.picture->phase;
  plot.from_s = record.picture->from_s;
  plot.to_s = record.picture->to_s;
  plot.highest_Hz = record.picture->highest_Hz;
  plot.window_ms = record.picture->window_ms;
  plot.dynamics_dB = record.picture->dynamics_dB;
  plot.size = record.picture->size;
  plot.force = request.force;
  plot.quiet = request.quiet;
  return plot;
}

RunRequest AsRun(const Provenance& record, const RerunRequest& request) {
  RunRequest run;
  run.input = record.input ? request.input.value_or(record.input->name) : "";
  run.recorded = {record.input ? record.input->name : "", record.givenLibrary};
  for (const std::string& filter : record.filters) {
    run.chain.push_back({false, filter});
  }
  for (const TrackRecord& track : record.tracks) {
    run.tracks.push_back({track.name, fmt::format("{}", fmt::join(track.filters, " | "))});
  }
  run.library = request.library;
  run.channel = record.channel;
  run.format = record.format;
  run.encoding = record.encoding;
  run.allowTruncated = record.allowTruncated;
  run.allowMissing = record.allowMissing;
  run.libraryTail = record.libraryTail;
  run.noValidity = record.noValidity;
  run.silence_s = record.silence_s;
  run.rate = record.rate;
  run.type = record.type;
  run.seed = record.seed;
  run.force = request.force;
  run.quiet = request.quiet;
  return run;
}

void Make(const Provenance& record, const RerunRequest& request, const std::string& output) {
  if (record.picture) {
    PlotRequest plot = AsPlot(record, request);
    plot.output = output;
    Plot(plot);
    return;
  }
  RunRequest run = AsRun(record, request);
  run.output = output;
  Run(run);
}

// The first byte at which two files differ; nothing where they do not.
std::optional<std::int64_t> FirstDifference(const std::string& one, const std::string& other) {
  errno = 0;
  std::ifstream a(one, std::ios::binary);
  std::ifstream b(other, std::ios::binary);
  if (!(a.is_open() && b.is_open()) && errno == ENOMEM) {
    throw std::bad_alloc();
  }
  const std::istreambuf_iterator<char> end;
  std::int64_t at = 0;
  std::istreambuf_iterator<char> fromA(a);
  std::istreambuf_iterator<char> fromB(b);
  for (; fromA != end && fromB != end; ++fromA, ++fromB, ++at) {
    if (*fromA != *fromB) {
      return at;
    }
  }
  return fromA == fromB ? std::nullopt : std::optional(at);
}

void RequireEqual(const std::string& file, const std::string& again) {
  const std::optional<std::int64_t> at = FirstDifference(file, again);
  RequireMemory();
  if (at) {
    Fail(ExitStatus::Input, "{}: is not what its record makes: they differ from byte {} on", file,
         *at);
  }
}

}  // namespace

std::string Rerun(const RerunRequest& asked) {
  RerunRequest request = asked;
  const Provenance record = Provenance::FromJson(ReadRecord(request.file), request.file);
  std::string made = request.file.ends_with(Beside)
                         ? request.file.substr(0, request.file.size() - Beside.size())
                         : request.file;
  if (request.folder) {
    made = Absolute(made);
    request.output = request.output ? std::optional(Absolute(*request.output)) : std::nullopt;
    if (::chdir(request.folder->c_str()) != 0) {
      Fail(ExitStatus::Input, "--folder {}: {}", *request.folder, SystemText(errno));
    }
  }
  RequireLibrary(record, request);
  RequireInputs(record, request);
  if (request.output) {
    Make(record, request, *request.output);
    return "";
  }
  const ScratchFolder scratch;
  const std::string again = scratch.Path("again");
  const bool tells = !std::exchange(request.quiet, true);
  Make(record, request, again);
  RequireEqual(made, again);
  if (std::filesystem::exists(RecordPath(again))) {
    RequireEqual(RecordPath(made), RecordPath(again));
  }
  return !tells ? "" : fmt::format("{}: made again, byte for byte\n", OneLine(made));
}

}  // namespace wavechain
