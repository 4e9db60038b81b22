#pragma once

#include <cstddef>

#include "support/samples.h"

namespace support {

// Whole pages between two that nobody may touch.
struct GuardedPages {
  char* begin = nullptr;
  std::size_t size = 0;
};

// Room for `count` samples that ends where a page begins that ends the process when it is touched,
// and begins behind a guard zone, which AddressSanitizer watches, too. Zone and room are set to one
// bit pattern. CheckAfter(produced) fails the test where the zone changed, or anything beyond the
// first `produced` samples.
class GuardedBuffer {
 public:
  explicit GuardedBuffer(int room);
  ~GuardedBuffer();
  GuardedBuffer(const GuardedBuffer&) = delete;
  GuardedBuffer& operator=(const GuardedBuffer&) = delete;

  float* data() { return begin; }
  Samples First(int produced) const;
  void CheckAfter(int produced);

 private:
  // For the library, the zone cannot be read either, where AddressSanitizer is there.
  void CloseZone();
  void OpenZone();

  int count;
  GuardedPages pages;
  float* begin;
};

}  // namespace support
