#ifndef WAVEFILTERS_HOST_PLOT_H
#define WAVEFILTERS_HOST_PLOT_H

#include <optional>
#include <string>
#include <vector>

#include "host/chain_options.h"
#include "host/run.h"

namespace wavechain {

/// What `wavechain plot` was asked for.
struct PlotRequest {
  std::string input;   // a path, or "-"; empty where there is no recording
  std::string output;  // a path, or "-"
  std::vector<ChainPart> chain;
  std::vector<std::string> tracks;  // "NAME=FILTER | FILTER"
  std::optional<std::string> library;
  std::optional<int> channel;
  std::optional<std::string> format;
  std::optional<double> from_s;
  std::optional<double> to_s;
  std::optional<std::string> size;  // "1200x800"
  double window_ms = 15.0;
  double dynamics_dB = 70.0;
  std::optional<double> highest_Hz;
  std::optional<double> silence_s;  // with `rate`, in place of a recording
  std::optional<double> rate;       // Hz; of silence, raw samples, or a response
  std::optional<std::string> type;  // of raw samples, where the recording has no header
  bool response = false;            // of the chains, in place of signals
  bool phase = false;
  unsigned seed = 1;
  bool force = false;
  bool quiet = false;
  bool layout = false;
  bool allowTruncated = false;
  bool allowMissing = false;
  bool libraryTail = false;
  bool noRecord = false;  // the picture does not carry how it was made
  std::optional<RecordedNames> recorded;
};

/// Draws the recording, what the chain makes of it, and its tracks, or the frequency response of
/// the chains, as a picture that appears
/// whole or not at all. Returns what lies where in it, as JSON, where that was asked for.
/// Fails with the status that the program is to end with.
std::string Plot(const PlotRequest& request);

}  // namespace wavechain

#endif
