#include "dsp/convolve.h"

#include <cstring>

// Lanes are outputs, never parts of a sum: each does its own additions in the stated order,
// and one instruction does many lanes. The loops below are inlined into one function for each
// instruction set, so that each is compiled for that set.
#define WAVEFILTERS_INLINE inline __attribute__((always_inline))

namespace wavefilters {
namespace {

// Plain loops over local arrays, one operation a loop: the form that the compilers turn into
// vector instructions with all accumulators in registers.
template <int Lanes>
WAVEFILTERS_INLINE void ConvolveTile(const float* in, const float* coef, int taps, float* out) {
  float sum[Lanes] = {};
  float product[Lanes];
  int k = 0;
  for (; k + 4 <= taps; k += 4) {
    float group[Lanes];
    for (int i = 0; i < Lanes; ++i) group[i] = in[k + i] * coef[k];
    for (int i = 0; i < Lanes; ++i) product[i] = in[k + 1 + i] * coef[k + 1];
    for (int i = 0; i < Lanes; ++i) group[i] += product[i];
    for (int i = 0; i < Lanes; ++i) product[i] = in[k + 2 + i] * coef[k + 2];
    for (int i = 0; i < Lanes; ++i) group[i] += product[i];
    for (int i = 0; i < Lanes; ++i) product[i] = in[k + 3 + i] * coef[k + 3];
    for (int i = 0; i < Lanes; ++i) group[i] += product[i];
    for (int i = 0; i < Lanes; ++i) sum[i] += group[i];
  }
  for (; k < taps; ++k) {
    for (int i = 0; i < Lanes; ++i) product[i] = in[k + i] * coef[k];
    for (int i = 0; i < Lanes; ++i) sum[i] += product[i];
  }
  for (int i = 0; i < Lanes; ++i) out[i] = sum[i];
}

template <int Lanes>
WAVEFILTERS_INLINE int ConvolveTiles(const float* in, const float* coef, int taps, float* out,
                                     int from, int outCount) {
  int i = from;
  for (; i + Lanes <= outCount; i += Lanes) {
    ConvolveTile<Lanes>(in + i, coef, taps, out + i);
  }
  return i;
}

// From `from` on: tiles of 64 outputs, smaller ones for what is left.
WAVEFILTERS_INLINE void ConvolveRest(const float* in, const float* coef, int taps, float* out,
                                     int from, int outCount) {
  int i = ConvolveTiles<64>(in, coef, taps, out, from, outCount);
  i = ConvolveTiles<32>(in, coef, taps, out, i, outCount);
  i = ConvolveTiles<8>(in, coef, taps, out, i, outCount);
  ConvolveTiles<1>(in, coef, taps, out, i, outCount);
}

void ConvolveBaseline(const float* in, const float* coef, int taps, float* out, int outCount) {
  ConvolveRest(in, coef, taps, out, 0, outCount);
}

#if defined(__x86_64__)

__attribute__((target("avx2"))) void ConvolveAvx2(const float* in, const float* coef, int taps,
                                                  float* out, int outCount) {
  ConvolveRest(in, coef, taps, out, 0, outCount);
}

#define WAVEFILTERS_INLINE_AVX512 inline __attribute__((always_inline, target("avx512f")))

using Vector = float __attribute__((vector_size(64)));
constexpr int Width = 16;
constexpr int Vectors = 4;
constexpr int LagGroups = Width / 4;

WAVEFILTERS_INLINE_AVX512 Vector Load(const float* from) {
  Vector v;
  std::memcpy(&v, from, sizeof v);
  return v;
}

// Four taps of one vector of outputs, from the samples under each of them.
WAVEFILTERS_INLINE_AVX512 Vector Group(const Vector (&x)[4], const float* coef) {
  const Vector p0 = x[0] * coef[0];
  const Vector p1 = x[1] * coef[1];
  const Vector p2 = x[2] * coef[2];
  const Vector p3 = x[3] * coef[3];
  Vector group = p0 + p1;
  group = group + p2;
  return group + p3;
}

WAVEFILTERS_INLINE_AVX512 void LoadFour(const float* in, Vector (&x)[4]) {
  for (int tap = 0; tap < 4; ++tap) {
    x[tap] = Load(in + tap);
  }
}

// Groups `from` up to `to` of vector `v` alone.
WAVEFILTERS_INLINE_AVX512 Vector RunGroups(const float* in, const float* coef, int from, int to,
                                           Vector sum) {
  for (int g = from; g < to; ++g) {
    Vector x[4];
    LoadFour(in + 4 * g, x);
    sum = sum + Group(x, coef + 4 * g);
  }
  return sum;
}

// 64 outputs in four vectors, of which vector v runs v x 16 taps behind vector 0: the samples
// under all four are then the same, and one load feeds them. Loads that cross cache lines are
// what the even form waits for. The groups that the lag leaves over at either end are run
// vector by vector.
WAVEFILTERS_INLINE_AVX512 void ConvolveLagged(const float* in, const float* coef, int taps,
                                              float* out) {
  const int groups = taps / 4;
  constexpr int Lead = LagGroups * (Vectors - 1);
  Vector sum[Vectors] = {};
  for (int v = 0; v < Vectors - 1; ++v) {
    sum[v] = RunGroups(in + v * Width, coef, 0, Lead - LagGroups * v, sum[v]);
  }
  for (int g = Lead; g < groups; ++g) {
    Vector x[4];
    LoadFour(in + 4 * g, x);
    sum[0] = sum[0] + Group(x, coef + 4 * g);
    sum[1] = sum[1] + Group(x, coef + 4 * g - Width);
    sum[2] = sum[2] + Group(x, coef + 4 * g - 2 * Width);
    sum[3] = sum[3] + Group(x, coef + 4 * g - 3 * Width);
  }
  for (int v = 1; v < Vectors; ++v) {
    sum[v] = RunGroups(in + v * Width, coef, groups - LagGroups * v, groups, sum[v]);
  }
  for (int k = 4 * groups; k < taps; ++k) {
    for (int v = 0; v < Vectors; ++v) {
      const Vector product = Load(in + v * Width + k) * coef[k];
      sum[v] = sum[v] + product;
    }
  }
  std::memcpy(out, sum, sizeof sum);
}

__attribute__((target("avx512f"))) void ConvolveAvx512(const float* in, const float* coef, int taps,
                                                       float* out, int outCount) {
  constexpr int LaggedFrom = 130;  // taps: below, its ends cost more than its middle saves
  int i = 0;
  if (taps >= LaggedFrom) {
    for (; i + Vectors * Width <= outCount; i += Vectors * Width) {
      ConvolveLagged(in + i, coef, taps, out + i);
    }
  }
  // Of 32 registers these tiles fill 18; a coefficient then serves more outputs.
  i = ConvolveTiles<96>(in, coef, taps, out, i, outCount);
  ConvolveRest(in, coef, taps, out, i, outCount);
}

#endif

}  // namespace

ConvolveFunction ConvolveFor([[maybe_unused]] InstructionSet set) {
#if defined(__x86_64__)
  if (set == InstructionSet::Avx512) {
    return ConvolveAvx512;
  }
  if (set == InstructionSet::Avx2) {
    return ConvolveAvx2;
  }
#endif
  return ConvolveBaseline;
}

}  // namespace wavefilters
