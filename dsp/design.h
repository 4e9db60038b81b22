#ifndef WAVEFILTERS_DSP_DESIGN_H
#define WAVEFILTERS_DSP_DESIGN_H

namespace wavefilters {

inline constexpr int MaxHalfLen = 2048;
inline constexpr int MaxTaps = 2 * MaxHalfLen + 1;

/// A Hamming window (0.54 - 0.46 cos; R. W. Hamming, "Digital Filters", 1977) of `taps`
/// points, scaled to the sum 1: a smoothing average with unit gain at zero frequency. The
/// window's sum has the closed form 0.54 n - 0.46. One tap divides zero by zero and is
/// not-a-number, as it stands. Nothing is written for `taps` below 1.
void DesignHammingAverage(float* coef, int taps);

/// A notch: the unit impulse minus a band-pass of seven cosines, spaced one cycle per
/// window (1/taps cycles a sample) around `frequency` (Hz), the outermost pair weighted by
/// `edgeWeight`. `interval_s` is the sampling interval in seconds. Centred on taps / 2.
/// Writes within coef[0 .. taps) whatever `taps` is.
void DesignNotch(float* coef, int taps, double interval_s, double frequency, double edgeWeight);

}  // namespace wavefilters

#endif
