#include "support/guarded_buffer.h"

#include <sanitizer/asan_interface.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <new>
#include <utility>

// They are there where the program has AddressSanitizer.
#pragma weak __asan_poison_memory_region
#pragma weak __asan_unpoison_memory_region

namespace support {
namespace {

// A signalling not-a-number: a quiet one would come through additions and products unchanged.
constexpr std::uint32_t Canary = 0x7F80CAFEU;
constexpr int Zone = 64;
const auto PageSize = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));

bool IsCanary(float value) { return std::bit_cast<std::uint32_t>(value) == Canary; }

// Pages that were given back, the last few. The system takes longer for new ones than most pulls
// take, and a test makes a hundred thousand.
thread_local std::array<GuardedPages, 8> spare;

GuardedPages Take(std::size_t bytes) {
  const std::size_t size = (bytes + PageSize - 1) / PageSize * PageSize;
  for (GuardedPages& pages : spare) {
    if (pages.size == size) return std::exchange(pages, {});
  }
  void* const all =
      mmap(nullptr, size + 2 * PageSize, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (all == MAP_FAILED) throw std::bad_alloc();
  const GuardedPages fresh{static_cast<char*>(all) + PageSize, size};
  if (mprotect(fresh.begin, size, PROT_READ | PROT_WRITE) != 0) throw std::bad_alloc();
  return fresh;
}

void GiveBack(const GuardedPages& pages) {
  if (spare.back().size > 0) {
    munmap(spare.back().begin - PageSize, spare.back().size + 2 * PageSize);
  }
  std::move_backward(spare.begin(), spare.end() - 1, spare.end());
  spare.front() = pages;
}

}  // namespace

GuardedBuffer::GuardedBuffer(int room)
    : count(std::max(room, 0)),
      pages(Take((static_cast<std::size_t>(count) + Zone) * sizeof(float))),
      begin(reinterpret_cast<float*>(pages.begin + pages.size) - count) {
  std::fill(begin - Zone, begin + count, std::bit_cast<float>(Canary));
  CloseZone();
}

GuardedBuffer::~GuardedBuffer() {
  OpenZone();
  GiveBack(pages);
}

Samples GuardedBuffer::First(int produced) const {
  return {begin, begin + std::clamp(produced, 0, count)};
}

void GuardedBuffer::CheckAfter(int produced) {
  OpenZone();
  const auto touched = [](float value) { return !IsCanary(value); };
  EXPECT_TRUE(std::none_of(begin - Zone, begin, touched)) << "samples before the room were written";
  float* const rest = begin + std::clamp(produced, 0, count);
  const float* const written = std::find_if(rest, begin + count, touched);
  EXPECT_EQ(written, begin + count) << "sample " << written - begin << " was written: the room has "
                                    << count << " samples and " << produced << " were announced";
  CloseZone();
}

void GuardedBuffer::CloseZone() {
  if (__asan_poison_memory_region != nullptr) {
    __asan_poison_memory_region(begin - Zone, Zone * sizeof(float));
  }
}

void GuardedBuffer::OpenZone() {
  if (__asan_unpoison_memory_region != nullptr) {
    __asan_unpoison_memory_region(begin - Zone, Zone * sizeof(float));
  }
}

}  // namespace support
