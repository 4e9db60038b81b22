#ifndef WAVEFILTERS_BENCHES_PEERS_H
#define WAVEFILTERS_BENCHES_PEERS_H

#include <functional>
#include <vector>

namespace wavefilters::bench {

/// Sampling-rate converters of other libraries, all behind one call.

/// Takes `count` inputs and writes what they bring to `out`, which has room for all of it;
/// returns how many outputs came. Keeps its state from call to call.
using Converter = std::function<int(const float* in, int count, float* out, int room)>;

/// A kernel of this library's resampler, whatever the factors are.
struct Kernel {
  const char* name;
  int reach;      // samples of the lower rate on each side of an output
  double cutoff;  // in parts of that rate's Nyquist frequency
};

struct Peer {
  const char* name;
  Converter (*make)(int up, int down);
  /// Kernels to compare it with: one that reaches as far as its own, and the shortest one that
  /// passes as wide a band and lets through no stronger images of it (see QualityOf).
  Kernel matches[2];
};

/// zita-resampler at half-length 32, speexdsp at quality 5, libsamplerate's fastest sinc.
extern const Peer Peers[3];

/// What a converter to the double rate does to a band, from its answer to an impulse.
struct Quality {
  double edge;       // the highest frequency, in parts of the inputs' Nyquist frequency, that is
                     // passed with less than 1 dB of loss
  double images_dB;  // the strongest image of the band up to 0.8, against the band itself
};
Quality QualityOf(const std::vector<float>& impulseResponse);

}  // namespace wavefilters::bench

#endif
