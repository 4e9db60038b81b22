#ifndef WAVEFILTERS_FRAME_PARAMS_H
#define WAVEFILTERS_FRAME_PARAMS_H

#include <cstdint>

#include "frame/numeric.h"

namespace wavefilters {

/// A parameter list as it crosses the boundary, read by index: a value that the list does
/// not reach leaves its target as it was.
class Params {
 public:
  Params(const double* listed, int listedCount) : values(listed), count(listedCount) {}

  bool Has(int index) const { return index < count; }

  void Read(int index, double& target) const {
    if (Has(index)) {
      target = values[index];
    }
  }

  /// Truncates toward zero and limits to 32 bits, as `ToInt32` does.
  void ReadInt(int index, std::int32_t& target) const {
    if (Has(index)) {
      target = ToInt32(values[index]);
    }
  }

 private:
  const double* values;
  int count;
};

}  // namespace wavefilters

#endif
