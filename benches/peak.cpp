#include "benches/peak.h"

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace wavefilters::bench {

#if defined(__x86_64__)

namespace {

constexpr int Rounds = 4096;
// Enough sums side by side to hide an addition's latency, few enough for 16 registers.
constexpr int Sums = 8;

// The empty assembly makes the factor new to the compiler each time, which would otherwise
// multiply once for all. The factors stay 1 and 0, so that nothing overflows.
std::int64_t Baseline() {
  __m128 sum[Sums] = {};
  __m128 x = _mm_set1_ps(1.0F);
  const __m128 c = _mm_set1_ps(0.0F);
  for (int round = 0; round < Rounds; ++round) {
    for (__m128& s : sum) {
      __asm__("" : "+x"(x));
      s = _mm_add_ps(s, _mm_mul_ps(x, c));
    }
  }
  for (__m128& s : sum) {
    __asm__ volatile("" : : "x"(s));
  }
  return std::int64_t{Rounds} * Sums * 4;
}

__attribute__((target("avx2"))) std::int64_t Avx2() {
  __m256 sum[Sums] = {};
  __m256 x = _mm256_set1_ps(1.0F);
  const __m256 c = _mm256_set1_ps(0.0F);
  for (int round = 0; round < Rounds; ++round) {
    for (__m256& s : sum) {
      __asm__("" : "+x"(x));
      s = _mm256_add_ps(s, _mm256_mul_ps(x, c));
    }
  }
  for (__m256& s : sum) {
    __asm__ volatile("" : : "x"(s));
  }
  return std::int64_t{Rounds} * Sums * 8;
}

__attribute__((target("avx512f"))) std::int64_t Avx512() {
  __m512 sum[Sums] = {};
  __m512 x = _mm512_set1_ps(1.0F);
  const __m512 c = _mm512_set1_ps(0.0F);
  for (int round = 0; round < Rounds; ++round) {
    for (__m512& s : sum) {
      __asm__("" : "+v"(x));
      s = _mm512_add_ps(s, _mm512_mul_ps(x, c));
    }
  }
  for (__m512& s : sum) {
    __asm__ volatile("" : : "v"(s));
  }
  return std::int64_t{Rounds} * Sums * 16;
}

}  // namespace

std::int64_t MultiplyAndAdd(InstructionSet set) {
  switch (set) {
    case InstructionSet::Avx512:
      return Avx512();
    case InstructionSet::Avx2:
      return Avx2();
    case InstructionSet::Baseline:
      break;
  }
  return Baseline();
}

#else

std::int64_t MultiplyAndAdd(InstructionSet /*set*/) { return 0; }

#endif

}  // namespace wavefilters::bench
