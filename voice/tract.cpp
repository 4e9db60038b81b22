#include "voice/tract.h"

#include <algorithm>
#include <cmath>

namespace wavefilters {

void Tract::Set(const float* ratios, int count) {
  std::copy_n(ratios, count, a + 1);
  order = count;
  StepUp();
}

// Step i makes a[1] to a[i - 1] from themselves and their mirror images, and reads its own ratio
// in a[i]. The images are laid out first, so that several coefficients are formed at once.
void Tract::StepUp() {
  constexpr double Ln2 = 0.6931471805599453;
  float mirrored[MaxTractOrder];
  for (int i = 1; i <= order; ++i) {
    const double e = std::exp(double{a[i]} * Ln2);
    const double k = (e - 1.0) / (e + 1.0);
    std::reverse_copy(a + 1, a + i, mirrored);
    for (int j = 1; j < i; ++j) {
      a[j] = static_cast<float>(double{a[j]} + k * double{mirrored[j - 1]});
    }
    a[i] = static_cast<float>(k);
  }
}

float Tract::Gain() const {
  float sum = a[0];
  for (int j = 1; j <= order; ++j) {
    sum += a[j];
  }
  return sum;
}

bool Tract::IsFinite() const {
  return std::all_of(a, a + order + 1,
                     [](float coefficient) { return std::isfinite(coefficient); });
}

void Tract::Filter(float* w, int count) const {
  for (int k = 0; k < count; ++k) {
    const int reach = std::min(order, k);
    float sum = 0.0F;
    for (int j = 1; j <= reach; ++j) {
      sum += a[j] * w[k - j];
    }
    w[k] -= sum;
  }
}

}  // namespace wavefilters
