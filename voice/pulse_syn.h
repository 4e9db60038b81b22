#ifndef WAVEFILTERS_VOICE_PULSE_SYN_H
#define WAVEFILTERS_VOICE_PULSE_SYN_H

#include "voice/event_track.h"

namespace wavefilters {

/// Writes single-sample impulses into its input.
///
/// The file beside the signal, ".gpm", has one impulse a line: instant (ms) and amplitude. The
/// sample at the instant is replaced by the negated amplitude. No parameters.
class PulseSyn : public EventTrack {
 public:
  void Apply(float* out, int count, int start) override;

 protected:
  PulseSyn() : EventTrack(".gpm") {}
  ~PulseSyn() = default;

 private:
  double amplitude = 0.0;
};

}  // namespace wavefilters

#endif
