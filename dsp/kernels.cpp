#include "dsp/kernels.h"

namespace wavefilters {
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
