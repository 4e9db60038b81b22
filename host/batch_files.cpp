#include "host/batch_files.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <map>

#include "host/audio_format.h"
#include "host/failure.h"
#include "host/file.h"
#include "host/host_arguments.h"
#include "host/manifest.h"
#include "host/provenance.h"
#include "host/text.h"
#include "host/track_run.h"

namespace wavechain {
namespace {

constexpr const char* Input = "input";
constexpr const char* Output = "output";
constexpr const char* ChannelColumn = "channel";

// What messages about a file begin with.
std::string PlaceOf(const BatchFile& file) { return file.place.empty() ? file.input : file.place; }

std::string UsualName(const std::string& input, const OutputFormat& format) {
  return fmt::format("{}.{}", std::filesystem::path(input).stem().string(), format.container->name);
}

void RequireColumns(const ManifestEntry& entry) {
  for (const auto& [column, value] : entry.values) {
    if (column == Input || column == Output || column == ChannelColumn || IsFileColumn(column)) {
      continue;
    }
    std::vector<std::string_view> known = FileArguments();
    known.insert(known.begin(), {Input, Output, ChannelColumn});
    Fail(ExitStatus::Usage, "{}: there is no column '{}'{}", entry.place, column,
         Suggestion(column, known));
  }
}

int ReadChannel(const std::string& text, const std::string& place) {
  const std::optional<double> number = ParseNumber(text);
  if (!number || *number < 1.0 || *number > 1e6 || *number != static_cast<int>(*number)) {
    Fail(ExitStatus::Usage, "{}: channel takes a whole number from 1, not '{}'", place, text);
  }
  return static_cast<int>(*number);
}

// `folder` is what names of files are relative to.
BatchFile ReadEntry(const ManifestEntry& entry, const std::string& folder) {
  RequireColumns(entry);
  BatchFile file;
  file.place = entry.place;
  for (const auto& [column, value] : entry.values) {
    if (value.empty()) {
      continue;
    }
    if (column == Input) {
      file.input = value == "-" ? value : InFolder(folder, value);
    } else if (column == Output) {
      file.name = value;
    } else if (column == ChannelColumn) {
      file.channel = ReadChannel(value, entry.place);
    } else {
      file.choices.push_back({column, InFolder(folder, value)});
    }
  }
  if (file.input.empty()) {
    Fail(ExitStatus::Usage, "{}: names no input", entry.place);
  }
  return file;
}

std::vector<BatchFile> Named(const BatchRequest& request) {
  std::vector<BatchFile> files;
  if (request.manifest) {
    const std::string& path = *request.manifest;
    const std::string folder = path.substr(0, path.rfind('/') + 1);
    for (const ManifestEntry& entry : ReadManifest(path)) {
      files.push_back(ReadEntry(entry, folder));
    }
    return files;
  }
  for (const std::string& input : request.inputs) {
    files.push_back({.input = input});
  }
  return files;
}

// Where the output goes: within the folder, whatever the name says.
void SettleOutput(BatchFile& file, const BatchRequest& request) {
  const RunRequest& run = request.run;
  if (file.name.empty()) {
    file.name = UsualName(file.input, ChooseFormat("-", run.format, run.encoding));
  }
  const auto name = std::filesystem::path(file.name).lexically_normal();
  if (name.is_absolute() || !name.has_filename() || *name.begin() == "..") {
    Fail(ExitStatus::Usage, "{}: output '{}' is no name of a file within {}", PlaceOf(file),
         file.name, request.folder);
  }
  file.name = name.string();
  file.output =
      InFolder(request.folder.ends_with('/') ? request.folder : request.folder + "/", file.name);
  const OutputFormat format = ChooseFormat(file.output, run.format, run.encoding);
  if (!run.tracks.empty()) {
    RequireTable(format);
  }
}

void RequireApart(const std::vector<BatchFile>& files) {
  std::map<std::string_view, const BatchFile*> outputs;
  for (const BatchFile& file : files) {
    const auto [other, isNew] = outputs.emplace(file.name, &file);
    if (!isNew) {
      Fail(ExitStatus::Usage,
           "{} and {} would both be written to {}; name their outputs in a manifest",
           PlaceOf(*other->second), PlaceOf(file), file.output);
    }
  }
  for (const BatchFile& file : files) {
    const auto other = outputs.find(RecordPath(file.name));
    if (other != outputs.end()) {
      Fail(ExitStatus::Usage, "{} would be written to {}, where the record of {} may stand",
           PlaceOf(*other->second), other->second->output, file.output);
    }
  }
}

// No output may replace what another file of the batch is made from.
void RequireUnread(const std::vector<BatchFile>& files, const BatchRequest& request) {
  const auto byPlace = [](const FileIdentity& a, const FileIdentity& b) {
    return std::pair(a.device, a.inode) < std::pair(b.device, b.inode);
  };
  std::map<FileIdentity, std::string, decltype(byPlace)> read(byPlace);
  const auto note = [&](const std::string& path) {
    if (const std::optional<FileIdentity> identity = IdentityOf(path)) {
      read.emplace(*identity, path);
    }
  };
  for (const BatchFile& file : files) {
    note(file.input);
    std::ranges::for_each(file.choices, note, &FileChoice::path);
  }
  for (const ChainPart& part : request.run.chain) {
    note(part.isFile ? part.text : "");
  }
  note(request.manifest.value_or(""));
  note(request.log.value_or(""));
  for (const BatchFile& file : files) {
    const std::optional<FileIdentity> identity = IdentityOf(file.output);
    const auto found = identity ? read.find(*identity) : read.end();
    if (found != read.end()) {
      Fail(ExitStatus::Usage, "{}: the output {} is {}, which the batch needs; name another --out",
           PlaceOf(file), file.output, found->second);
    }
  }
}

// Where a file is, or would be.
std::filesystem::path PlaceOnDisk(const std::filesystem::path& path) {
  std::error_code error;
  const std::filesystem::path folder = std::filesystem::absolute(path, error).parent_path();
  const std::filesystem::path real = std::filesystem::weakly_canonical(folder, error);
  return (error ? folder : real) / path.filename();
}

// A log that is not there yet is no file that is read, but must not come where an output will.
void RequireLogApart(const std::vector<BatchFile>& files, const std::string& log) {
  const std::filesystem::path place = PlaceOnDisk(log);
  for (const BatchFile& file : files) {
    for (const std::filesystem::path written : {file.output, RecordPath(file.output)}) {
      if (written.filename() == place.filename() && PlaceOnDisk(written) == place) {
        Fail(ExitStatus::Usage, "--log {}: is where {} or its record goes; name another log", log,
             file.output);
      }
    }
  }
}

}  // namespace

RunRequest BatchFile::Run(const BatchRequest& request) const {
  RunRequest run = request.run;
  run.input = input;
  run.output = output;
  run.quiet = true;
  run.remake = true;
  if (channel) {
    run.channel = channel;
  }
  return run;
}

std::vector<BatchFile> ListFiles(const BatchRequest& request, const ChainSet& chains) {
  std::vector<BatchFile> files = Named(request);
  if (files.empty()) {
    Fail(ExitStatus::Usage, "there is no file to run over; name some, or a list by --manifest");
  }
  for (BatchFile& file : files) {
    if (file.input == "-") {
      Fail(ExitStatus::Usage, "{}: standard input is no file of a batch; use wavechain run",
           PlaceOf(file));
    }
    SettleOutput(file, request);
    static_cast<void>(WithFiles(chains, file.choices, file.place));
    struct stat status = {};
    file.bytes = ::stat(file.input.c_str(), &status) == 0 ? status.st_size : 0;
  }
  RequireApart(files);
  RequireUnread(files, request);
  if (request.log) {
    RequireLogApart(files, *request.log);
  }
  return files;
}

}  // namespace wavechain
