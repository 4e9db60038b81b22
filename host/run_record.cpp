#include "host/run_record.h"

#include <sndfile.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <new>
#include <system_error>

#include "host/failure.h"
#include "host/interrupt.h"
#include "host/sha256.h"

namespace wavechain {
namespace {

// libsndfile reads no longer ones back from WAV files.
constexpr std::size_t LongestComment = 2000;

bool HasRoom(const OutputFormat& format, const std::string& comment) {
  if (format.container->kind == ContainerKind::Ssff ||
      format.container->kind == ContainerKind::Npz) {
    return true;
  }
  const int type = format.container->type;
  const bool hasComment = type == SF_FORMAT_WAV || type == SF_FORMAT_FLAC ||
                          type == SF_FORMAT_AIFF || type == SF_FORMAT_RF64 || type == SF_FORMAT_CAF;
  return hasComment && comment.size() <= LongestComment;
}

FileRecord LibraryRecord(const FilterLibrary& library) {
  std::error_code error;
  const std::filesystem::path path = library.Path();
  const std::filesystem::path real = std::filesystem::canonical(path, error);
  if (error == std::errc::not_enough_memory) {
    throw std::bad_alloc();
  }
  return {(error ? path : real).filename().string(), library.Hash()};
}

std::vector<std::string> Texts(const std::vector<FilterCall>& calls) {
  std::vector<std::string> texts;
  texts.reserve(calls.size());
  for (const FilterCall& call : calls) {
    texts.push_back(call.Text());
  }
  return texts;
}

}  // namespace

void RecordFiles(const std::vector<std::string>& paths, Provenance& record) {
  std::vector<FileRecord>& files = record.files;
  for (const std::string& path : paths) {
    if (std::ranges::find(files, path, &FileRecord::name) == files.end()) {
      files.push_back({path, Sha256(path)});
    }
  }
}

Provenance RecordOfInput(const RunRequest& request, const FilterLibrary& library,
                         const AudioInput* file) {
  Provenance record;
  record.program = WAVECHAIN_VERSION;
  record.library = LibraryRecord(library);
  record.givenLibrary = request.recorded ? request.recorded->library : request.library;
  if (file != nullptr) {
    record.input = {request.recorded ? request.recorded->input : request.input,
                    Sha256(file->Descriptor())};
  }
  record.channel = request.channel;
  record.type = request.type;
  record.silence_s = request.silence_s;
  record.rate = request.rate;
  record.seed = request.seed;
  record.block = BlockSamples;
  record.allowTruncated = request.allowTruncated;
  record.allowMissing = request.allowMissing;
  record.libraryTail = request.libraryTail;
  record.noValidity = request.noValidity;
  return record;
}

Provenance RecordOf(const RunRequest& request, const OutputFormat& format,
                    const FilterLibrary& library, const AudioInput* file) {
  Provenance record = RecordOfInput(request, library, file);
  record.format = format.container->name;
  if (format.IsSound()) {
    record.encoding = std::string(format.encoding->name);
  }
  return record;
}

void RecordChain(const std::vector<FilterCall>& calls, const Chain& chain, Provenance& record) {
  record.filters = Texts(calls);
  record.unit = chain.Output().units;
  record.fullScale = chain.Output().fullScale;
  RecordFiles(chain.Files(), record);
}

void RecordTrack(const std::string& name, const std::vector<FilterCall>& calls, const Chain& chain,
                 Provenance& record) {
  record.tracks.push_back({name, Texts(calls), chain.Output().units, chain.Output().fullScale});
  RecordFiles(chain.Files(), record);
}

RecordKeeper::RecordKeeper(const RunRequest& request, const OutputFormat& format,
                           const Provenance& record, const std::string& words)
    : comment(CommentOf(format.container->kind == ContainerKind::Npz ? "" : words, record)),
      makesWay(request.remake),
      replaces(request.force) {
  if (HasRoom(format, comment)) {
    return;
  }
  comment = words;
  if (request.output == "-") {
    lost = true;
    return;
  }
  const std::string path = RecordPath(request.output);
  // A record whose output is gone makes way for the next one.
  const bool replace = request.force || IsRecord(path);
  CheckTarget(path, replace, std::nullopt);
  std::vector<std::string> read = {record.input ? record.input->name : "-"};
  std::ranges::transform(record.files, std::back_inserter(read), &FileRecord::name);
  RequireNotRead(path, read);
  beside = OpenOutput(path, replace);
  const std::string text =
      record.Json().dump(2, ' ', true, nlohmann::ordered_json::error_handler_t::replace) + "\n";
  if (const int error = WriteAll(beside->Descriptor(), text.data(), text.size())) {
    StopIfInterrupted();
    Fail(ExitStatus::Output, "{}: cannot be written: {}", path, SystemText(error));
  }
}

// A record must never stand beside an output of another run, whenever the program is killed.
void RecordKeeper::MakeWay(const std::string& name) const {
  const bool outdated = makesWay && IsRecord(RecordPath(name));
  if (replaces && (outdated || (makesWay && beside))) {
    OutputFile::Remove(name);
  }
  if (outdated && !beside) {
    OutputFile::Remove(RecordPath(name));
  }
}

void RecordKeeper::CommitWith(OutputFile& output, const OutputFormat& format, Log& log) {
  if (lost) {
    log.Report(fmt::format("record {}: {} has no room to tell how it was made", output.Name(),
                           format.container->name));
  }
  output.Settle();
  if (beside) {
    beside->Settle();
  }
  MakeWay(output.Name());
  if (!beside) {
    output.Commit();
    return;
  }
  beside->Commit();
  try {
    output.Commit();
  } catch (...) {
    // Whatever stands there has another history.
    beside->Withdraw();
    throw;
  }
}

}  // namespace wavechain
