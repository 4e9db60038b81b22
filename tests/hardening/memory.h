#pragma once

namespace hardening {

// The process's memory, operator new and the C library's functions alike: counted, and refused on
// demand. A program that asks is linked with memory.cpp, which replaces them all; where a sanitizer
// looks after the memory, with memory_of_sanitizer.cpp, which cannot refuse.

// Blocks that were handed out and not given back.
long LiveBlocks();

// While it lives, allocation number `first` is refused, counted from 1, or, if `fromThereOn`, that
// one and all later ones. With 0 nothing is refused.
class Shortage {
 public:
  Shortage(long first, bool fromThereOn);
  ~Shortage();
  Shortage(const Shortage&) = delete;
  Shortage& operator=(const Shortage&) = delete;

  // Allocations that were asked for meanwhile.
  static long Asked();
};

}  // namespace hardening
