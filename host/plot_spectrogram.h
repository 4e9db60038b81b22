#ifndef WAVEFILTERS_HOST_PLOT_SPECTROGRAM_H
#define WAVEFILTERS_HOST_PLOT_SPECTROGRAM_H

#include <complex>
#include <cstdint>
#include <kissfft/kissfft.hh>
#include <optional>
#include <vector>

#include "host/plot_axis.h"

namespace wavechain {

/// The raster of a spectrogram: a cell a pixel.
struct SpectrogramGrid {
  Range view_s = {};
  int columns = 1;
  double highest_Hz = 1.0;  // rows share 0 to here
  int rows = 1;
  double window_s = 0.01;  // length of the Hann window
};

/// The power of a signal over time and frequency, column by column. It takes the samples as they
/// come, and as much memory as the raster and a window.
///
/// Each column is the mean of the power spectra whose windows are centred within it, half a
/// window apart at the most; a row is the strongest of the frequencies within it. Levels are in
/// dB: a sine of amplitude 1 has 0.
class Spectrogram {
 public:
  Spectrogram(const SpectrogramGrid& raster, double interval_s);

  /// The next samples; the first one of all belongs to time 0.
  void Add(const float* samples, int count);
  /// After the last sample: the signal is silent from here on.
  void Finish();

  /// The level of a cell (dB), rows counted from the lowest frequency. Nothing where there is no
  /// signal at that time, where it is not finite, and beyond half its sampling rate.
  std::optional<double> Level(int column, int row) const;
  /// The greatest level (dB); nothing where there is none above -200 dB.
  std::optional<double> Greatest() const;

 private:
  double Centre(std::int64_t frame) const;
  std::int64_t Start(std::int64_t frame) const;
  void TransformWhatIsThere();
  void Transform();
  void AddPower(int column);
  void Forget();

  SpectrogramGrid grid;
  double interval;
  std::int64_t framesPerColumn;
  std::vector<double> window;
  double scale = 1.0;  // of the power, so that a full-scale sine has 1
  std::size_t points;  // of a transform
  kissfft<double> transform;
  std::vector<double> padded;
  std::vector<std::complex<double>> spectrum;

  std::vector<float> held;    // samples that a window may still need
  std::int64_t heldFrom = 0;  // the number of the first of them
  std::int64_t received = 0;  // samples, in all
  std::int64_t nextFrame = 0;
  std::vector<double> power;  // columns x rows
  std::vector<int> frames;    // that each column is the mean of
};

}  // namespace wavechain

#endif
