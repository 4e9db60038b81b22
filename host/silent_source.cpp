#include "host/silent_source.h"

#include <algorithm>

namespace wavechain {

SilentSource::SilentSource(std::int64_t samples, double rate)
    : HostSource(
          {.length = samples, .interval_ms = 1000.0 / rate, .units = "", .name = "silence"}) {}

int SilentSource::TransmitNow(float* buffer, int count, int& produced) {
  const std::int64_t left = Info().length - delivered;
  produced = static_cast<int>(std::clamp<std::int64_t>(left, 0, std::max(count, 0)));
  std::fill_n(buffer, produced, 0.0F);
  delivered += produced;
  return 0;
}

}  // namespace wavechain
