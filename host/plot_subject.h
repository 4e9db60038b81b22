#ifndef WAVEFILTERS_HOST_PLOT_SUBJECT_H
#define WAVEFILTERS_HOST_PLOT_SUBJECT_H

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/chain.h"
#include "host/plot_spectrogram.h"
#include "host/plot_trace.h"

namespace wavechain {

/// One signal of a picture: the recording itself, or what a chain makes of it. It is pulled
/// once, block by block, and only what the picture needs of it is kept.
class PlotSubject {
 public:
  /// What is to be drawn of it, and how finely.
  struct Grid {
    Range view_s = {};
    int columns = 1;
    std::optional<SpectrogramGrid> spectrogram = {};
  };

  /// Builds the chain, which may be empty, behind the source. `subjectName` is for scripts and
  /// messages. Fails as Chain does.
  PlotSubject(std::string subjectName, std::vector<FilterCall> filterCalls,
              const FilterLibrary& library, wavefilters::Ref<HostSource> source,
              const ChainSettings& settings, Log& log);

  const std::string& Name() const { return name; }
  const std::vector<FilterCall>& Calls() const { return calls; }
  const SignalInfo& Info() const { return chain->Output(); }
  double Duration_s() const;
  /// All files that are read for it beside its source.
  std::vector<std::string> Files() const { return chain->Files(); }
  /// The events that its filters render, a list for each file.
  const std::vector<EventInstants>& Events() const { return events; }
  /// A measure with a unit of its own, not a sound.
  bool IsTrack() const { return !Info().units.empty(); }

  /// Pulls the signal up to the end of the view; samples that have no data behind them become
  /// gaps of the line. `afterBlock` is called after each block, with
  /// the time reached (s). Fails (input) as Chain::Pull does.
  void Pull(const Grid& grid, const std::function<void(double time_s)>& afterBlock);

  /// What Pull has gathered. The spectrogram is there if it was asked for.
  const Trace& Line() const { return *trace; }
  const std::optional<Spectrogram>& Spectra() const { return spectrogram; }
  /// Samples pulled that are infinite or not a number.
  std::int64_t NonFinite() const { return nonFinite; }

 private:
  void AddToLine(const std::vector<float>& block, int count, std::int64_t start);

  std::string name;
  std::vector<FilterCall> calls;
  std::unique_ptr<Chain> chain;
  std::optional<Trace> trace;
  std::optional<Spectrogram> spectrogram;
  std::vector<EventInstants> events;
  std::int64_t nonFinite = 0;
};

}  // namespace wavechain

#endif
