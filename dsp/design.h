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

/// The kernel of a rational resampler: a sinc under a Blackman window (0.42, 0.5, 0.08; Blackman
/// and Tukey, "The Measurement of Power Spectra", 1958), times `upFactor` to make up for the zeros
/// between the inputs, modulated by cos(t * shift). `cutoff` and `shift` are fractions of the
/// high-rate Nyquist frequency; the cutoff is widened by `widen` divided by the half-length.
/// `taps` is odd and at least 1; a single tap is 1.
void DesignBlackmanSinc(float* coef, int taps, int upFactor, double cutoff, double shift,
                        double widen);

}  // namespace wavefilters

#endif
