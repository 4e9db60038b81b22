#include "dsp/non_causal_p.h"

#include <algorithm>

namespace wavefilters {

int NonCausalP::TransmitNow(float* out, int n, int& got) {
  if (!partner) {
    return NonCausal::TransmitNow(out, n, got);
  }
  const int mine = Fill(n);
  int others = 0;
  partner->TransmitNow(nullptr, n, others);
  const int both = std::min(others, mine);
  // Through both objects even when there is nothing to be had: the second one reports.
  NonCausal::TransmitNow(out, both, got);
  return partner->TransmitNow(out, both, got);
}

bool NonCausalP::EndOfSrc() {
  const bool mineEnded = NonCausal::EndOfSrc();
  return mineEnded && partner ? partner->EndOfSrc() : mineEnded;
}

int NonCausalP::Set_src_list(IWaveSourceC** sources, int count) {
  if (!partner) {
    return NonCausal::Set_src_list(sources, count);
  }
  if (count < 1) {
    Dispose();
    return partner->Set_src_list(sources, 0);
  }
  Dispose();
  KeepSource(sources[0]);
  int result = 0;
  try {
    result = SrcSet();
  } catch (...) {
    // The partner will not see the rest of the list, whose references are the pair's all the same.
    std::for_each(sources + 1, sources + count, [](IWaveSourceC* source) { source->Release(); });
    throw;
  }
  partner->Set_src_list(sources + 1, count - 1);
  return result;
}

void NonCausalP::Set_param_list(double* values, int count) {
  if (partner) {
    partner->Set_param_list(values, count);
  }
}

void NonCausalP::Set_console_out(IConsoleOutC* console) {
  NonCausal::Set_console_out(console);
  if (partner) {
    partner->Set_console_out(console);
  }
}

}  // namespace wavefilters
