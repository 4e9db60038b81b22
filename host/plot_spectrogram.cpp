#include "host/plot_spectrogram.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>

namespace wavechain {
namespace {

std::size_t WindowLength(const SpectrogramGrid& grid, double interval_s) {
  constexpr double Shortest = 4;
  constexpr double Longest = 1 << 20;
  return static_cast<std::size_t>(
      std::clamp(std::round(grid.window_s / interval_s), Shortest, Longest));
}

// So many that no row is without a frequency of its own.
std::size_t TransformLength(const SpectrogramGrid& grid, double interval_s) {
  constexpr double Most = 1 << 20;
  const double wanted = std::min(grid.rows / (grid.highest_Hz * interval_s), Most);
  return std::bit_ceil(
      std::max(WindowLength(grid, interval_s), static_cast<std::size_t>(std::ceil(wanted))));
}

std::int64_t FramesPerColumn(const SpectrogramGrid& grid, double interval_s) {
  const double columnWidth_s = grid.view_s.Width() / grid.columns;
  const double halfWindow_s =
      0.5 * interval_s * static_cast<double>(WindowLength(grid, interval_s));
  return static_cast<std::int64_t>(std::max(1.0, std::ceil(columnWidth_s / halfWindow_s)));
}

}  // namespace

Spectrogram::Spectrogram(const SpectrogramGrid& raster, double interval_s)
    : grid(raster),
      interval(interval_s),
      framesPerColumn(FramesPerColumn(raster, interval_s)),
      window(WindowLength(raster, interval_s)),
      points(TransformLength(raster, interval_s)),
      transform(points / 2, false),
      padded(points),
      spectrum(points / 2),
      power(static_cast<std::size_t>(raster.columns) * static_cast<std::size_t>(raster.rows)),
      frames(static_cast<std::size_t>(raster.columns)) {
  double sum = 0.0;
  for (std::size_t i = 0; i < window.size(); ++i) {
    const double phase = 2.0 * std::numbers::pi * (static_cast<double>(i) + 0.5) /
                         static_cast<double>(window.size());
    window[i] = 0.5 - 0.5 * std::cos(phase);
    sum += window[i];
  }
  scale = 4.0 / (sum * sum);
}

// The middle of a frame, in samples.
double Spectrogram::Centre(std::int64_t frame) const {
  const double column = (static_cast<double>(frame) + 0.5) / static_cast<double>(framesPerColumn);
  return (grid.view_s.low + column * grid.view_s.Width() / grid.columns) / interval;
}

std::int64_t Spectrogram::Start(std::int64_t frame) const {
  return static_cast<std::int64_t>(
      std::ceil(Centre(frame) - 0.5 * static_cast<double>(window.size())));
}

void Spectrogram::Add(const float* samples, int count) {
  held.insert(held.end(), samples, samples + count);
  received += count;
  TransformWhatIsThere();
  Forget();
}

void Spectrogram::Finish() {
  const std::int64_t length = received;
  const auto lastFrame = static_cast<std::int64_t>(grid.columns) * framesPerColumn;
  const std::vector<float> silence(window.size());
  while (nextFrame < lastFrame && Centre(nextFrame) < static_cast<double>(length)) {
    Add(silence.data(), static_cast<int>(silence.size()));
  }
  // Frames centred behind the end show nothing but the end's own tail.
  for (int column = 0; column < grid.columns; ++column) {
    const double centre = Centre(static_cast<std::int64_t>(column) * framesPerColumn);
    if (centre >= static_cast<double>(length)) {
      frames[static_cast<std::size_t>(column)] = 0;
    }
  }
}

void Spectrogram::TransformWhatIsThere() {
  const auto lastFrame = static_cast<std::int64_t>(grid.columns) * framesPerColumn;
  const auto length = static_cast<std::int64_t>(window.size());
  while (nextFrame < lastFrame && Start(nextFrame) + length <= received) {
    Transform();
    ++nextFrame;
  }
}

void Spectrogram::Transform() {
  const std::int64_t start = Start(nextFrame);
  std::ranges::fill(padded, 0.0);
  for (std::size_t i = 0; i < window.size(); ++i) {
    const std::int64_t at = start + static_cast<std::int64_t>(i) - heldFrom;
    // What lies before the start of the signal is silence.
    const double sample = at < 0 ? 0.0 : static_cast<double>(held[static_cast<std::size_t>(at)]);
    if (!std::isfinite(sample)) {
      return;
    }
    padded[i] = window[i] * sample;
  }
  transform.transform_real(padded.data(), spectrum.data());
  AddPower(static_cast<int>(nextFrame / framesPerColumn));
}

void Spectrogram::AddPower(int column) {
  const double perRow = grid.highest_Hz / grid.rows;
  const double spacing = 1.0 / (interval * static_cast<double>(points));
  double* const cells =
      power.data() + static_cast<std::size_t>(column) * static_cast<std::size_t>(grid.rows);
  for (int row = 0; row < grid.rows; ++row) {
    const auto first = static_cast<std::size_t>(std::ceil(row * perRow / spacing));
    const auto end = static_cast<std::size_t>(std::ceil((row + 1) * perRow / spacing));
    double strongest = 0.0;
    for (std::size_t k = first; k < std::min(end, points / 2); ++k) {
      // The first value holds that at half the rate as its imaginary part, and no mirror image.
      const double squared =
          k == 0 ? 0.25 * spectrum[0].real() * spectrum[0].real() : std::norm(spectrum[k]);
      strongest = std::max(strongest, squared);
    }
    cells[row] += strongest * scale;
  }
  ++frames[static_cast<std::size_t>(column)];
}

void Spectrogram::Forget() {
  const std::int64_t keep = std::min(Start(nextFrame), received);
  // Now and then, so that what is kept is not moved for every few samples.
  const auto slack = static_cast<std::int64_t>(4 * window.size());
  if (keep - heldFrom > slack) {
    held.erase(held.begin(), held.begin() + (keep - heldFrom));
    heldFrom = keep;
  }
}

std::optional<double> Spectrogram::Level(int column, int row) const {
  const int count = frames[static_cast<std::size_t>(column)];
  const double low_Hz = grid.highest_Hz * row / grid.rows;
  if (count == 0 || low_Hz >= 0.5 / interval) {
    return std::nullopt;
  }
  constexpr double Least = 1e-20;
  const double mean = power[static_cast<std::size_t>(column) * static_cast<std::size_t>(grid.rows) +
                            static_cast<std::size_t>(row)] /
                      count;
  return 10.0 * std::log10(std::max(mean, Least));
}

std::optional<double> Spectrogram::Greatest() const {
  std::optional<double> greatest;
  for (int column = 0; column < grid.columns; ++column) {
    for (int row = 0; row < grid.rows; ++row) {
      const std::optional<double> level = Level(column, row);
      if (level && *level > -200.0 && *level > greatest.value_or(-200.0)) {
        greatest = level;
      }
    }
  }
  return greatest;
}

}  // namespace wavechain
