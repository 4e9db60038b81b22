#pragma once

#include "support/mock.h"

namespace support {

// What a descriptor says of a signal, and what was made of it.
struct Description {
  int length = 0;
  double interval_ms = 0.1;
  std::string name = "signal.wav";  // the path of the signal's file
  double range = 1.0;
  std::string units;
};

// A description of a signal: IWaveDescriptorC. All calls are noted; the setters change `now`.
// GetName cuts a long name to the caller's buffer, as hosts do.
class DescriptorMock : public Mock {
 public:
  DescriptorMock(std::string objectName, CallLog& calls, Description description);

  // The object with one more reference, which the receiver has to release.
  void* Give();

  Description now;

 private:
  SlotObject<DescriptorSlots, DescriptorMock> object;
};

}  // namespace support
