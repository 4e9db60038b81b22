#include "hardening/memory.h"

#include <execinfo.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <new>
#include <span>

#define EXPORTED __attribute__((visibility("default")))

// Where memory comes from.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
}

namespace {

long live = 0;
long asked = 0;
long firstRefused = 0;
bool alsoLater = false;
bool active = false;
void (*toldOfRefusal)() = nullptr;
hardening::Trace lastRefusal = {};

void TraceInto(hardening::Trace& trace) {
  const int depth = ::backtrace(trace.data(), static_cast<int>(trace.size()) - 1);
  std::fill(trace.begin() + depth, trace.end(), nullptr);
}

// The blocks that are traced, in no order; it takes no memory of its own.
class TracedBlocks {
 public:
  void Start() {
    count = 0;
    tracing = true;
  }
  void Stop() { tracing = false; }

  void Add(void* block) {
    if (tracing && block != nullptr && count < blocks.size()) {
      blocks[count] = block;
      TraceInto(traces[count]);
      ++count;
    }
  }

  void Remove(const void* block) {
    for (std::size_t i = count; tracing && i > 0; --i) {
      if (blocks[i - 1] == block) {
        --count;
        blocks[i - 1] = blocks[count];
        traces[i - 1] = traces[count];
        return;
      }
    }
  }

  std::span<const hardening::Trace> Traces() const { return {traces.data(), count}; }

 private:
  std::array<void*, 16384> blocks = {};
  std::array<hardening::Trace, 16384> traces = {};
  std::size_t count = 0;
  bool tracing = false;
};

constinit TracedBlocks traced;

bool Refuse() {
  if (!active) {
    return false;
  }
  ++asked;
  const bool refused =
      asked == firstRefused || (alsoLater && firstRefused > 0 && asked > firstRefused);
  if (refused) {
    TraceInto(lastRefusal);
    if (toldOfRefusal != nullptr) {
      active = false;
      toldOfRefusal();
      active = true;
    }
    errno = ENOMEM;
  }
  return refused;
}

void* Counted(void* block) {
  live += block != nullptr ? 1 : 0;
  traced.Add(block);
  return block;
}

void* Aligned(std::size_t alignment, std::size_t size) {
  if (Refuse()) {
    return nullptr;
  }
  return Counted(__libc_memalign(alignment, size));
}

}  // namespace

extern "C" {

EXPORTED void* malloc(std::size_t size) {
  if (Refuse()) {
    return nullptr;
  }
  return Counted(__libc_malloc(size));
}

EXPORTED void* calloc(std::size_t count, std::size_t size) {
  if (Refuse()) {
    return nullptr;
  }
  return Counted(__libc_calloc(count, size));
}

EXPORTED void* realloc(void* block, std::size_t size) {
  if (Refuse()) {
    return nullptr;
  }
  void* const moved = __libc_realloc(block, size);
  live += block == nullptr && moved != nullptr ? 1 : 0;
  live -= block != nullptr && moved == nullptr && size == 0 ? 1 : 0;
  if (moved != nullptr || size == 0) {
    traced.Remove(block);
    traced.Add(moved);
  }
  return moved;
}

EXPORTED void free(void* block) {
  live -= block != nullptr ? 1 : 0;
  traced.Remove(block);
  __libc_free(block);
}

EXPORTED void* memalign(std::size_t alignment, std::size_t size) {
  return Aligned(alignment, size);
}

EXPORTED void* aligned_alloc(std::size_t alignment, std::size_t size) {
  return Aligned(alignment, size);
}

EXPORTED int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
  *block = Aligned(alignment, size);
  return *block == nullptr ? ENOMEM : 0;
}
}

namespace hardening {

long LiveBlocks() { return live; }

const Trace& LastRefusal() { return lastRefusal; }

std::span<const Trace> TracesOfKept() { return traced.Traces(); }

Shortage::Shortage(long first, bool fromThereOn, bool trace, void (*told)()) {
  lastRefusal = {};
  if (trace) {
    traced.Start();
  }
  asked = 0;
  firstRefused = first;
  alsoLater = fromThereOn;
  toldOfRefusal = told;
  active = true;
}
Shortage::~Shortage() {
  active = false;
  traced.Stop();
}
long Shortage::Asked() { return asked; }

}  // namespace hardening

namespace {

// The program may have asked to be told first.
[[noreturn]] void Fail() {
  if (const std::new_handler told = std::get_new_handler()) {
    told();
  }
  throw std::bad_alloc();
}

void* New(std::size_t size) {
  if (void* const block = malloc(std::max<std::size_t>(size, 1))) {
    return block;
  }
  Fail();
}

void* NewAligned(std::size_t size, std::align_val_t alignment) {
  if (void* const block =
          memalign(static_cast<std::size_t>(alignment), std::max<std::size_t>(size, 1))) {
    return block;
  }
  Fail();
}

void* NewOrNull(std::size_t size) {
  try {
    return New(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

}  // namespace

EXPORTED void* operator new(std::size_t size) { return New(size); }
EXPORTED void* operator new[](std::size_t size) { return New(size); }
EXPORTED void* operator new(std::size_t size, std::align_val_t alignment) {
  return NewAligned(size, alignment);
}
EXPORTED void* operator new[](std::size_t size, std::align_val_t alignment) {
  return NewAligned(size, alignment);
}
EXPORTED void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return NewOrNull(size);
}
EXPORTED void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return NewOrNull(size);
}
EXPORTED void operator delete(void* block) noexcept { free(block); }
EXPORTED void operator delete[](void* block) noexcept { free(block); }
EXPORTED void operator delete(void* block, std::size_t /*size*/) noexcept { free(block); }
EXPORTED void operator delete[](void* block, std::size_t /*size*/) noexcept { free(block); }
EXPORTED void operator delete(void* block, std::align_val_t /*alignment*/) noexcept { free(block); }
EXPORTED void operator delete[](void* block, std::align_val_t /*alignment*/) noexcept {
  free(block);
}
EXPORTED void operator delete(void* block, std::size_t /*size*/,
                              std::align_val_t /*alignment*/) noexcept {
  free(block);
}
EXPORTED void operator delete[](void* block, std::size_t /*size*/,
                                std::align_val_t /*alignment*/) noexcept {
  free(block);
}
EXPORTED void operator delete(void* block, const std::nothrow_t& /*tag*/) noexcept { free(block); }
EXPORTED void operator delete[](void* block, const std::nothrow_t& /*tag*/) noexcept {
  free(block);
}
