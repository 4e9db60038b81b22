#include "host/bridge_source.h"

#include <algorithm>

namespace wavechain {
namespace {

// A resampler may take many pulls before it has an output to give: 2^31 high-rate steps at
// thousands a pull. Beyond this many empty ones nothing will come.
constexpr int MostEmptyDeliveries = 1 << 20;

}  // namespace

SignalInfo Amended(SignalInfo info, const BridgeSettings& settings) {
  info.name = settings.name.value_or(info.name);
  if (settings.length) {
    info.length =
        settings.endsByLengthAlone ? *settings.length : std::min(info.length, *settings.length);
  }
  info.length += settings.silence;
  return info;
}

BridgeSource::BridgeSource(wavefilters::Ref<wavefilters::IWaveFilterC> before,
                           const SignalInfo& delivered, const BridgeSettings& bridgeSettings)
    : HostSource(Amended(delivered, bridgeSettings)),
      upstream(std::move(before)),
      settings(bridgeSettings) {}

int BridgeSource::TransmitNow(float* buffer, int count, int& produced) {
  produced = 0;
  if (count > 0) {
    produced = Forward(buffer, count);
    produced += AppendSilence(buffer + produced, count - produced);
  }
  return 0;
}

void BridgeSource::Dispose() {
  if (upstream) {
    upstream->Dispose();
    upstream.Reset();
  }
}

bool BridgeSource::EndOfSrc() { return UpstreamEnded() && silenceSent >= settings.silence; }

void BridgeSource::EnableInPlace(bool flag) {
  if (upstream) {
    upstream->EnableInPlace(flag);
  }
}

// How many samples the upstream is to deliver in all, as soon as that is certain. For several
// sources it is what they delivered: announced lengths may be one short.
std::optional<std::int64_t> BridgeSource::KnownLength() const {
  if (settings.sources.empty() ||
      !std::ranges::all_of(settings.sources, [](BridgeSource* s) { return s->EndOfSrc(); })) {
    return settings.length;
  }
  std::int64_t longest = 0;
  for (const BridgeSource* source : settings.sources) {
    longest = std::max(longest, source->Delivered());
  }
  return std::min(longest, settings.length.value_or(longest));
}

bool BridgeSource::UpstreamEnded() {
  if (!upstream || stalled) {
    return true;
  }
  if (const std::optional<std::int64_t> length = KnownLength(); length && forwarded >= *length) {
    return true;
  }
  return settings.sources.empty() && !settings.endsByLengthAlone && upstream->EndOfSrc();
}

bool BridgeSource::MayAsk() { return upstream && (!asked || !UpstreamEnded()); }

// The first request goes through even where the upstream has already ended: on an empty
// recording that is when the in-place filters give their report.
int BridgeSource::Forward(float* buffer, int count) {
  int filled = 0;
  int empty = 0;
  while (filled < count && MayAsk()) {
    asked = true;
    int want = count - filled;
    if (const std::optional<std::int64_t> length = KnownLength()) {
      want = static_cast<int>(std::min<std::int64_t>(want, *length - forwarded));
    }
    int came = 0;
    upstream->TransmitNow(buffer + filled, want, came);
    came = std::clamp(came, 0, want);
    filled += came;
    forwarded += came;
    empty = came > 0 ? 0 : empty + 1;
    stalled = empty > MostEmptyDeliveries;
  }
  return filled;
}

int BridgeSource::AppendSilence(float* buffer, int count) {
  if (count <= 0 || !UpstreamEnded()) {
    return 0;
  }
  const auto zeros = static_cast<int>(
      std::min<std::int64_t>(count, std::max<std::int64_t>(settings.silence - silenceSent, 0)));
  std::fill_n(buffer, zeros, 0.0F);
  silenceSent += zeros;
  return zeros;
}

}  // namespace wavechain
