#include "host/batch_report.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <new>
#include <utility>

#include "host/interrupt.h"
#include "host/parse_json.h"
#include "host/print.h"
#include "host/provenance.h"
#include "host/text.h"

namespace wavechain {
namespace {

using Object = nlohmann::ordered_json;
using Clock = std::chrono::steady_clock;

constexpr const char* Made = "done";
constexpr const char* UpToDate = "up-to-date";
constexpr const char* Failed = "failed";

double Seconds(Clock::duration time) { return std::chrono::duration<double>(time).count(); }

// Made member by member: a list in braces whose memory runs out half-way is lost.
Object FileJson(const BatchFile& file, const char* status, ExitStatus exitStatus) {
  Object json = Object::object();
  json["input"] = file.input;
  json["output"] = file.output;
  json["status"] = status;
  json["exit_status"] = static_cast<int>(exitStatus);
  json["seconds"] = 0.0;
  for (const char* const open : {"samples", "peak", "nan", "infinite"}) {
    json[open] = nullptr;
  }
  json["warnings"] = Object::array();
  json["error"] = nullptr;
  return json;
}

Object FailureJson(const BatchFile& file, ExitStatus status, const std::string& message) {
  Object json = FileJson(file, Failed, status);
  json["error"] = OneLine(message);
  return json;
}

void PutTotals(const SignalTotals& totals, Object& json) {
  json["samples"] = totals.samples;
  // The shortest number that reads back as the same sample.
  json["peak"] = *ParseNumber(fmt::format("{}", totals.peak));
  json["nan"] = totals.nan;
  json["infinite"] = totals.infinite;
}

// An output may be replaced where its record shows that it was made by a run; it is left where
// that was this very run.
RunRequest Prepared(const BatchFile& file, const BatchRequest& request) {
  RunRequest run = file.Run(request);
  if (!run.force && IdentityOf(run.output)) {
    run.earlier = RecordLineOf(run.output);
    run.force = run.earlier.has_value();
    if (!run.force) {
      Fail(ExitStatus::Output,
           "{}: exists already, and carries no record of how it was made; --force replaces it",
           run.output);
    }
  }
  return run;
}

Object Answered(const BatchFile& file, const BatchRequest& request, const ChainSet& chains,
                const FilterLibrary& library, Log& log) {
  try {
    const ChainSet own = WithFiles(chains, file.choices, file.place);
    const RunResult result = Run(Prepared(file, request), own, library, log);
    Object json = FileJson(file, result.upToDate ? UpToDate : Made, ExitStatus::Done);
    if (!result.upToDate) {
      PutTotals(result.totals, json);
    }
    return json;
  } catch (const Failure& failure) {
    return FailureJson(file, failure.Status(), failure.what());
  } catch (const std::bad_alloc&) {
    return FailureJson(file, ExitStatus::Input, "out of memory");
  } catch (const std::exception& error) {
    return FailureJson(file, ExitStatus::Input, error.what());
  }
}

std::string TimeText(double seconds) {
  const auto whole = static_cast<long long>(std::ceil(seconds));
  return whole < 3600 ? fmt::format("{}:{:02}", whole / 60, whole % 60)
                      : fmt::format("{}:{:02}:{:02}", whole / 3600, whole / 60 % 60, whole % 60);
}

std::string CountText(std::size_t count, std::string_view noun) {
  return Counted(static_cast<long long>(count), noun);
}

}  // namespace

std::string RunFile(const BatchFile& file, const BatchRequest& request, const ChainSet& chains,
                    const FilterLibrary& library) {
  const auto start = Clock::now();
  Log log(true);
  Object json = Answered(file, request, chains, library, log);
  constexpr double Digits = 1e6;
  json["seconds"] = std::round(Seconds(Clock::now() - start) * Digits) / Digits;
  for (const LogLine& line : log.Kept()) {
    json["warnings"].push_back(line.text);
  }
  return RecordLine(json);
}

BatchReport::BatchReport(const BatchRequest& batchRequest, const std::vector<BatchFile>& batchFiles)
    : request(batchRequest),
      files(batchFiles),
      log(batchRequest.run.quiet, ::isatty(STDERR_FILENO) != 0) {
  if (request.log) {
    logFile = File(::open(request.log->c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666));
    if (!logFile->IsOpen()) {
      Fail(ExitStatus::Output, "--log {}: cannot be opened: {}", *request.log, SystemText(errno));
    }
  }
  for (const BatchFile& file : files) {
    bytesLeft += file.bytes;
  }
}

void BatchReport::Take(const Workers::Answer& answer) {
  const BatchFile& file = files[answer.number];
  std::optional<Object> answered = ParseObject<Object>(answer.text);
  Object json = answered ? std::move(*answered) : FailureJson(file, ExitStatus::Input, answer.end);
  const auto status = static_cast<ExitStatus>(json["exit_status"].get<int>());
  if (status == ExitStatus::Interrupted && Interrupted()) {
    return;
  }
  if (status != ExitStatus::Done) {
    if (failed == 0 || answer.number < firstFailed) {
      firstFailed = answer.number;
      firstStatus = status;
    }
    const std::string error = json["error"].get<std::string>();
    const bool named = error.starts_with(OneLine(file.input));
    log.Warn(fmt::format("wavechain: {}{}{}", named ? "" : file.input, named ? "" : ": ", error));
  }
  log.ClearProgress();
  Write(RecordLine(json) + "\n");
  Count(json["status"].get<std::string>(), file.bytes);
}

void BatchReport::Write(const std::string& line) {
  if (!logFile) {
    Print(line);
    return;
  }
  if (const int error = WriteAll(logFile->Descriptor(), line.data(), line.size())) {
    StopIfInterrupted();
    Fail(ExitStatus::Output, "--log {}: cannot be written: {}", *request.log, SystemText(error));
  }
}

void BatchReport::Count(const std::string& status, std::int64_t bytes) {
  bytesLeft -= bytes;
  if (status == Made) {
    ++made;
    bytesRun += bytes;
  } else if (status == UpToDate) {
    ++upToDate;
    // Those that were looked at before the first run say nothing of how long a run takes.
    runStart = bytesRun == 0 ? Clock::now() : runStart;
  } else {
    ++failed;
  }
}

void BatchReport::Progress() {
  log.Progress([this] { return ProgressText(); });
}

std::string BatchReport::ProgressText() const {
  constexpr std::size_t Width = 24;
  const std::size_t settled = made + upToDate + failed;
  const std::size_t marks = Width * settled / files.size();
  std::string text = fmt::format("[{:.<{}}] {:3} %  {} of {}", std::string(marks, '#'), Width,
                                 100 * settled / files.size(), settled, files.size());
  if (failed > 0) {
    text += fmt::format(", {} failed", failed);
  }
  if (bytesRun > 0) {
    text += fmt::format(", {} left",
                        TimeText(Seconds(Clock::now() - runStart) * static_cast<double>(bytesLeft) /
                                 static_cast<double>(bytesRun)));
  }
  return text;
}

void BatchReport::Finish() {
  log.ClearProgress();
  const std::size_t open = files.size() - made - upToDate - failed;
  if (Interrupted()) {
    Fail(ExitStatus::Interrupted,
         "interrupted; {} of {} to do, which the same command goes on with", open,
         CountText(files.size(), "file"));
  }
  if (failed > 0) {
    Fail(firstStatus, "{} of {} failed{}", failed, CountText(files.size(), "file"),
         open == 0 ? std::string()
                   : fmt::format(", {} not begun; --keep-going goes on behind a failure", open));
  }
  log.Report(fmt::format("done   {} made, {} up to date, in {:.3f} s", CountText(made, "file"),
                         upToDate, Seconds(Clock::now() - start)));
}

}  // namespace wavechain
