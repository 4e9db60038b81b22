#ifndef WAVEFILTERS_HOST_RUN_H
#define WAVEFILTERS_HOST_RUN_H

#include <optional>
#include <string>
#include <vector>

#include "host/chain_options.h"
#include "host/filter_library.h"
#include "host/log.h"
#include "host/signal_totals.h"

namespace wavechain {

/// Filters see the signal in blocks of this size, always: some results depend on it.
constexpr int BlockSamples = 4096;

/// What a record calls the input and the library, where it is made again from others of the same
/// content.
struct RecordedNames {
  std::string input;
  std::optional<std::string> library;
};

/// A chain as written for --track, and the name of what comes out of it.
struct TrackText {
  std::string name;
  std::string chain;  // "FILTER | FILTER ..."
};

/// What `wavechain run` was asked for.
struct RunRequest {
  std::string input;   // a path, or "-"; empty where silence is the input
  std::string output;  // a path, or "-"
  std::vector<ChainPart> chain;
  std::vector<TrackText> tracks;  // in place of the chain: several, side by side
  std::optional<std::string> library;
  std::optional<int> channel;
  std::optional<std::string> format;
  std::optional<std::string> encoding;
  bool force = false;
  bool quiet = false;
  bool allowTruncated = false;
  bool allowMissing = false;
  bool libraryTail = false;
  bool noValidity = false;
  std::optional<double> silence_s;  // with `rate`, in place of a recording
  std::optional<double> rate;       // Hz; of the silence, or of raw samples
  std::optional<std::string> type;  // of raw samples, where the recording has no header
  unsigned seed = 1;                // of the noise that FricSyn draws
  bool noRecord = false;            // nothing tells how the output was made
  std::optional<RecordedNames> recorded;
  /// The record of what stands at `output` (RecordLineOf): a run that would be recorded in the
  /// same words is left out.
  std::optional<std::string> earlier;
  /// Output and record of an earlier run give way together.
  bool remake = false;
};

/// The chains of a request, understood: for any number of runs.
struct ChainSet {
  std::vector<FilterCall> chain;
  std::vector<std::vector<FilterCall>> tracks;  // one for each of the request's
};

/// What came of a run.
struct RunResult {
  bool upToDate = false;  // it was left out
  SignalTotals totals = {};
};

/// Understands the request's chains. Fails (usage) where they are wrong.
ChainSet ReadChains(const RunRequest& request);

/// Pulls the recording through the chain into the output, which appears whole or not at all.
/// Fails with the status that the program is to end with.
void Run(const RunRequest& request);

/// The same with chains that were read and a library that was loaded before; says what there is to
/// say to the log.
RunResult Run(const RunRequest& request, const ChainSet& chains, const FilterLibrary& library,
              Log& log);

}  // namespace wavechain

#endif
