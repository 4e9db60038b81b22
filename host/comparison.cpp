#include "host/comparison.h"

#include <cmath>

namespace wavechain {

// Infinities of one sign are equal, though their difference is no number.
double Difference::Size() const { return a == b ? 0.0 : std::abs(a - b); }

void Comparison::Add(const double* a, const double* b, int frames) {
  for (int i = 0; i < frames; ++i) {
    for (int channel = 0; channel < channels; ++channel) {
      AddPair(*a++, *b++, i, channel);
    }
  }
  position += frames;
}

void Comparison::AddPair(double a, double b, int frame, int channel) {
  const Difference difference = {position + frame, channel, a, b};
  const bool noNumberA = std::isnan(a);
  const bool noNumberB = std::isnan(b);
  const bool comparable = !noNumberA && !noNumberB;
  bool differs = noNumberA != noNumberB;
  oneSided += differs ? 1 : 0;
  if (comparable) {
    const double size = difference.Size();
    differs = size > tolerance;
    ++pairs;
    squaresA += static_cast<long double>(a) * a;
    squaresB += static_cast<long double>(b) * b;
    squaresDifference += static_cast<long double>(size) * size;
    if (size > (greatest ? greatest->Size() : 0.0)) {
      greatest = difference;
    }
  }
  if (differs) {
    ++differing;
    first = first ? first : difference;
  }
}

double Comparison::Rms(long double squares) const {
  return pairs == 0 ? 0.0
                    : static_cast<double>(std::sqrt(squares / static_cast<long double>(pairs)));
}

}  // namespace wavechain
