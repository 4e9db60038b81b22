#include "unit/short_memory.h"

#include <cstdlib>
#include <limits>
#include <new>

namespace {
constexpr std::size_t NoLimit = std::numeric_limits<std::size_t>::max();
std::size_t largestAllocation = NoLimit;
}  // namespace

ShortMemory::ShortMemory(std::size_t largest) { largestAllocation = largest; }
ShortMemory::~ShortMemory() { largestAllocation = NoLimit; }

void* operator new(std::size_t size) {
  if (size <= largestAllocation) {
    if (void* block = std::malloc(size)) {
      return block;
    }
  }
  throw std::bad_alloc();
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t /*size*/) noexcept { std::free(block); }
