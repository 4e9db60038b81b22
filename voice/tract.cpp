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
// in a[i]. The lower half stays in place and the upper one is kept in falling order meanwhile: so
// partners lie side by side, each is read once, and several pairs are formed at a time.
void Tract::StepUp() {
  constexpr double Ln2 = 0.6931471805599453;
  float falling[MaxTractOrder + 1];  // a[m] at MaxTractOrder - m
  for (int i = 1; i <= order; ++i) {
    const double e = std::exp(double{a[i]} * Ln2);
    const double k = (e - 1.0) / (e + 1.0);
    float* partner = falling + (MaxTractOrder - i);  // a[i - j] at j
    for (int j = 1; j <= (i - 1) / 2; ++j) {
      const double low = a[j];
      const double high = partner[j];
      a[j] = static_cast<float>(low + k * high);
      partner[j] = static_cast<float>(high + k * low);
    }
    if (i % 2 == 0) {  // the middle is its own image and joins the lower half
      const double middle = partner[i / 2];
      a[i / 2] = static_cast<float>(middle + k * middle);
    }
    partner[0] = static_cast<float>(k);
  }
  for (int m = order / 2 + 1; m <= order; ++m) {
    a[m] = falling[MaxTractOrder - m];
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
