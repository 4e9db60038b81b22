#include "host/run_steps.h"

#include <unistd.h>

#include "host/failure.h"
#include "host/host_arguments.h"
#include "host/input_report.h"
#include "host/output_file.h"
#include "host/text.h"

namespace wavechain {
namespace {

// No second signal may be replaced.
void CheckSecondSignals(const RunRequest& request, const std::vector<FilterCall>& calls) {
  for (const FilterCall& call : calls) {
    if (call.second) {
      CheckTarget(request.output, request.force, IdentityOf(call.second->path));
      CheckSecondSignals(request, call.second->filters);
    }
  }
}

}  // namespace

void CheckTargets(const RunRequest& request, const std::vector<FilterCall>& calls) {
  CheckTarget(request.output, request.force,
              request.input == "-" ? IdentityOf(STDIN_FILENO) : IdentityOf(request.input));
  CheckSecondSignals(request, calls);
}

bool IsUpToDate(const RunRequest& request, const Provenance& record) {
  return request.earlier && *request.earlier == RecordLine(record.Json());
}

ChainSettings SettingsOf(const RunRequest& request, const std::string& place) {
  const std::string& known = request.recorded ? request.recorded->input : request.input;
  return {.data = {known == "-" ? "" : known, request.allowMissing, request.libraryTail},
          .allowTruncated = request.allowTruncated,
          .place = place};
}

void ReportInput(const RunInput& input, Log& log) {
  const SignalInfo& signal = input.Source()->Info();
  if (input.File() == nullptr) {
    log.Report(fmt::format("read   silence: {} Hz, {}", NumberText(1000.0 / signal.interval_ms),
                           LengthText(signal.length, signal.interval_ms)));
    return;
  }
  ReportInput(*input.File(), log);
}

void ReportChain(const std::vector<FilterCall>& calls, const std::string& name, Log& log) {
  for (std::size_t i = 0; i < calls.size(); ++i) {
    log.Report(
        fmt::format("{}  {}", i == 0 ? name : std::string(name.size(), ' '), calls[i].Text()));
  }
}

void ReportSpeed(std::chrono::steady_clock::time_point start, const RunInput& input, Log& log) {
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
  Mention(log, [&] {
    return fmt::format("done   in {:.3f} s, {:.0f} times real time", elapsed.count(),
                       input.Seconds() / elapsed.count());
  });
}

void ReportMissing(const Chain& chain, const std::string& name, std::int64_t samples, Log& log) {
  if (const std::int64_t missing = chain.Missing() ? chain.Missing()->Samples(samples) : 0) {
    log.Report(fmt::format("gaps   {}{} of {} have no data behind them and are no measurement",
                           name, missing, Counted(samples, "sample")));
  }
}

}  // namespace wavechain
