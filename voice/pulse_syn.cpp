#include "voice/pulse_syn.h"

namespace wavefilters {

void PulseSyn::Apply(float* out, int count, int start) {
  while (Due(count, start)) {
    if (!GetDouble(amplitude)) {
      End();
      return;
    }
    const std::int64_t at = std::int64_t{Index()} - start;
    if (at >= 0) {
      out[at] = -static_cast<float>(amplitude);
    }
    Advance();
  }
}

}  // namespace wavefilters
