#ifndef WAVEFILTERS_HOST_BATCH_REPORT_H
#define WAVEFILTERS_HOST_BATCH_REPORT_H

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/batch_files.h"
#include "host/failure.h"
#include "host/file.h"
#include "host/log.h"
#include "host/workers.h"

namespace wavechain {

/// Runs one file of a batch and tells in JSON what came of it, whatever that is.
std::string RunFile(const BatchFile& file, const BatchRequest& request, const ChainSet& chains,
                    const FilterLibrary& library);

/// What a batch tells: a line of JSON for every file as it ends, failures and, on a terminal, how
/// far it has come on standard error.
class BatchReport {
 public:
  /// `files` are those that will be run. Fails (output) where the request's log cannot be opened.
  BatchReport(const BatchRequest& request, const std::vector<BatchFile>& files);

  /// Takes what came of a file. Fails (output) where it cannot be written.
  void Take(const Workers::Answer& answer);
  void Progress();
  bool HasFailed() const { return failed > 0; }
  /// The last line. Fails with the status of the first file in the list that failed, or
  /// (interrupted).
  void Finish();

 private:
  void Write(const std::string& line);
  void Count(const std::string& status, std::int64_t bytes);
  std::string ProgressText() const;

  const BatchRequest& request;
  const std::vector<BatchFile>& files;
  Log log;
  std::optional<File> logFile;
  std::size_t made = 0;
  std::size_t upToDate = 0;
  std::size_t failed = 0;
  std::size_t firstFailed = 0;
  ExitStatus firstStatus = ExitStatus::Done;
  // The time left goes by the files that really are run.
  std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
  std::chrono::steady_clock::time_point runStart = start;
  std::int64_t bytesRun = 0;
  std::int64_t bytesLeft = 0;
};

}  // namespace wavechain

#endif
