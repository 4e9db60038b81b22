#ifndef WAVEFILTERS_HOST_RUN_STEPS_H
#define WAVEFILTERS_HOST_RUN_STEPS_H

#include <chrono>
#include <new>
#include <string>
#include <vector>

#include "host/chain.h"
#include "host/provenance.h"
#include "host/run_input.h"

namespace wavechain {

// What running one chain and running several side by side have in common.

/// Fails (output) where the output may not be written, or is the input or a second signal.
void CheckTargets(const RunRequest& request, const std::vector<FilterCall>& calls);

/// Whether the output that stands there already is just what this record would make.
bool IsUpToDate(const RunRequest& request, const Provenance& record);

/// How a chain finds its data, `place` leading its messages.
ChainSettings SettingsOf(const RunRequest& request, const std::string& place = "");

/// The lines of report about the input, about the filters (behind a head of seven characters), and
/// about samples without data, where an output may have no place to tell them from zeros.
void ReportInput(const RunInput& input, Log& log);
void ReportChain(const std::vector<FilterCall>& calls, const std::string& name, Log& log);
/// How long the run took, and how that compares with what it was fed.
void ReportSpeed(std::chrono::steady_clock::time_point start, const RunInput& input, Log& log);
void ReportMissing(const Chain& chain, const std::string& name, std::int64_t samples, Log& log);

/// Reports, with the line that `text` makes, on an output that has its name by now. Nothing may
/// fail any more: where memory is missing, the line is.
template <class Text>
void Mention(Log& log, Text text) {
  try {
    log.Report(text());
  } catch (const std::bad_alloc&) {
    return;
  }
}

}  // namespace wavechain

#endif
