#ifndef WAVEFILTERS_VOICE_GLOT_PULSE_H
#define WAVEFILTERS_VOICE_GLOT_PULSE_H

#include <cstdint>

#include "voice/tract.h"

namespace wavefilters {

/// One glottal pulse, ready to be placed.
struct GlotPulse {
  int at = 0;               // the instant's place in the block
  std::int64_t period = 0;  // samples to the next pulse, 1 or more
  double amplitude = 0.0;
  double frequency_kHz = 0.0;  // of the resonance that shapes the rise
  double bandwidth_kHz = 0.0;
  Tract tract;
};

/// Pulses that are worked out side by side at the most.
inline constexpr int MostPulsesAtOnce = 8;

/// Adds `count` pulses (0 to MostPulsesAtOnce) to `out`, one after the other.
///
/// A pulse is a resonance run backwards in time, so that it grows toward the instant over
/// min(2 * period, at, 512) samples, filtered by the tract; then the tract's own ringing, for one
/// and a half periods or 1023 samples, its bandwidths widened further and further between 0.6
/// and 0.8 of the period, as an opening glottis damps it. What follows up to sample 1023 is 0.
/// `out` has at least 1023 samples behind each instant.
///
/// Each sample of a pulse waits for the one before: alone, a pulse is as slow as that chain.
/// Pulses of one block are therefore worked out in lanes, with the same bits.
void AddPulses(const GlotPulse* pulses, int count, double interval_ms, float* out);

}  // namespace wavefilters

#endif
