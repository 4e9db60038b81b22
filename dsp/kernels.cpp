#include "dsp/kernels.h"

namespace wavefilters {
namespace {

// Lanes are outputs, never parts of a sum: each lane does its own additions in the stated
// order, and the compiler does many lanes with one instruction.
template <int Lanes>
void ConvolveLanes(const float* in, const float* coef, int taps, float* out) {
  float sum[Lanes] = {};
  int k = 0;
  for (; k + 4 <= taps; k += 4) {
    float group[Lanes];
    for (int lane = 0; lane < Lanes; ++lane) {
      group[lane] = in[k + lane] * coef[k];
    }
    for (int tap = 1; tap < 4; ++tap) {
      for (int lane = 0; lane < Lanes; ++lane) {
        group[lane] += in[k + tap + lane] * coef[k + tap];
      }
    }
    for (int lane = 0; lane < Lanes; ++lane) {
      sum[lane] += group[lane];
    }
  }
  for (; k < taps; ++k) {
    for (int lane = 0; lane < Lanes; ++lane) {
      sum[lane] += in[k + lane] * coef[k];
    }
  }
  for (int lane = 0; lane < Lanes; ++lane) {
    out[lane] = sum[lane];
  }
}

}  // namespace

void Convolve(const float* in, const float* coef, int taps, float* out, int outCount) {
  constexpr int Lanes = 16;
  int i = 0;
  for (; i + Lanes <= outCount; i += Lanes) {
    ConvolveLanes<Lanes>(in + i, coef, taps, out + i);
  }
  for (; i < outCount; ++i) {
    ConvolveLanes<1>(in + i, coef, taps, out + i);
  }
}

float PolyphaseSum(const float* in, std::int64_t newest, const float* coef, std::int64_t coefCount,
                   std::int64_t last, std::int64_t stride) {
  std::int64_t k = last;
  std::int64_t j = newest;
  if (k >= coefCount) {
    const std::int64_t outside = (k - coefCount) / stride + 1;
    k -= outside * stride;
    j -= outside;
  }
  double sum = 0.0;
  for (; k >= 0 && j >= 0; k -= stride, --j) {
    sum += double{in[j] * coef[k]};
  }
  return static_cast<float>(sum);
}

}  // namespace wavefilters
