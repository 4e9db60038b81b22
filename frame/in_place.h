#ifndef WAVEFILTERS_FRAME_IN_PLACE_H
#define WAVEFILTERS_FRAME_IN_PLACE_H

#include "frame/siso_filter.h"

namespace wavefilters {

/// Base of filters that work on the source's block in the caller's buffer: as many samples
/// leave as the source delivered.
class InPlace : public SISOFilter {
 public:
  /// The result carries no meaning.
  int TransmitNow(float* buffer, int count, int& produced) override;
  /// Slot 15. Rewrites `count` samples, 0 of them too.
  virtual void Apply(float* samples, int count) = 0;

 protected:
  InPlace() = default;
  ~InPlace() = default;
};

}  // namespace wavefilters

#endif
