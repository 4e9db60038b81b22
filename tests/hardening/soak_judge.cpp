#include "hardening/soak_judge.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <numbers>

#include "hardening/plain_filter.h"

namespace hardening {
namespace {

constexpr int Apart = 1000;  // of the two sources
// Near the signal's end filters have no more data in hand than they need: nothing is looked at
// there.
constexpr std::int64_t Edge = 16384;

// Values of the pellets' records in turn, in thousandths of a millimetre.
double Coordinate(std::int64_t record) { return record % 2 == 0 ? 5000.0 : 5009.0; }

// In millimetres, from (x, x) to the palate's points but the last, which is not searched.
double PalateDistance(double x) {
  double least = HUGE_VAL;
  for (int point = 0; point < 199; ++point) {
    least = std::min(least, std::hypot(point * 100.0 - x, 20000.0 - point * point - x));
  }
  return least / 1000.0;
}

bool HoldsPulse(const Story& story, std::int64_t index) {
  const auto step = static_cast<std::int64_t>(SoakData::EventStep_ms / story.interval_ms + 0.5);
  const std::int64_t number = index / step;
  const bool early = number >= 1 && number < 10;
  const bool dense = static_cast<double>(number) * SoakData::EventStep_ms >= story.dense.from_ms;
  return index % step == 0 && number >= 1 && (early || dense) && index < LargestIndex;
}

// What stands at a place of the output, where a closed form says so; not-a-number where none does.
double Expected(const Story& story, std::int64_t index) {
  if (Is(story.kind, support::PulseSyn)) {
    return HoldsPulse(story, index) ? -0.5 : double{Input(0, index)};
  }
  if (Is(story.kind, support::SineGen)) {
    const double turns = std::fmod(440.0 * static_cast<double>(index) * 1e-4, 1.0) + 30.0 / 360.0;
    return double{Input(0, index)} + 0.5 * std::cos(2.0 * std::numbers::pi * turns);
  }
  const bool kinematics = Is(story.kind, support::BeamData);
  if ((kinematics || Is(story.kind, support::BeamPel)) && index < LargestIndex - Edge) {
    const double place =
        static_cast<double>(index) * story.interval_ms / SoakData::RecordStep_ms + 0.5;
    const double within = place - std::floor(place);
    if (within < 0.03 || within > 0.97) return std::nan("");
    const double held = Coordinate(static_cast<std::int64_t>(place));
    return kinematics ? PalateDistance(held) : held / 1000.0;
  }
  return std::nan("");
}

// How many outputs the kind makes of a cycle of the input, where they repeat; 0 where they do not.
int OutputPeriod(const Kind& kind) {
  if (Is(kind, support::Resample)) return Period / 3 * 2;
  return Peeks(kind) || Is(kind, support::SquareGen) ? Period : 0;
}

}  // namespace

float Input(int source, std::int64_t index) {
  return PlainSource::Sample(static_cast<int>((index + source * Apart) % Period));
}

Judge::Judge(const Story& told) : story(told), period(OutputPeriod(told.kind)) {
  cycle.resize(static_cast<std::size_t>(period));
}

void Judge::Look(const float* block, int count) {
  const std::int64_t end = index + count;
  if (end < LastSafe()) {
    LookAt(block, 0);
    // Where events stand.
    const auto next = static_cast<int>((1000 - index % 1000) % 1000);
    if (next < count) LookAt(block, next);
    if (period > 0) Compare(block, count);
  }
  index = end;
}

std::int64_t Judge::LastSafe() const {
  return (Is(story.kind, support::Resample) ? story.samples / 3 * 2 : story.samples) - Edge;
}

void Judge::LookAt(const float* block, int offset) {
  const double expected = Expected(story, index + offset);
  EXPECT_TRUE(std::isfinite(block[offset])) << story.kind << " at " << index + offset;
  if (expected == expected) {
    EXPECT_NEAR(double{block[offset]}, expected, 1e-4) << story.kind << " at " << index + offset;
  }
}

// The first cycle has the beginning in it, the second one is kept.
void Judge::Compare(const float* block, int count) {
  std::int64_t at = index;
  while (count > 0) {
    const auto place = static_cast<int>(at % period);
    const int piece = std::min(count, period - place);
    const auto bytes = static_cast<std::size_t>(piece) * sizeof(float);
    float* const kept = cycle.data() + place;
    if (at >= 2 * std::int64_t{period}) {
      EXPECT_EQ(std::memcmp(kept, block, bytes), 0) << story.kind << " after " << at;
    } else if (at >= period) {
      std::memcpy(kept, block, bytes);
    }
    at += piece;
    block += piece;
    count -= piece;
  }
}

}  // namespace hardening
