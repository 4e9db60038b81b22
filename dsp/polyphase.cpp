#include "dsp/polyphase.h"

#include <algorithm>
#include <numeric>
#include <span>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

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

// `samples` turn by turn into `Count` streams of `length`, one behind the other in `room`.
template <int Count>
void Deal(const float* __restrict samples, int length, float* __restrict room) {
  for (int i = 0; i < length; ++i) {
    for (int s = 0; s < Count; ++s) room[s * length + i] = samples[i * Count + s];
  }
}

// Splits `inCount` samples into `count` streams, in `room` where it takes more than one.
Streams Split(const float* in, int inCount, int count, float* room) {
  if (count == 1) {
    return {in, 1, inCount};
  }
  const int length = (inCount + count - 1) / count;
  if (count == 2 && inCount % 2 == 0) {
    Deal<2>(in, length, room);
    return {room, count, length};
  }
  for (int s = 0; s < count; ++s) {
    float* stream = room + s * length;
    for (int i = s; i < inCount; i += count) {
      *stream++ = in[i];
    }
  }
  return {room, count, length};
}

// Makes some outputs of one phase, as many as its kind of tile has lanes.
using TileFunction = void (*)(Cursor newest, PolyphaseBank::Phase phase, float* out);

struct Tile {
  int lanes;
  TileFunction run;
};

// One operation a loop, as in convolve.cpp.
template <int Lanes>
WAVEFILTERS_INLINE void PlainTile(Cursor newest, PolyphaseBank::Phase phase, float* out) {
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

template <int Lanes>
void TileBaseline(Cursor newest, PolyphaseBank::Phase phase, float* out) {
  PlainTile<Lanes>(newest, phase, out);
}

#if defined(__x86_64__)

template <int Lanes>
__attribute__((target("avx2"))) void TileAvx2(Cursor newest, PolyphaseBank::Phase phase,
                                              float* out) {
  PlainTile<Lanes>(newest, phase, out);
}

// The loop waits for the widening of the products. Here it is one instruction for eight of them,
// of which the compilers make three from the plain form.
template <int Lanes>
__attribute__((target("avx512f"))) void TileAvx512(Cursor newest, PolyphaseBank::Phase phase,
                                                   float* out) {
  constexpr int Width = 8;
  constexpr int Vectors = Lanes / Width;
  constexpr __mmask8 AllLanes = 0xff;
  __m512d sum[Vectors] = {};
  for (int m = 0; m < phase.taps; ++m) {
    const __m256 coef = _mm256_set1_ps(phase.coef[m]);
    const float* under = newest.in.samples + newest.index;
    for (int v = 0; v < Vectors; ++v) {
      const __m256 product = _mm256_loadu_ps(under + v * Width) * coef;
      sum[v] = sum[v] + _mm512_maskz_cvtps_pd(AllLanes, product);
    }
    newest.Older();
  }
  for (int v = 0; v < Vectors; ++v) {
    _mm256_storeu_ps(out + v * Width, _mm512_maskz_cvtpd_ps(AllLanes, sum[v]));
  }
}

#endif

// The kinds of tile of an instruction set, the largest first: as many lanes as the registers hold
// sums for, since the outputs of a tile share what is around its loop. The smallest one has
// FewestLanes.
std::span<const Tile> TilesFor([[maybe_unused]] InstructionSet set) {
#if defined(__x86_64__)
  static constexpr Tile Avx512[] = {{64, TileAvx512<64>},
                                    {32, TileAvx512<32>},
                                    {16, TileAvx512<16>},
                                    {FewestLanes, TileAvx512<FewestLanes>}};
  static constexpr Tile Avx2[] = {
      {32, TileAvx2<32>}, {16, TileAvx2<16>}, {FewestLanes, TileAvx2<FewestLanes>}};
  if (set == InstructionSet::Avx512) {
    return Avx512;
  }
  if (set == InstructionSet::Avx2) {
    return Avx2;
  }
#endif
  static constexpr Tile Baseline[] = {
      {32, TileBaseline<32>}, {16, TileBaseline<16>}, {FewestLanes, TileBaseline<FewestLanes>}};
  return Baseline;
}

// `count` outputs of one phase, at least FewestLanes: in large tiles, and in smaller ones what is
// left. The last tile makes outputs again that stand before it, rather than fewer.
void RunPhase(std::span<const Tile> tiles, Cursor newest, PolyphaseBank::Phase phase, float* out,
              int count) {
  const auto run = [&](const Tile& tile, int from) {
    Cursor cursor = newest;
    cursor.index += from;
    tile.run(cursor, phase, out + from);
  };
  int done = 0;
  for (const Tile& tile : tiles) {
    for (; done + tile.lanes <= count; done += tile.lanes) {
      run(tile, done);
    }
  }
  if (done < count) {
    run(tiles.back(), count - FewestLanes);
  }
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
  float room[BlockBufferSize + MostStreams];
  const Streams streams = Split(in, inCount, static_cast<int>(advance), room);
  const auto tiles = TilesFor(set);
  const int apart = static_cast<int>(phases);
  const auto run = [&](int first, int count, float* made) {
    const std::int64_t at = position + std::int64_t{first} * down;
    RunPhase(tiles, Cursor(streams, at / up), At(at % up), made, count);
  };
  if (apart == 1) {
    run(0, outCount, out);
    return;
  }
  float made[BlockBufferSize];
  for (int first = 0; first < apart; ++first) {
    const int count = (outCount - first + apart - 1) / apart;
    run(first, count, made);
    for (int i = 0; i < count; ++i) {
      out[first + i * apart] = made[i];
    }
  }
}

}  // namespace wavefilters
