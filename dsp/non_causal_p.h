#ifndef WAVEFILTERS_DSP_NON_CAUSAL_P_H
#define WAVEFILTERS_DSP_NON_CAUSAL_P_H

#include "dsp/non_causal.h"
#include "frame/ref.h"

namespace wavefilters {

/// Two-source block engine: a pair of objects, one for each source.
///
/// The host sees the front, a plain NonCausalP, which buffers the first source. The front
/// owns its partner, the combining filter derived from this class, which buffers the second
/// source. A pull lets the front write aligned samples of source 1 into the caller's block,
/// then lets the partner's Apply combine them there with its own samples of source 2. Each
/// pull delivers what both can deliver; the pair ends when both have, so it runs as long as
/// the longer source and the shorter one counts as zeros from its end on.
///
/// Parameters and console reach the partner through the front. Dispose is the base's: it
/// lets go of the first source only. Without a partner, which is how the combining filter
/// itself works, everything is the block engine's.
class NonCausalP : public NonCausal {
 public:
  int TransmitNow(float* out, int n, int& got) override;
  bool EndOfSrc() override;
  /// The front keeps the first source and hands the rest of the list to its partner, which
  /// keeps the second and releases the others. Where the first one throws, the rest
  /// of the list is released. An empty list is not read: both sources go.
  int Set_src_list(IWaveSourceC** sources, int count) override;
  /// Passed on to the partner; the front has no parameters.
  void Set_param_list(double* values, int count) override;
  /// Front and partner each hold a reference of their own.
  void Set_console_out(IConsoleOutC* console) override;

 protected:
  NonCausalP() = default;
  explicit NonCausalP(Ref<NonCausalP> combining) : partner(std::move(combining)) {}
  ~NonCausalP() = default;

 private:
  Ref<NonCausalP> partner;
};

}  // namespace wavefilters

#endif
