#include "dsp/resample_blackman.h"

#include <algorithm>

#include "frame/params.h"

namespace wavefilters {

void ResampleBlackman::Set_param_list(double* values, int count) {
  const Params list{values, count};
  list.ReadInt(0, setup.downFactor);
  list.ReadInt(1, setup.upFactor);
  list.ReadInt(2, setup.downStart);
  list.ReadInt(3, setup.phaseStart);
  list.Read(4, shift);
  std::int32_t halfLen = 60;
  list.ReadInt(5, halfLen);
  halfLen = std::clamp(halfLen, 0, MaxHalfLen);

  setup.downFactor = std::max(setup.downFactor, 1);
  setup.upFactor = std::max(setup.upFactor, 1);
  cutoff = 1.0 / std::max(setup.downFactor, setup.upFactor);
  list.Read(6, cutoff);
  list.Read(7, widen);
  setup.histLen = halfLen / setup.upFactor;
  setup.aheadLen = setup.histLen;
}

void ResampleBlackman::CalcCoef(float* c, int& count) {
  // Cannot leave 32 bits: the margins are at most MaxHalfLen / L.
  count = (setup.histLen + setup.aheadLen) * setup.upFactor + 1;
  DesignBlackmanSinc(c, count, setup.upFactor, cutoff, shift, widen);
}

}  // namespace wavefilters
