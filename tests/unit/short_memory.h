#ifndef WAVEFILTERS_TESTS_UNIT_SHORT_MEMORY_H
#define WAVEFILTERS_TESTS_UNIT_SHORT_MEMORY_H

#include <cstddef>

/// While it lives, allocations of more than `largest` bytes fail with std::bad_alloc. A test
/// that uses it is linked with short_memory.cpp, which replaces the global operator new.
class ShortMemory {
 public:
  explicit ShortMemory(std::size_t largest);
  ~ShortMemory();
  ShortMemory(const ShortMemory&) = delete;
  ShortMemory& operator=(const ShortMemory&) = delete;
};

#endif
