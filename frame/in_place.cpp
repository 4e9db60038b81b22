#include "frame/in_place.h"

#include "frame/numeric.h"

namespace wavefilters {

int InPlace::TransmitNow(float* buffer, int count, int& produced) {
  produced = 0;
  Source()->TransmitNow(buffer, count, produced);
  produced = Delivered(produced, count);
  Apply(buffer, produced);
  return 0;
}

}  // namespace wavefilters
