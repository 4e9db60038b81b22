#ifndef WAVEFILTERS_FRAME_SQUARE_FILTER_H
#define WAVEFILTERS_FRAME_SQUARE_FILTER_H

#include <cstdint>

#include "frame/in_place.h"

namespace wavefilters {

/// Replaces its input by a square wave: a weighted sum of the current level and the level
/// of the sample before, -1 first.
///
/// | index | parameter       | unit    | default |
/// |-------|-----------------|---------|---------|
/// | 0     | half period     | samples | 256     |
/// | 1     | current weight  | factor  | 1       |
/// | 2     | previous weight | factor  | 0       |
///
/// The half period is truncated to a whole number; at 1 and below the level flips after
/// every sample. Parameters take effect at once; the wave restarts when a source is
/// attached.
class SquareFilter : public InPlace {
 public:
  using InPlace::Init;
  void Set_param_list(double* values, int count) override;
  void Init(double interval_ms) override;
  void Apply(float* samples, int count) override;

 protected:
  SquareFilter() = default;
  ~SquareFilter() = default;

 private:
  std::int32_t halfPeriod = 256;
  double currentWeight = 1.0;
  double previousWeight = 0.0;

  double level = -1.0;
  double previousLevel = -1.0;
  std::int32_t counter = 0;  // samples since the last flip
};

}  // namespace wavefilters

#endif
