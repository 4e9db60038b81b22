#pragma once

#include <array>
#include <cstddef>
#include <span>

namespace hardening {

// The process's memory, operator new and the C library's functions alike: counted, and refused on
// demand. A program that asks is linked with memory.cpp, which replaces them all; where a sanitizer
// looks after the memory, with memory_of_sanitizer.cpp, which cannot refuse.

// Blocks that were handed out and not given back.
long LiveBlocks();

// The way to where memory was asked for: addresses of return, innermost first, then null.
using Trace = std::array<void*, 64>;

// To the last allocation that was refused.
const Trace& LastRefusal();

// To the blocks that were handed out under the last Shortage that was told to trace, and not given
// back. Beyond some 16000 blocks at a time, none is traced.
std::span<const Trace> TracesOfKept();

// While it lives, allocation number `first` is refused, counted from 1, or, if `fromThereOn`, that
// one and all later ones. With 0 nothing is refused. With `trace`, each block's origin is noted.
// `told` is called at each refusal, and is refused nothing.
class Shortage {
 public:
  // backtrace() must have been called before: its first call takes memory.
  Shortage(long first, bool fromThereOn, bool trace = false, void (*told)() = nullptr);
  ~Shortage();
  Shortage(const Shortage&) = delete;
  Shortage& operator=(const Shortage&) = delete;

  // Allocations that were asked for meanwhile.
  static long Asked();
};

}  // namespace hardening
