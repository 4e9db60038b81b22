#ifndef WAVEFILTERS_VOICE_GLOT_SYN_H
#define WAVEFILTERS_VOICE_GLOT_SYN_H

#include "voice/event_track.h"
#include "voice/glot_pulse.h"

namespace wavefilters {

/// Adds glottal pulses, each shaped by a vocal tract, to its input.
///
/// The file beside the signal, ".gpl", has one pulse a line: instant (ms), amplitude, frequency
/// and bandwidth (kHz) of the resonance that shapes the pulse, then up to 256 log-area ratios
/// (base 2) of the tract. A pulse is that resonance run backwards in time, so that it grows
/// toward the instant, filtered by the tract, and then the tract's own ringing: up to 512
/// samples before the instant and 1023 after it. The period, from a pulse to the next one,
/// limits both; that of the last pulse reaches to the end of the block in which it is rendered.
/// A pulse whose period is not above 0 is left out. No parameters.
class GlotSyn : public EventTrack {
 public:
  void Apply(float* out, int count, int start) override;

 protected:
  GlotSyn() : EventTrack(".gpl") {}
  ~GlotSyn() = default;

 private:
  bool ReadResonance(GlotPulse& pulse);

  GlotPulse pulses[MostPulsesAtOnce];  // read, and not yet added
};

}  // namespace wavefilters

#endif
