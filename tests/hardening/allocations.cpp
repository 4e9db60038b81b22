#include "hardening/allocations.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

long live = 0;
long seen = 0;
long firstRefused = 0;
bool alsoLater = false;
bool active = false;
bool refused = false;

bool Refuse() {
  if (!active) {
    return false;
  }
  ++seen;
  const bool now = seen == firstRefused || (alsoLater && seen > firstRefused);
  refused = refused || now;
  return now;
}

constexpr std::size_t Usual = alignof(std::max_align_t);

constexpr std::size_t RoundUp(std::size_t size, std::size_t alignment) {
  return (size / alignment + 1) * alignment;
}

void* Allocate(std::size_t size, std::size_t alignment) {
  if (!Refuse()) {
    // To the byte where that is possible: sanitizers then see a step beyond the end.
    void* const block = alignment <= Usual
                            ? std::malloc(std::max<std::size_t>(size, 1))
                            : std::aligned_alloc(alignment, RoundUp(size, alignment));
    if (block != nullptr) {
      ++live;
      return block;
    }
  }
  throw std::bad_alloc();
}

void Free(void* block) noexcept {
  live -= block != nullptr ? 1 : 0;
  std::free(block);
}

constexpr std::size_t Plain(std::align_val_t alignment) {
  return static_cast<std::size_t>(alignment);
}

}  // namespace

namespace hardening {

long LiveAllocations() { return live; }

Refusal::Refusal(long first, bool fromThereOn) {
  seen = 0;
  firstRefused = first;
  alsoLater = fromThereOn;
  refused = false;
}
bool Refusal::Happened() const { return refused; }
void Refusal::SetActive(bool wanted) { active = wanted; }

}  // namespace hardening

void* operator new(std::size_t size) { return Allocate(size, Usual); }
void* operator new[](std::size_t size) { return Allocate(size, Usual); }
void* operator new(std::size_t size, std::align_val_t alignment) {
  return Allocate(size, Plain(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
  return Allocate(size, Plain(alignment));
}
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  try {
    return Allocate(size, Usual);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept {
  return operator new(size, tag);
}
void operator delete(void* block) noexcept { Free(block); }
void operator delete[](void* block) noexcept { Free(block); }
void operator delete(void* block, std::size_t /*size*/) noexcept { Free(block); }
void operator delete[](void* block, std::size_t /*size*/) noexcept { Free(block); }
void operator delete(void* block, std::align_val_t /*alignment*/) noexcept { Free(block); }
void operator delete[](void* block, std::align_val_t /*alignment*/) noexcept { Free(block); }
void operator delete(void* block, std::size_t /*size*/, std::align_val_t /*alignment*/) noexcept {
  Free(block);
}
void operator delete[](void* block, std::size_t /*size*/, std::align_val_t /*alignment*/) noexcept {
  Free(block);
}
void operator delete(void* block, const std::nothrow_t& /*tag*/) noexcept { Free(block); }
void operator delete[](void* block, const std::nothrow_t& /*tag*/) noexcept { Free(block); }
