#include "host/impulse_source.h"

#include <algorithm>

namespace wavechain {

ImpulseSource::ImpulseSource(std::int64_t samples, double rate, std::int64_t instant)
    : HostSource({.length = samples, .interval_ms = 1000.0 / rate, .units = "", .name = "impulse"}),
      impulse(instant) {}

int ImpulseSource::TransmitNow(float* buffer, int count, int& produced) {
  const std::int64_t left = Info().length - delivered;
  produced = static_cast<int>(std::clamp<std::int64_t>(left, 0, std::max(count, 0)));
  std::fill_n(buffer, produced, 0.0F);
  if (impulse >= delivered && impulse < delivered + produced) {
    buffer[impulse - delivered] = 1.0F;
  }
  delivered += produced;
  return 0;
}

}  // namespace wavechain
