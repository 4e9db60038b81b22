// How a change of rate is split into stages, and how a signal of its own is written.

#include "host/resampling.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

#include "host/failure.h"
#include "host/host_arguments.h"

namespace {

using testing::IsEmpty;
using wavechain::FindQuality;
using wavechain::ParseSignal;
using wavechain::PlanStages;
using wavechain::RateRatio;
using wavechain::RatioOf;
using wavechain::ResamplerQualities;
using wavechain::ResamplerQuality;
using wavechain::ResamplerStage;

std::string Text(const std::vector<ResamplerStage>& stages) {
  std::string text;
  for (const ResamplerStage& s : stages) {
    text += (text.empty() ? "" : " ") + std::to_string(s.up) + "/" + std::to_string(s.down) + "," +
            std::to_string(s.halfLength);
  }
  return text;
}

TEST(RatioOf, IsTheFractionOfTheSmallestTerms) {
  const int rates[] = {1, 7, 8000, 11025, 12000, 16000, 22050, 44100, 44101, 48000, 96000, 192000};
  for (const int from : rates) {
    for (const int to : rates) {
      const int common = std::gcd(from, to);
      const auto ratio = RatioOf(to * (1000.0 / from) * 0.001);
      ASSERT_TRUE(ratio) << from << " to " << to;
      EXPECT_EQ(ratio->up, to / common) << from << " to " << to;
      EXPECT_EQ(ratio->down, from / common) << from << " to " << to;
    }
  }
  for (const double beyond : {1e-300, 1e-11, 1e10, 1e300}) {
    EXPECT_FALSE(RatioOf(beyond)) << beyond;
  }
}

TEST(PlanStages, FollowsTheTableOfTheQualities) {
  const auto plan = [](std::int64_t up, std::int64_t down, const char* quality) {
    return Text(PlanStages({up, down}, *FindQuality(quality)));
  };
  EXPECT_EQ(plan(1, 2, "fast"), "1/2,28");
  EXPECT_EQ(plan(160, 147, "fast"), "8/7,112 20/21,300");
  EXPECT_EQ(plan(2, 3, "good"), "2/3,118");
  EXPECT_EQ(plan(147, 160, "good"), "21/20,819 7/8,315");
  EXPECT_EQ(plan(3, 2, "best"), "3/2,294");
  EXPECT_EQ(plan(160, 147, "best"), "8/7,784 20/21,2040");
  EXPECT_EQ(plan(147, 160, "best"), "21/20,2037 7/8,784");
  EXPECT_EQ(plan(48000, 44100, "best"), plan(160, 147, "best"));
  EXPECT_EQ(plan(1, 1, "best"), "1/1,0");
  EXPECT_EQ(plan(44100, 44100, "fast"), "1/1,0");
}

// Whether every prime factor of the value is small enough for a kernel.
bool Smooth(int value, int largest) {
  for (int p = 2; p <= largest; ++p) {
    while (value % p == 0) {
      value /= p;
    }
  }
  return value == 1;
}

void ExpectPlan(const RateRatio& ratio, const ResamplerQuality& quality) {
  const std::vector<ResamplerStage> stages = PlanStages(ratio, quality);
  const double whole = static_cast<double>(ratio.up) / static_cast<double>(ratio.down);
  RateRatio reached;
  for (const ResamplerStage& stage : stages) {
    reached = {reached.up * stage.up, reached.down * stage.down};
    EXPECT_GE(static_cast<double>(reached.up) / static_cast<double>(reached.down),
              std::min(1.0, whole) * 0.999999);
    const int factor = std::max(stage.up, stage.down);
    EXPECT_LE(factor, quality.largestFactor);
    EXPECT_LE(stage.halfLength, 2048);
    EXPECT_EQ(stage.halfLength % stage.up, 0);
    EXPECT_GE(stage.halfLength, factor > 1 ? quality.reach * factor * 985 / 1000 : 0);
  }
  EXPECT_EQ(reached.up * ratio.down, reached.down * ratio.up);
}

TEST(PlanStages, ReachesEveryRatioThatItCan) {
  for (const ResamplerQuality& quality : ResamplerQualities()) {
    for (int up = 1; up <= 170; up += 3) {
      for (int down = 1; down <= 170; down += 2) {
        const int common = std::gcd(up, down);
        if (Smooth(up / common, quality.largestFactor) &&
            Smooth(down / common, quality.largestFactor)) {
          ASSERT_NO_FATAL_FAILURE(ExpectPlan({up, down}, quality)) << up << "/" << down;
        } else {
          EXPECT_THAT(PlanStages({up, down}, quality), IsEmpty()) << up << "/" << down;
        }
      }
    }
  }
  ExpectPlan({1 << 30, 387420489}, *FindQuality("best"));  // 3^18
}

TEST(ParseSignal, TakesAFileAndFiltersBehindBars) {
  EXPECT_EQ(ParseSignal("a.wav").path, "a.wav");
  EXPECT_EQ(ParseSignal("  two words.wav ").path, "two words.wav");
  EXPECT_EQ(ParseSignal("it's.wav|FIRFilter 5").path, "it's.wav");
  EXPECT_EQ(ParseSignal("'a|b.wav' | FIRFilter 5").path, "a|b.wav");
  EXPECT_EQ(ParseSignal("\"a|b.wav\"").path, "a|b.wav");
  EXPECT_EQ(ParseSignal("'a' b.wav").path, "'a' b.wav");
  const auto signal = ParseSignal("a.wav | FIRFilter 5 | SumSources with='b|GlotSyn' | SineFilter");
  ASSERT_EQ(signal.filters.size(), 3U);
  EXPECT_EQ(signal.filters[0].kind->name, "FIRFilter");
  EXPECT_EQ(signal.filters[1].second->path, "b");
  EXPECT_EQ(signal.filters[1].second->filters.at(0).kind->name, "GlotSyn");
  EXPECT_EQ(signal.filters[2].kind->name, "SineFilter");
  for (const char* wrong : {"", " ", "|", "-", "a |", "a | | FIRFilter 5", "a | FIRFilter"}) {
    EXPECT_THROW(ParseSignal(wrong), wavechain::Failure) << wrong;
  }
}

TEST(FilterCall, IsWrittenAsItCanBeReadAgain) {
  for (const char* text :
       {"ResampleBlackman rate=16000 quality=best", "ResampleBlackman 2 3 quality=fast",
        "SumSources 1 -1 with=\"it's.wav | FIRFilter 5\"", "SumSources with='\"a|b\" | SineFilter'",
        "SumSources with=\"'a\\\\b' | SumSources with=\\\"c's d\\\"\" channel=2"}) {
    const auto call = wavechain::ParseFilter(text);
    const auto again = wavechain::ParseFilter(call.Text());
    EXPECT_EQ(again.hostValues, call.hostValues) << call.Text();
    EXPECT_EQ(again.values, call.values) << call.Text();
    EXPECT_EQ(again.Text(), call.Text());
  }
}

}  // namespace
