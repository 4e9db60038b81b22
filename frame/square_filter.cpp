#include "frame/square_filter.h"

#include "frame/params.h"

namespace wavefilters {

void SquareFilter::Set_param_list(double* values, int count) {
  const Params list{values, count};
  list.ReadInt(0, halfPeriod);
  list.Read(1, currentWeight);
  list.Read(2, previousWeight);
}

void SquareFilter::Init(double /*interval_ms*/) {
  level = -1.0;
  previousLevel = -1.0;
  counter = 0;
}

void SquareFilter::Apply(float* samples, int count) {
  for (int i = 0; i < count; ++i) {
    ++counter;
    const double used = level;
    samples[i] = static_cast<float>(currentWeight * used + previousWeight * previousLevel);
    // The flip takes effect from the next sample; the edge sample still has the old level.
    if (counter >= halfPeriod) {
      level = -level;
      counter = 0;
    }
    previousLevel = used;
  }
}

}  // namespace wavefilters
