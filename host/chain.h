#ifndef WAVEFILTERS_HOST_CHAIN_H
#define WAVEFILTERS_HOST_CHAIN_H

#include <memory>
#include <vector>

#include "frame/ref.h"
#include "host/bridge_source.h"
#include "host/filter_arguments.h"
#include "host/filter_data.h"
#include "host/filter_library.h"
#include "host/log.h"

namespace wavechain {

/// The filters of one run, connected in order behind a source, with a bridge of the host's
/// before each of them and one at the end.
class Chain {
 public:
  /// Builds every filter and sets it up in the order that filters rely on. Reports go to the
  /// log, none with a quiet one. Fails (usage) where a filter is not in the library, or where
  /// its parameters do not suit the rate that it is fed, and (input) where a data file is
  /// missing. The calls and the options must outlive it, as the library and the log must.
  Chain(const FilterLibrary& library, wavefilters::Ref<HostSource> source,
        const std::vector<FilterCall>& calls, const DataOptions& options, Log& log);
  /// Disposes of everything from the last filter up, then releases it.
  ~Chain();
  Chain(const Chain&) = delete;
  Chain& operator=(const Chain&) = delete;

  /// What the chain delivers, as its last filter announces it.
  const SignalInfo& Output() const { return bridges.back()->Info(); }
  /// Pulls up to `count` samples and returns how many came: fewer only at the end. Fails
  /// (input) when a filter stops delivering without reporting an end.
  int Pull(float* samples, int count);
  /// True once the last sample has been pulled.
  bool AtEnd() { return bridges.back()->EndOfSrc(); }

 private:
  // Where the chain ends for now: what it delivers, and what a bridge is to make of it.
  struct Tail {
    wavefilters::Ref<wavefilters::IWaveFilterC> upstream;
    SignalInfo delivered;
    BridgeSettings settings;
  };

  void Append(const FilterLibrary& library, const FilterCall& call, const DataOptions& options,
              Log& log);
  BridgeSource& Bridge();
  void SettleEnd(const FilterCall& call, const SignalInfo& fed, const DataOptions& options,
                 Log& log);

  Tail tail;
  std::vector<std::unique_ptr<FilterData>> data;  // goes after the filters that read it
  std::vector<const FilterKind*> kinds;
  std::vector<wavefilters::Ref<BridgeSource>> bridges;  // one more than filters
};

}  // namespace wavechain

#endif
