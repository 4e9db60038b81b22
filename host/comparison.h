#ifndef WAVEFILTERS_HOST_COMPARISON_H
#define WAVEFILTERS_HOST_COMPARISON_H

#include <cstdint>
#include <optional>

namespace wavechain {

/// A sample at which two signals differ.
struct Difference {
  std::int64_t frame = 0;  // from 0
  int channel = 0;         // from 0
  double a = 0.0;
  double b = 0.0;
  /// |a - b|; infinite where just one of the two is.
  double Size() const;
};

/// Compares two signals of as many channels block after block, and keeps what is worth telling.
/// Two samples that are both not a number count as the same, whatever their bits, as do 0 and
/// -0 and infinities of one sign. A number and a sample that is none always differ, by no size:
/// such pairs are counted, and left out of the sums.
class Comparison {
 public:
  /// Samples that lie no further apart than `tolerance` (0 or more) count as the same.
  Comparison(int channelCount, double most) : channels(channelCount), tolerance(most) {}

  /// The next frames of both, a sample of each channel in turn.
  void Add(const double* a, const double* b, int frames);

  /// Frames compared.
  std::int64_t Frames() const { return position; }
  std::int64_t Samples() const { return position * channels; }
  /// Samples that count as different.
  std::int64_t Differing() const { return differing; }
  /// Pairs of a number and a sample that is none.
  std::int64_t OneSided() const { return oneSided; }
  const std::optional<Difference>& First() const { return first; }
  /// The greatest of them all, also where the tolerance covers it; the first of equals.
  /// Nothing where all pairs of numbers are the same.
  const std::optional<Difference>& Greatest() const { return greatest; }

  /// Root mean square over the pairs of numbers: of a, of b, and of a - b. 0 without any pair.
  double RmsA() const { return Rms(squaresA); }
  double RmsB() const { return Rms(squaresB); }
  double RmsDifference() const { return Rms(squaresDifference); }

 private:
  void AddPair(double a, double b, int frame, int channel);
  double Rms(long double squares) const;

  int channels;
  double tolerance;
  std::int64_t position = 0;
  std::int64_t differing = 0;
  std::int64_t oneSided = 0;
  std::int64_t pairs = 0;
  // Wide enough for the squares of all doubles.
  long double squaresA = 0.0L;
  long double squaresB = 0.0L;
  long double squaresDifference = 0.0L;
  std::optional<Difference> first;
  std::optional<Difference> greatest;
};

}  // namespace wavechain

#endif
