#ifndef WAVEFILTERS_HOST_BRIDGE_SOURCE_H
#define WAVEFILTERS_HOST_BRIDGE_SOURCE_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/host_source.h"

namespace wavechain {

class BridgeSource;

/// What a bridge makes of the signal that passes over it.
struct BridgeSettings {
  /// The name under which the next filter knows the signal.
  std::optional<std::string> name = std::nullopt;
  /// The signal ends here at the latest.
  std::optional<std::int64_t> length = std::nullopt;
  /// With `length`: nothing but the length ends the signal, whatever the upstream says of
  /// its end. For filters that never report one, or report it while samples still wait.
  bool endsByLengthAlone = false;
  /// All that feed the upstream, where it has several sources. The signal then ends once each
  /// of them has ended and the longest of them has been forwarded whole, whatever the upstream
  /// says: its end may come while samples still wait in it. They must outlive the bridge's use.
  std::vector<BridgeSource*> sources = {};
  /// Zeros appended behind the end.
  std::int64_t silence = 0;
};

/// What the settings make of the description of a signal.
SignalInfo Amended(SignalInfo info, const BridgeSettings& settings);

/// The host's own source between two filters of a chain: it forwards the samples, and can
/// rename the signal, cut it to a length, end it by its length, and append silence, in this
/// order. Everything the host does at the ends of a filter is done here.
///
/// It keeps to what a source promises, also where the filter before it does not: as many
/// samples as asked for until the end, never more, and an end that is known as soon as the
/// last sample has been delivered.
class BridgeSource : public HostSource {
 public:
  /// Requests of 0 and below get 0 samples; nothing upstream is asked.
  int TransmitNow(float* buffer, int count, int& produced) override;
  /// Disposes of the upstream and lets go of it; then the signal has ended.
  void Dispose() override;
  bool EndOfSrc() override;
  void EnableInPlace(bool flag) override;

  /// Samples forwarded so far, appended silence included.
  std::int64_t Delivered() const { return forwarded + silenceSent; }
  /// The upstream was asked again and again, gave nothing, and did not end: the bridge has
  /// ended the signal for it.
  bool Stalled() const { return stalled; }

 protected:
  /// Takes over the reference. `delivered` describes what the upstream delivers, before the
  /// settings.
  BridgeSource(wavefilters::Ref<wavefilters::IWaveFilterC> before, const SignalInfo& delivered,
               const BridgeSettings& bridgeSettings);
  ~BridgeSource() = default;

 private:
  std::optional<std::int64_t> KnownLength() const;
  bool UpstreamEnded();
  bool MayAsk();
  int Forward(float* buffer, int count);
  int AppendSilence(float* buffer, int count);

  wavefilters::Ref<wavefilters::IWaveFilterC> upstream;
  BridgeSettings settings;
  std::int64_t forwarded = 0;
  std::int64_t silenceSent = 0;
  bool asked = false;
  bool stalled = false;
};

}  // namespace wavechain

#endif
