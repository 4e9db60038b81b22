#ifndef WAVEFILTERS_HOST_CHAIN_H
#define WAVEFILTERS_HOST_CHAIN_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "frame/ref.h"
#include "host/bridge_source.h"
#include "host/filter_arguments.h"
#include "host/filter_data.h"
#include "host/filter_library.h"
#include "host/log.h"
#include "host/number_stream.h"

namespace wavechain {

class SecondSignal;

/// One filter of a chain, as it was set up. A call that became several filters has a step for
/// each of its stages.
struct ChainStep {
  std::size_t number = 0;  // of the call, from 1
  std::size_t stage = 0;   // from 1; 0 where there is just one filter
  FilterCall call = {};
  /// What was said of its data files, by a log that keeps its lines.
  std::vector<LogLine> notes = {};
  /// What it hands on, and the library's own label of that.
  SignalInfo delivered = {};
  std::string libraryUnits = {};
  double libraryFullScale = 0.0;
  /// Samples that have no data behind them; nothing for a signal that does not come from data.
  std::optional<std::int64_t> missing = std::nullopt;
  /// Of filters with two sources; the chain holds it.
  const SecondSignal* second = nullptr;
};

struct ChainSettings {
  DataOptions data = {};
  /// Second recordings may be cut short.
  bool allowTruncated = false;
  /// Stands before each filter's number in messages, for the chain of a second signal.
  std::string place = {};
};

/// The filters of one run, connected in order behind a source, with a bridge of the host's
/// before each of them and one at the end. One call may become several filters: resampling
/// goes in stages.
class Chain {
 public:
  /// Builds every filter and sets it up in the order that filters rely on. Reports go to the
  /// log, none with a quiet one. Fails (usage) where a filter is not in the library, or where
  /// its parameters do not suit the rate that it is fed, nor its second signal the first, and
  /// (input) where a data file is missing or a second recording cannot be read. The calls must
  /// outlive it, as the library and the log must.
  Chain(const FilterLibrary& filterLibrary, wavefilters::Ref<HostSource> source,
        const std::vector<FilterCall>& calls, ChainSettings chainSettings, Log& chainLog);
  /// Disposes of everything from the last filter up, then releases it.
  ~Chain();
  Chain(const Chain&) = delete;
  Chain& operator=(const Chain&) = delete;

  /// The filters in order.
  const std::vector<ChainStep>& Steps() const { return steps; }
  /// What the chain delivers, as its last filter announces it.
  const SignalInfo& Output() const { return bridges.back()->Info(); }
  /// Which samples of it have no data behind them, where it comes from a track; a signal that
  /// does not has no such thing.
  const std::optional<Gaps>& Missing() const { return gaps; }
  /// All files that are read for it beside its source: data files, found or not, and second
  /// recordings with theirs.
  std::vector<std::string> Files() const;
  /// The events that its filters render, a list for each file.
  std::vector<EventInstants> Events() const;
  /// Pulls up to `count` samples and returns how many came: fewer only at the end. Fails
  /// (input) as RequireFlow does.
  int Pull(float* samples, int count);
  /// True once the last sample has been pulled.
  bool AtEnd() { return bridges.back()->EndOfSrc(); }

  /// The source of what the chain delivers.
  BridgeSource& End() { return *bridges.back().Get(); }
  /// Fails (input) when a filter stopped delivering without reporting an end, when a second
  /// recording gave out early, or when data files could not be read on or have changed.
  void RequireFlow() const;
  /// Warns of odd samples in second recordings.
  void WarnOfInputs() const;

 private:
  // Where the chain ends for now: what it delivers, and what a bridge is to make of it.
  struct Tail {
    wavefilters::Ref<wavefilters::IWaveFilterC> upstream;
    SignalInfo delivered;
    BridgeSettings settings;
  };

  void Append(const FilterCall& call, const std::string& label);
  void AppendStages(const FilterCall& call, const std::string& label);
  void AppendFilter(const FilterCall& call, const std::string& label);
  BridgeSource* OpenSecond(const FilterCall& call, const std::string& label);
  BridgeSource& Bridge();
  void SettleEnd(const FilterCall& call, const SignalInfo& fed);
  void NoteStep(const FilterCall& call, const SignalInfo& announced);
  void SettleGaps(const FilterCall& call);

  const FilterLibrary& library;
  Log& log;
  ChainSettings settings;
  Tail tail;
  std::optional<Gaps> gaps;
  // These go after the filters that read them.
  std::vector<std::unique_ptr<FilterData>> data;
  std::vector<std::unique_ptr<SecondSignal>> seconds;
  std::vector<wavefilters::Ref<NumberStream>> streams;
  std::vector<ChainStep> steps;
  std::vector<std::string> labels;                      // of the filters
  std::vector<wavefilters::Ref<BridgeSource>> bridges;  // one more than filters
};

}  // namespace wavechain

#endif
