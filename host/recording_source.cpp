#include "host/recording_source.h"

#include <bit>

namespace wavechain {

RecordingSource::RecordingSource(AudioInput& recording)
    : HostSource({.length = recording.Length(),
                  .interval_ms = 1000.0 / recording.Rate(),
                  .fullScale = 1.0,
                  .units = "",
                  .name = recording.Path()}),
      input(recording) {}

int RecordingSource::TransmitNow(float* buffer, int count, int& produced) {
  produced = count > 0 ? input.Read(buffer, count) : 0;
  nonFinite += CountNonFinite(buffer, produced);
  return 0;
}

bool RecordingSource::EndOfSrc() { return input.AtEnd(); }

std::int64_t CountNonFinite(const float* samples, int count) {
  // All bits of the exponent set, tested on integers so that the loop becomes SIMD.
  constexpr std::uint32_t Exponent = 0x7f800000U;
  std::int32_t found = 0;
  for (int i = 0; i < count; ++i) {
    found += (std::bit_cast<std::uint32_t>(samples[i]) & Exponent) == Exponent ? 1 : 0;
  }
  return found;
}

}  // namespace wavechain
