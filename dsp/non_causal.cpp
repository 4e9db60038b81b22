#include "dsp/non_causal.h"

#include <algorithm>

namespace wavefilters {

int NonCausal::SrcSet() {
  SISOFilter::SrcSet();
  // Only now are the margins known: Init may have set them.
  AppendZeros(buffer, 0, histLen);
  bufFill = histLen;
  ended = false;
  padLeft = aheadLen;
  return 0;
}

int NonCausal::TransmitNow(float* out, int n, int& got) {
  got = std::max(Fill(n), 0);
  if (got >= 1 && out != nullptr) {
    Apply(buffer, out, got);
    bufFill = DropFront(buffer, bufFill, got);
  }
  return 0;
}

bool NonCausal::EndOfSrc() { return ended; }

void NonCausal::Apply(float* in, float* out, int n) { std::copy_n(in + histLen, n, out); }

int NonCausal::Fill(int n) {
  const std::int64_t margins = std::int64_t{histLen} + aheadLen;
  const auto reach = std::min<std::int64_t>(n + margins, BlockBufferSize);
  int want = LimitToInt32(reach - bufFill);
  if (want > 0) {
    if (Source() != nullptr && !Source()->EndOfSrc()) {
      const int came = ReadSource(Source(), buffer, bufFill, want);
      bufFill += came;
      want -= came;
    }
    // A source that is short but lives on is not padded; one that has just ended is.
    if (Source() == nullptr || Source()->EndOfSrc()) {
      if (!ended) {
        want = std::min(padLeft, want);
        padLeft -= want;
        ended = padLeft == 0;
      }
      AppendZeros(buffer, bufFill, want);
      bufFill += want;
    }
  }
  const auto available = std::max<std::int64_t>(bufFill - margins, 0);
  return static_cast<int>(std::min<std::int64_t>(available, n));
}

}  // namespace wavefilters
