#ifndef WAVEFILTERS_VOICE_FRIC_SYN_H
#define WAVEFILTERS_VOICE_FRIC_SYN_H

#include <cstdint>

#include "voice/event_track.h"
#include "voice/tract.h"

namespace wavefilters {

/// Adds bursts of shaped noise to its input.
///
/// The file beside the signal, ".fla", has one burst a line: instant of the centre (ms), RMS of
/// the noise before its window, then up to 256 log-area ratios (base 2) of a tract filter. A
/// burst is noise under a half sine of 10 ms, through a first difference, a resonance at 50 Hz and
/// the tract filter; it ends 20 ms after its start or 1024 samples after its centre.
///
/// The noise comes from the C library's rand(), one call for each sample under the window, and
/// is never seeded here: a host that wants the same noise again calls srand(). Bursts too close
/// to the start of the block, and intervals with no sample (above 5 ms) or more than 7168 of
/// them in 5 ms, give no burst and draw no noise. No parameters.
class FricSyn : public EventTrack {
 public:
  using EventTrack::Init;
  void Init(double interval_ms) override;
  void Apply(float* out, int count, int start) override;

 protected:
  FricSyn() : EventTrack(".fla") {}
  ~FricSyn() = default;

 private:
  void PutPulse(float* out, int at) const;
  void DrawNoise(float* w, int count) const;
  void Shape(float* w, int count) const;

  std::int32_t halfWindow = 0;  // samples in 5 ms
  double noiseAmplitude = 0.0;
  Tract tract;
};

}  // namespace wavefilters

#endif
