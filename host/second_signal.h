#ifndef WAVEFILTERS_HOST_SECOND_SIGNAL_H
#define WAVEFILTERS_HOST_SECOND_SIGNAL_H

#include "host/audio_input.h"
#include "host/chain.h"
#include "host/host_arguments.h"
#include "host/recording_source.h"

namespace wavechain {

/// The second source of a filter: a recording of its own and the chain that it goes through.
class SecondSignal {
 public:
  /// Opens the recording and builds its chain. Fails as AudioInput and Chain do.
  SecondSignal(const FilterLibrary& library, const SignalText& text, ChainSettings settings,
               Log& log);

  /// What the filter is to be fed.
  BridgeSource& End() { return chain.End(); }
  /// The recording, and what its chain reads.
  std::vector<std::string> Files() const;
  /// As Chain::Missing.
  const std::optional<Gaps>& Missing() const { return chain.Missing(); }
  /// What it is made of.
  const AudioInput& Recording() const { return input; }
  const SignalInfo& Source() const { return source->Info(); }
  const std::vector<ChainStep>& Steps() const { return chain.Steps(); }
  /// The recording's name, for messages.
  const std::string& Name() const { return input.Name(); }
  /// Fails (input) where the recording gave out early or a filter stalls.
  void RequireFlow() const;
  /// Warns of odd samples in the recording.
  void WarnOfInput(Log& log) const;

 private:
  AudioInput input;
  wavefilters::Ref<RecordingSource> source;
  Chain chain;
};

}  // namespace wavechain

#endif
