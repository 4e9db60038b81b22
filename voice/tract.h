#ifndef WAVEFILTERS_VOICE_TRACT_H
#define WAVEFILTERS_VOICE_TRACT_H

namespace wavefilters {

inline constexpr int MaxTractOrder = 256;

/// All-pole filter of a vocal tract, 1 / A(z) with A(z) = a[0] + a[1] z^-1 + ... + a[P] z^-P
/// and a[0] = 1, made from log-area ratios.
///
/// The order of every sum fixes the bits of the result: sums start at +0 in single precision,
/// ascend, and are subtracted from a sample once.
class Tract {
 public:
  /// Takes `count` log-area ratios (base 2; 0 to 256 of them). None gives order 0.
  ///
  /// A ratio x gives the reflection coefficient k = (2^x - 1) / (2^x + 1); the step-up recursion
  /// makes the predictor of the coefficients (J. D. Markel and A. H. Gray, "Linear Prediction of
  /// Speech", 1976, chapters 2 and 5).
  void Set(const float* ratios, int count);

  int Order() const { return order; }
  /// a[j], for j = 0 .. Order().
  float Coefficient(int j) const { return a[j]; }
  /// True when every coefficient is a finite number.
  bool IsFinite() const;

  /// A(1), by which an output is multiplied to have unit gain at zero frequency.
  float Gain() const;

  /// Runs samples 0 .. count - 1 of `w` through the filter, from rest.
  void Filter(float* w, int count) const;

 private:
  void StepUp();

  float a[MaxTractOrder + 1] = {1.0F};
  int order = 0;
};

}  // namespace wavefilters

#endif
