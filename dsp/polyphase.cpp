#include "dsp/polyphase.h"

#include <algorithm>
#include <numeric>

#include "dsp/source_fill.h"

#define WAVEFILTERS_INLINE inline __attribute__((always_inline))

namespace wavefilters {
namespace {

constexpr int FewestLanes = 8;
constexpr int MostStreams = BlockBufferSize / FewestLanes;

// The block's samples split into `count` streams: stream s holds samples s, s + count, and so
// on, `length` of them at most, so that the samples under outputs that lie `count` inputs apart
// stand side by side.
struct Streams {
  const float* samples;
  int count;
  int length;
};

// Where the sample under the first of some outputs stands; the next ones follow it.
struct Cursor {
  Streams in;
  int stream;
  int index;  // of the sample in in.samples

  Cursor(Streams streams, std::int64_t sample)
      : in(streams),
        stream(static_cast<int>(sample % streams.count)),
        index(stream * streams.length + static_cast<int>(sample / streams.count)) {}

  // Steps to the sample one older.
  WAVEFILTERS_INLINE void Older() {
    if (stream > 0) {
      --stream;
      index -= in.length;
    } else {
      stream = in.count - 1;
      index += stream * in.length - 1;
    }
  }
};

// Splits `inCount` samples into `count` streams, in `room` where it takes more than one.
Streams Split(const float* in, int inCount, int count, float* room) {
  if (count == 1) {
    return {in, 1, inCount};
  }
  const int length = (inCount + count - 1) / count;
  for (int s = 0; s < count; ++s) {
    float* stream = room + s * length;
    for (int i = s; i < inCount; i += count) {
      *stream++ = in[i];
    }
  }
  return {room, count, length};
}

// `Lanes` outputs of one phase. One operation a loop, as in convolve.cpp.
template <int Lanes>
WAVEFILTERS_INLINE void PhaseTile(Cursor newest, PolyphaseBank::Phase phase, float* out) {
  double sum[Lanes] = {};
  for (int m = 0; m < phase.taps; ++m) {
    const float coef = phase.coef[m];
    const float* under = newest.in.samples + newest.index;
    float product[Lanes];
    for (int i = 0; i < Lanes; ++i) product[i] = under[i] * coef;
    double wide[Lanes];
    for (int i = 0; i < Lanes; ++i) wide[i] = double{product[i]};
    for (int i = 0; i < Lanes; ++i) sum[i] += wide[i];
    newest.Older();
  }
  for (int i = 0; i < Lanes; ++i) out[i] = static_cast<float>(sum[i]);
}

WAVEFILTERS_INLINE void PhaseTiles(Cursor newest, PolyphaseBank::Phase phase, float* out,
                                   int count) {
  int done = 0;
  for (; done + 32 <= count; done += 32, newest.index += 32) {
    PhaseTile<32>(newest, phase, out + done);
  }
  for (; done + FewestLanes <= count; done += FewestLanes, newest.index += FewestLanes) {
    PhaseTile<FewestLanes>(newest, phase, out + done);
  }
  for (; done < count; ++done, ++newest.index) {
    PhaseTile<1>(newest, phase, out + done);
  }
}

using PhaseFunction = void (*)(Cursor newest, PolyphaseBank::Phase phase, float* out, int count);

void PhaseBaseline(Cursor newest, PolyphaseBank::Phase phase, float* out, int count) {
  PhaseTiles(newest, phase, out, count);
}

#if defined(__x86_64__)

__attribute__((target("avx2"))) void PhaseAvx2(Cursor newest, PolyphaseBank::Phase phase,
                                               float* out, int count) {
  PhaseTiles(newest, phase, out, count);
}

__attribute__((target("avx512f"))) void PhaseAvx512(Cursor newest, PolyphaseBank::Phase phase,
                                                    float* out, int count) {
  PhaseTiles(newest, phase, out, count);
}

#endif

PhaseFunction PhaseFor([[maybe_unused]] InstructionSet set) {
#if defined(__x86_64__)
  switch (set) {
    case InstructionSet::Avx512:
      return PhaseAvx512;
    case InstructionSet::Avx2:
      return PhaseAvx2;
    case InstructionSet::Baseline:
      break;
  }
#endif
  return PhaseBaseline;
}

}  // namespace

void PolyphaseBank::Store(const float* coef, int count, std::int32_t upFactor,
                          std::int32_t downFactor) {
  up = upFactor;
  down = downFactor;
  const std::int64_t common = std::gcd(up, down);
  phases = up / common;
  advance = down / common;
  shortest = static_cast<int>(count / up);
  longer = count % up;
  float* next = byPhase;
  for (std::int64_t phase = 0; phase < std::min<std::int64_t>(up, count); ++phase) {
    for (std::int64_t k = count - 1 - phase; k >= 0; k -= up) {
      *next++ = coef[k];
    }
  }
}

PolyphaseBank::Phase PolyphaseBank::At(std::int64_t phase) const {
  const std::int64_t before = phase * shortest + std::min(phase, longer);
  return {byPhase + before, shortest + (phase < longer ? 1 : 0)};
}

void PolyphaseBank::Run(const float* in, int inCount, std::int64_t position, float* out,
                        int outCount) const {
  const bool lanesPay = outCount >= FewestLanes * phases && advance <= MostStreams;
  if (lanesPay && inCount <= BlockBufferSize) {
    RunByPhase(in, inCount, position, out, outCount);
  } else {
    RunSingly(in, position, out, outCount);
  }
}

void PolyphaseBank::RunSingly(const float* in, std::int64_t position, float* out,
                              int outCount) const {
  std::int64_t newest = position / up;
  std::int64_t phase = position % up;
  for (int i = 0; i < outCount; ++i) {
    const Phase taps = At(phase);
    double sum = 0.0;
    for (int m = 0; m < taps.taps; ++m) {
      sum += double{in[newest - m] * taps.coef[m]};
    }
    out[i] = static_cast<float>(sum);
    newest += down / up;
    phase += down % up;
    if (phase >= up) {
      phase -= up;
      ++newest;
    }
  }
}

void PolyphaseBank::RunByPhase(const float* in, int inCount, std::int64_t position, float* out,
                               int outCount) const {
  const PhaseFunction runPhase = PhaseFor(set);
  float room[BlockBufferSize + MostStreams];
  const Streams streams = Split(in, inCount, static_cast<int>(advance), room);
  float made[BlockBufferSize];
  const int apart = static_cast<int>(phases);
  for (int first = 0; first < apart; ++first) {
    const std::int64_t at = position + first * down;
    const int count = (outCount - first + apart - 1) / apart;
    runPhase(Cursor(streams, at / up), At(at % up), made, count);
    for (int i = 0; i < count; ++i) {
      out[first + i * apart] = made[i];
    }
  }
}

}  // namespace wavefilters
