#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <ostream>

#include "voice/voice.h"

// Which events are placed in which call, and where.
namespace voice {
namespace {

using support::Constant;
using support::Slice;

struct Source {
  support::Kind kind;
  const char* event;  // a line but for its instant
  // Where the event sounds around its instant, far from both ends of a block.
  int before;
  int after;
};

void PrintTo(const Source& source, std::ostream* out) { *out << source.kind.entry; }

// A bare glottal pulse ends at its instant. A burst at intervals of 1 ms is 25 samples long, five
// of them before its centre; the very first is 0 with the window.
const Source Sources[] = {{support::GlotSyn, " 0.5 0.1 0", 512, 1},
                          {support::FricSyn, " 0.5", 4, 20},
                          {support::PulseSyn, " 0.5", 0, 1}};

class Scheduling : public testing::TestWithParam<Source> {
 protected:
  static std::string Event(double time_ms, const std::string& end = "\n") {
    return support::Text(time_ms) + GetParam().event + end;
  }
  static Voice Of(const std::string& text) { return Voice(GetParam().kind, text); }
  // The extent of an event at an instant.
  static Extent At(int index) { return {index - GetParam().before, index + GetParam().after}; }
  static Extent Sound(const std::string& text, int count, double interval_ms = 1.0) {
    return Sounding(Rendered(GetParam().kind, text, count, interval_ms));
  }
};

TEST_P(Scheduling, PlacesWhatLiesMoreThan1024SamplesBeforeTheEnd) {
  EXPECT_EQ(Sound(Event(2975), 4000), At(2975));
  EXPECT_EQ(Sound(Event(2976), 4000), Extent{});
  EXPECT_EQ(Sound(Event(3999), 4000), Extent{});
}

TEST_P(Scheduling, PlacesAWaitingEventInALaterCall) {
  Voice source = Voice(GetParam().kind, Event(3500));
  EXPECT_EQ(Sounding(source.Apply(Constant(4000), 0)), Extent{});
  EXPECT_EQ(Sounding(source.Apply(Constant(4524), 0)), Extent{});
  EXPECT_EQ(Sounding(source.Apply(Constant(4000), 525)), At(2975));
  EXPECT_EQ(Sounding(source.Apply(Constant(4000), 525)), Extent{});
}

TEST_P(Scheduling, KeepsTheBlocksTimeBase) {
  // The noise comes from the process's generator.
  std::srand(5);
  const Samples whole = Rendered(GetParam().kind, Event(3000) + Event(3000), 8000);
  for (const int start : {1, 1000, 2400}) {
    Voice source(GetParam().kind, Event(3000) + Event(3000));
    std::srand(5);
    const Samples later = source.Apply(Constant(8000 - start), start);
    EXPECT_TRUE(support::SameBits(later, Slice(whole, start, 8000 - start))) << start;
  }
}

TEST_P(Scheduling, TakesTheIndexTowardZero) {
  EXPECT_EQ(Sound(Event(700.99), 4000), At(700));
  // 90.3 / 0.1 falls just short of 903 in double precision.
  const double interval_ms = 0.1;
  ASSERT_LT(90.3 / interval_ms, 903.0);
  const Extent bare = Sound(Event(90.3), 4000, interval_ms);
  if (GetParam().kind == support::FricSyn) {
    EXPECT_EQ(bare.first, 902 - 49);
  } else {
    EXPECT_EQ(bare.end, 903);
  }
}

TEST_P(Scheduling, TakesATimeJustBeforeZeroAsZero) {
  if (GetParam().kind == support::FricSyn) {
    EXPECT_EQ(Sound(Event(-0.999), 4000), Extent{}) << "too close to the start";
    Voice source(GetParam().kind, Event(-0.999));
    EXPECT_EQ(Sounding(source.Apply(Constant(4000), -5)), At(5));
  } else {
    EXPECT_EQ(Sound(Event(-0.999), 4000), (Extent{0, 1}));
  }
  EXPECT_EQ(Sound(Event(-1), 4000), Extent{});
}

TEST_P(Scheduling, DropsWhatLiesBeforeTheBlockAndGoesOn) {
  Voice source(GetParam().kind, Event(-1e300) + Event(-7) + Event(3) + Event(1999) + Event(2600));
  EXPECT_EQ(Sounding(source.Apply(Constant(4000), 2000)), At(600));
}

TEST_P(Scheduling, LetsTimesBeyondTheIndexRangeWait) {
  Voice source(GetParam().kind, Event(600) + Event(1e300));
  Samples first = source.Apply(Constant(4000));
  EXPECT_EQ(Sounding(first), At(600));
  EXPECT_EQ(Sounding(source.Apply(Constant(4000), 1 << 30)), Extent{});
  // The last index, in blocks that reach beyond the range.
  EXPECT_EQ(Sounding(source.Apply(Constant(3000), INT_MAX - 1976)), Extent{});
  EXPECT_EQ(Sounding(source.Apply(Constant(4000), INT_MAX - 1500)), At(1500));
}

TEST_P(Scheduling, CountsFromTheFirstIndexOfTheRange) {
  Voice source(GetParam().kind, Event(-1e300) + Event(static_cast<double>(INT_MIN) + 600));
  const Samples block = source.Apply(Constant(4000), INT_MIN);
  EXPECT_EQ(Sounding(Slice(block, 60, 3940)).end, 540 + GetParam().after);
}

TEST_P(Scheduling, PlacesNothingInShortBlocks) {
  for (const int count : {0, 1, 1023, 1024, -1, -5000, INT_MIN}) {
    for (const int start : {0, 600, -600, INT_MIN, INT_MAX}) {
      Voice source(GetParam().kind, Event(600) + Event(600));
      EXPECT_EQ(Sounding(source.Apply(Constant(1024), count, start)), Extent{})
          << count << " from " << start;
    }
  }
}

TEST_P(Scheduling, UsesNoMoreThanItsPartOfTheBuffer) {
  const Samples wide = Voice(GetParam().kind, Event(600)).Apply(Constant(4000), 2000, 0);
  EXPECT_EQ(Sounding(wide), At(600));
  EXPECT_EQ(Sounding(Voice(GetParam().kind, Event(976)).Apply(Constant(4000), 2000, 0)), Extent{});
}

TEST_P(Scheduling, ReadsLinesOfAnyEnd) {
  EXPECT_EQ(Sound(Event(600, ""), 4000), At(600));
  EXPECT_EQ(Sound(Event(600, "\r\n"), 4000), At(600));
  EXPECT_EQ(Sound("\t 600" + std::string(GetParam().event) + " \t", 4000), At(600));
  EXPECT_EQ(Sound("+6.00e+2" + std::string(GetParam().event), 4000), At(600));
}

TEST_P(Scheduling, EndsAtALineWithoutATime) {
  for (const char* line : {"\n", "\r\n", "x 1 1 1\n", "# 1 1 1\n"}) {
    EXPECT_EQ(Sound(Event(600) + line + Event(1800), 4000), At(600)) << line;
  }
}

TEST_P(Scheduling, EndsWithoutTheEventWhoseAmplitudeIsMissing) {
  for (const char* line : {"1800\n", "1800 x 1 1\n", "1800 1e999 1 1\n"}) {
    EXPECT_EQ(Sound(Event(600) + line + Event(1900), 4000), At(600)) << line;
  }
}

INSTANTIATE_TEST_SUITE_P(Each, Scheduling, testing::ValuesIn(Sources),
                         [](const auto& each) { return std::string(each.param.kind.entry); });

}  // namespace
}  // namespace voice
