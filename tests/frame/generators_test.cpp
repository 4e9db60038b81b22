// The two generators: their samples, bit for bit, and the sine's report.

#include "reference/generators.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "support/filter.h"
#include "support/guarded_buffer.h"

namespace {

using namespace support;

constexpr double NaN = std::numeric_limits<double>::quiet_NaN();
constexpr double Infinity = std::numeric_limits<double>::infinity();
constexpr double Pi = 3.141592653589793;

struct Generator : testing::Test {
  CallLog log;
  SourceMock source{"source", log, Noise(1000)};
  ConsoleMock console{"console", log};
};

struct SineFilter : Generator {
  Filter filter = MakeFilter(SineGen);

  Samples Expected(double frequency, double amplitude, double phase, double interval_ms) {
    Samples samples = source.samples;
    reference::Sine(frequency, amplitude, phase, interval_ms).Apply(samples);
    return samples;
  }
};

TEST_F(SineFilter, AddsASineOf100HzAndAmplitude1ByDefault) {
  source.samples = Constant(1000);
  filter.Set_src_list(source);
  const Samples samples = filter.PullAll({1000});
  ASSERT_EQ(samples.size(), 1000U);
  for (int i = 0; i < 1000; ++i) {
    const double expected = std::cos(2.0 * Pi * 100.0 * i * 0.0001);
    EXPECT_NEAR(static_cast<double>(samples[static_cast<std::size_t>(i)]), expected, 1e-7) << i;
  }
}

TEST_F(SineFilter, TurnsTheOscillatorStepByStepInDoublePrecision) {
  struct Case {
    double frequency, amplitude, phase, interval_ms;
  };
  const Case cases[] = {{440.0, 0.1, 0.0, 1000.0 / 44100.0}, {2500.0, 3.7, 33.0, 0.0625},
                        {-123.4, -2.0, -725.5, 0.1},         {12345.6, 1.0, 90.0, 0.1},
                        {0.001, 1e6, 180.0, 0.125},          {1e5, 0.25, 1e4, 0.02}};
  for (const Case& c : cases) {
    source.position = 0;
    source.description.interval_ms = c.interval_ms;
    filter.Set_param_list({c.frequency, c.amplitude, c.phase});
    filter.Set_src_list(source);
    EXPECT_TRUE(SameBits(filter.PullAll({64, 1, 37}),
                         Expected(c.frequency, c.amplitude, c.phase, c.interval_ms)))
        << c.frequency;
  }
}

TEST_F(SineFilter, AddsAQuarterTurnPerSampleAt250HzAnd1Ms) {
  source.samples = Constant(8);
  source.description.interval_ms = 1.0;
  filter.Set_param_list({250.0, 2.0});
  filter.Set_src_list(source);
  const Samples samples = filter.PullAll({3});
  ASSERT_EQ(samples.size(), 8U);
  const double expected[] = {2.0, 0.0, -2.0, 0.0};
  for (std::size_t i = 0; i < 8; ++i) {
    EXPECT_NEAR(static_cast<double>(samples[i]), expected[i % 4], 1e-12);
  }
}

TEST_F(SineFilter, AddsAConstantAtFrequencyZero) {
  filter.Set_param_list({0.0, 2.0, 60.0});
  filter.Set_src_list(source);
  Samples expected = source.samples;
  for (float& sample : expected) {
    sample += 1.0F;  // 2 cos 60 degrees
  }
  EXPECT_TRUE(SameBits(filter.PullAll({100}), expected));
}

TEST_F(SineFilter, AddsNothingToTheFirstSampleAtPhase90) {
  source.samples = Constant(2);
  filter.Set_param_list({100.0, 1.0, 90.0});
  filter.Set_src_list(source);
  const Samples samples = filter.PullAll({2});
  ASSERT_EQ(samples.size(), 2U);
  EXPECT_NEAR(static_cast<double>(samples[0]), 0.0, 1e-7);
  EXPECT_LT(samples[1], -0.05F) << "the sine runs on: cos(90 degrees + w) falls below 0";
}

TEST_F(SineFilter, AddsToTheSampleAsAFloat) {
  // 0.1 as a double plus 1 rounds otherwise than 0.1 as a float plus 1 in some of these.
  source.samples = Noise(1000, 7);
  filter.Set_param_list({0.0, 0.1});
  filter.Set_src_list(source);
  Samples expected = source.samples;
  for (float& sample : expected) {
    sample = sample + 0.1F;
  }
  EXPECT_TRUE(SameBits(filter.PullAll({1000}), expected));
}

TEST_F(SineFilter, KeepsItsParametersWhereTheListIsShort) {
  filter.Set_param_list({300.0, 0.5, 45.0});
  filter.Set_param_list({200.0});
  filter.Set_param_list({});
  double unused[] = {1.0, 1.0, 1.0};
  filter.Slots().Set_param_list(filter.Object(), unused, -1);
  filter.Slots().Set_param_list(filter.Object(), unused, -2147483647 - 1);
  filter.Slots().Set_param_list(filter.Object(), nullptr, 0);
  filter.Set_src_list(source);
  EXPECT_TRUE(SameBits(filter.PullAll({100}), Expected(200.0, 0.5, 45.0, 0.1)));

  source.position = 0;
  filter.Set_param_list({250.0, 0.75});
  filter.Set_src_list(source);
  EXPECT_TRUE(SameBits(filter.PullAll({100}), Expected(250.0, 0.75, 45.0, 0.1)));

  source.position = 0;
  filter.Set_param_list({260.0, 0.8, 10.0, 99.0, 98.0});
  filter.Set_src_list(source);
  EXPECT_TRUE(SameBits(filter.PullAll({100}), Expected(260.0, 0.8, 10.0, 0.1)));
}

TEST_F(SineFilter, TakesParametersOverAtTheNextInit) {
  filter.Set_param_list({300.0, 0.5, 45.0});
  filter.Set_src_list(source);
  filter.Set_param_list({1.0, 2.0, 3.0});
  EXPECT_TRUE(SameBits(filter.Pull(1000), Expected(300.0, 0.5, 45.0, 0.1)));
  source.position = 0;
  filter.Init(0.25);
  EXPECT_TRUE(SameBits(filter.Pull(1000), Expected(1.0, 2.0, 3.0, 0.25)));
}

TEST_F(SineFilter, StartsAtItsPhaseAgainWithEachSourceList) {
  filter.Set_src_list(source);
  filter.Pull(333);
  source.position = 0;
  filter.Set_src_list(source);
  EXPECT_TRUE(SameBits(filter.PullAll({50}), Expected(100.0, 1.0, 0.0, 0.1)));
}

TEST_F(SineFilter, TakesEveryParameterAndIntervalAsItIs) {
  for (const double odd : {NaN, Infinity, -Infinity, 1e300, -1e300, 5e-324, -0.0}) {
    for (int index = 0; index < 4; ++index) {
      double values[] = {440.0, 0.5, 30.0, 0.1};
      values[index] = odd;
      source.position = 0;
      source.description.interval_ms = values[3];
      filter.Set_param_list({values[0], values[1], values[2]});
      filter.Set_src_list(source);
      EXPECT_TRUE(SameBitsOrNaN(filter.PullAll({100}),
                                Expected(values[0], values[1], values[2], values[3])))
          << odd << " as parameter " << index;
    }
  }
}

TEST_F(SineFilter, AppliesToAnyCountThroughItsSlot) {
  filter.Set_src_list(source);
  reference::Sine sine(100.0, 1.0, 0.0, 0.1);
  for (const int count : {5, 0, -1, -2147483647 - 1, 3}) {
    GuardedBuffer buffer(5);
    Samples expected = Constant(std::max(count, 0), 0.5F);
    std::copy(expected.begin(), expected.end(), buffer.data());
    sine.Apply(expected);
    filter.Call<InPlaceApply>(15, buffer.data(), count);
    EXPECT_TRUE(SameBits(buffer.First(count), expected));
    buffer.CheckAfter(std::max(count, 0));
  }
}

TEST_F(SineFilter, TimesEachBlockAndReportsTheAverageAtTheEnd) {
  source.samples = Constant(10);
  console.step_s = 0.0007;
  filter.Set_console_out(&console);
  filter.Set_src_list(source);
  log.Take();
  filter.Pull(3);
  EXPECT_EQ(log.Take(), (Calls{"source.TransmitNow(3)", "console.GetTime()", "source.EndOfSrc()",
                               "console.GetTime()"}));
  filter.Pull(0);
  EXPECT_EQ(log.Take(), (Calls{"source.TransmitNow(0)", "console.GetTime()", "source.EndOfSrc()"}));
  filter.Pull(8);
  // The clock stood at 0, 1, 2 (the empty block), 3 and 4 steps, added up one by one.
  double clock[5] = {};
  for (int i = 1; i < 5; ++i) {
    clock[i] = clock[i - 1] + 0.0007;
  }
  const double sum = (clock[1] - clock[0]) * 1e9 / 3 + (clock[4] - clock[3]) * 1e9 / 7;
  EXPECT_EQ(log.Take(),
            (Calls{"source.TransmitNow(8)", "console.GetTime()", "source.EndOfSrc()",
                   "console.GetTime()", "console.PutStr(\"Avg complex multiply (ns) =\")",
                   "console.PutNum(10, 3, " + Text(sum / 2) + ")", "console.NewLine()"}));
}

TEST_F(SineFilter, ReportsAgainWithEveryPullAfterTheEnd) {
  source.samples = Constant(4);
  console.step_s = 1.0;
  filter.Set_console_out(&console);
  filter.Set_src_list(source);
  filter.Pull(4);
  log.Take();
  for (int i = 0; i < 3; ++i) {
    filter.Pull(4);
    EXPECT_EQ(log.Take(), (Calls{"source.TransmitNow(4)", "console.GetTime()", "source.EndOfSrc()",
                                 "console.PutStr(\"Avg complex multiply (ns) =\")",
                                 "console.PutNum(10, 3, 2.5e+08)", "console.NewLine()"}));
  }
}

TEST_F(SineFilter, ReportsWithoutAFigureForAnEmptyInput) {
  source.samples.clear();
  filter.Set_console_out(&console);
  filter.Set_src_list(source);
  log.Take();
  filter.Pull(5);
  EXPECT_EQ(log.Take(),
            (Calls{"source.TransmitNow(5)", "console.GetTime()", "source.EndOfSrc()",
                   "console.PutStr(\"Avg complex multiply (ns) =\")", "console.NewLine()"}));
}

TEST_F(SineFilter, CountsBlocksOfNoTimeWhileItHasNoConsole) {
  source.samples = Constant(6);
  filter.Set_src_list(source);
  log.Take();
  filter.Pull(2);
  EXPECT_EQ(log.Take(), (Calls{"source.TransmitNow(2)", "source.EndOfSrc()"}));
  console.step_s = 1.0;
  filter.Set_console_out(&console);
  filter.Pull(4);
  EXPECT_EQ(log.Take("console").at(4), "PutNum(10, 3, 1.25e+08)") << "(0 + 1e9 / 4) / 2";
}

TEST_F(SineFilter, MeasuresFromZeroWhereTheConsoleComesAndGoes) {
  // The start of a block is 0 without a console, not what an earlier block left.
  source.samples = Constant(6);
  console.time_s = 1000.0;
  filter.Set_console_out(&console);
  filter.Set_src_list(source);
  filter.Pull(2);
  filter.Set_console_out(nullptr);
  filter.Pull(2);
  filter.Set_console_out(&console);
  log.Take();
  filter.Pull(2);
  EXPECT_EQ(log.Take("console").at(3), "PutNum(10, 3, 0)");
}

TEST_F(SineFilter, ReadsTheClockOfTheConsoleThatItHasAtThatMoment) {
  // A host may exchange the console while it is asked for the end: without one the clock reads 0.
  source.samples = Constant(8);
  console.time_s = 5.0;
  filter.Set_src_list(source);
  source.before = [this](const std::string& operation) {
    if (operation == "EndOfSrc") {
      filter.Set_console_out(console.References() == 1 ? &console : nullptr);
    }
  };
  filter.Pull(4);
  source.before = nullptr;
  log.Take();
  filter.Pull(4);
  EXPECT_EQ(log.Take("console").at(3), "PutNum(10, 3, " + Text(5.0 * 1e9 / 4 / 2) + ")");
}

TEST_F(SineFilter, KeepsSumAndCountThroughInitAndANewSource) {
  source.samples = Constant(4);
  console.step_s = 1.0;
  filter.Set_console_out(&console);
  filter.Set_src_list(source);
  filter.Pull(4);
  SourceMock next("next", log, Constant(2));
  filter.Set_src_list(next);
  filter.Init(0.1);
  log.Take();
  filter.Pull(2);
  EXPECT_EQ(log.Take("console").at(3), "PutNum(10, 3, 3.75e+08)") << "(1e9 / 4 + 1e9 / 2) / 2";
  filter.Dispose();
}

TEST_F(SineFilter, AsksItsOwnSlotWhetherTheEndCame) {
  filter.Exchange(
      6, +[](void*) { return true; });
  filter.Set_console_out(&console);
  filter.Set_src_list(source);
  log.Take();
  filter.Pull(2);
  EXPECT_EQ(log.Take(), (Calls{"source.TransmitNow(2)", "console.GetTime()", "console.GetTime()",
                               "console.PutStr(\"Avg complex multiply (ns) =\")",
                               "console.PutNum(10, 3, 0)", "console.NewLine()"}));
}

TEST_F(SineFilter, ReportsFromApplyWithoutASource) {
  filter.Set_console_out(&console);
  filter.Init(0.1);
  log.Take();
  float sample = 0.0F;
  filter.Call<InPlaceApply>(15, &sample, 1);
  EXPECT_EQ(sample, 1.0F);
  EXPECT_EQ(log.Take("console"),
            (Calls{"GetTime()", "GetTime()", "PutStr(\"Avg complex multiply (ns) =\")",
                   "PutNum(10, 3, 0)", "NewLine()"}));
}

struct SquareFilter : Generator {
  Filter filter = MakeFilter(SquareGen);

  static Samples Expected(reference::Square wave, int count) {
    Samples samples;
    for (int i = 0; i < count; ++i) {
      samples.push_back(wave.Next());
    }
    return samples;
  }
};

TEST_F(SquareFilter, ReplacesTheSignalByLevelsOf256Samples) {
  filter.Set_src_list(source);
  Samples expected;
  for (int i = 0; i < 1000; ++i) {
    expected.push_back(i / 256 % 2 == 0 ? -1.0F : 1.0F);
  }
  EXPECT_TRUE(SameBits(filter.PullAll({100, 1, 255}), expected));
}

TEST_F(SquareFilter, AlternatesAtHalfPeriodsOfOneAndBelow) {
  Samples expected;
  for (int i = 0; i < 1000; ++i) {
    expected.push_back(i % 2 == 0 ? -1.0F : 1.0F);
  }
  for (const double halfPeriod : {1.0, 1.9, 0.0, 0.9, -0.9, -1.0, -2.9, -1e300, NaN, -Infinity}) {
    source.position = 0;
    filter.Set_param_list({halfPeriod});
    filter.Set_src_list(source);
    EXPECT_TRUE(SameBits(filter.PullAll({100}), expected)) << halfPeriod;
  }
}

TEST_F(SquareFilter, TruncatesTheHalfPeriod) {
  for (const double halfPeriod : {2.0, 2.9, 2.9999999}) {
    source.position = 0;
    filter.Set_param_list({halfPeriod});
    filter.Set_src_list(source);
    EXPECT_TRUE(SameBits(filter.Pull(6), {-1.0F, -1.0F, 1.0F, 1.0F, -1.0F, -1.0F})) << halfPeriod;
  }
}

TEST_F(SquareFilter, StaysOnItsFirstLevelAtAHalfPeriodBeyondTheRange) {
  for (const double halfPeriod : {1e300, Infinity, 2147483648.0, 4294967298.0}) {
    source.position = 0;
    filter.Set_param_list({halfPeriod});
    filter.Set_src_list(source);
    EXPECT_TRUE(SameBits(filter.PullAll({100}), Constant(1000, -1.0F))) << halfPeriod;
  }
}

TEST_F(SquareFilter, ShowsEachFlipAsZeroWithEqualWeights) {
  filter.Set_param_list({3.0, 0.5, 0.5});
  filter.Set_src_list(source);
  EXPECT_TRUE(
      SameBits(filter.Pull(10), {-1.0F, -1.0F, -1.0F, 0.0F, 1.0F, 1.0F, 0.0F, -1.0F, -1.0F, 0.0F}));
}

TEST_F(SquareFilter, WeighsTheLevelsInDoublePrecision) {
  for (const double current : {1.0, 0.3, -2.0, 1e39, NaN, -0.0}) {
    for (const double previous : {0.0, 0.7, 1e-9, -1e39, Infinity}) {
      source.position = 0;
      filter.Set_param_list({7.0, current, previous});
      filter.Set_src_list(source);
      EXPECT_TRUE(SameBitsOrNaN(filter.PullAll({13, 64}), Expected({7, current, previous}, 1000)))
          << current << " and " << previous;
    }
  }
}

TEST_F(SquareFilter, KeepsItsParametersWhereTheListIsShort) {
  filter.Set_param_list({9.0, 0.5, 0.25});
  filter.Set_param_list({4.0});
  double unused[] = {1.0, 1.0, 1.0};
  filter.Slots().Set_param_list(filter.Object(), unused, 0);
  filter.Slots().Set_param_list(filter.Object(), unused, -3);
  filter.Slots().Set_param_list(filter.Object(), nullptr, 0);
  filter.Set_src_list(source);
  EXPECT_TRUE(SameBits(filter.Pull(500), Expected({4, 0.5, 0.25}, 500)));
  source.position = 0;
  filter.Set_param_list({5.0, 0.75});
  filter.Set_src_list(source);
  EXPECT_TRUE(SameBits(filter.Pull(500), Expected({5, 0.75, 0.25}, 500)));
  source.position = 0;
  filter.Set_param_list({6.0, 0.5, 0.125, 77.0});
  filter.Set_src_list(source);
  EXPECT_TRUE(SameBits(filter.Pull(500), Expected({6, 0.5, 0.125}, 500)));
}

TEST_F(SquareFilter, TakesParametersOverAtOnce) {
  filter.Set_param_list({5.0});
  filter.Set_src_list(source);
  reference::Square wave{5};
  Samples expected;
  for (int i = 0; i < 300; ++i) {
    expected.push_back(wave.Next());
  }
  Samples samples = filter.Pull(300);
  filter.Set_param_list({3.0, 0.25, 2.0});
  wave.halfPeriod = 3;
  wave.currentWeight = 0.25;
  wave.previousWeight = 2.0;
  for (int i = 0; i < 300; ++i) {
    expected.push_back(wave.Next());
  }
  samples = samples + filter.Pull(300);
  EXPECT_TRUE(SameBits(samples, expected));
}

TEST_F(SquareFilter, AShorterHalfPeriodFlipsAfterTheNextSample) {
  filter.Set_param_list({100.0});
  filter.Set_src_list(source);
  filter.Pull(50);
  filter.Set_param_list({10.0});
  EXPECT_TRUE(SameBits(filter.Pull(3), {-1.0F, 1.0F, 1.0F}));
}

TEST_F(SquareFilter, StartsAgainWithEachSourceListWhateverTheInterval) {
  filter.Set_param_list({4.0, 1.0, 0.5});
  for (const double interval_ms : {0.1, 0.0, -1.0, 1e300, NaN}) {
    source.position = 0;
    source.description.interval_ms = interval_ms;
    filter.Set_src_list(source);
    EXPECT_TRUE(SameBits(filter.Pull(6), {-1.5F, -1.5F, -1.5F, -1.5F, 0.5F, 1.5F})) << interval_ms;
  }
}

TEST_F(SquareFilter, IgnoresWhatItsSourceDelivers) {
  source.samples = Constant(10, std::numeric_limits<float>::quiet_NaN());
  filter.Set_src_list(source);
  EXPECT_TRUE(SameBits(filter.PullAll({4}), Constant(10, -1.0F)));
}

TEST_F(SquareFilter, AppliesToAnyCountThroughItsSlot) {
  filter.Set_param_list({2.0});
  filter.Set_src_list(source);
  reference::Square wave{2};
  for (const int count : {3, 0, -1, -2147483647 - 1, 4}) {
    GuardedBuffer buffer(5);
    Samples expected;
    for (int i = 0; i < count; ++i) {
      expected.push_back(wave.Next());
    }
    filter.Call<InPlaceApply>(15, buffer.data(), count);
    EXPECT_TRUE(SameBits(buffer.First(count), expected));
    buffer.CheckAfter(std::max(count, 0));
  }
}

TEST_F(SquareFilter, NeverUsesItsConsole) {
  filter.Set_console_out(&console);
  filter.Set_src_list(source);
  log.Take();
  filter.PullAll({100});
  filter.Pull(5);
  EXPECT_EQ(log.Take("console"), Calls{});
}

class GeneratorSplits : public testing::TestWithParam<Kind> {};

INSTANTIATE_TEST_SUITE_P(Kinds, GeneratorSplits, testing::Values(SineGen, SquareGen), KindName);

TEST_P(GeneratorSplits, AnySplitIntoPullsAndDeliveriesGivesTheSameBits) {
  CallLog log;
  Samples whole;
  for (std::uint32_t seed = 0; seed < 50; ++seed) {
    std::vector<int> pulls;
    std::vector<int> deliveries;
    for (const float random : Noise(20, seed)) {
      pulls.push_back(static_cast<int>(100.0F + 99.0F * random));
      deliveries.push_back(static_cast<int>(60.0F - 60.0F * random));
    }
    SourceMock source("source", log, Noise(3000));
    source.deliver = seed == 0 ? nullptr : InBlocksOf(deliveries);
    Filter filter = MakeFilter(GetParam());
    filter.Set_param_list({77.7, 0.4, 0.3});
    filter.Set_src_list(source);
    const Samples samples = filter.PullAll(seed == 0 ? std::vector<int>{3000} : pulls);
    if (seed == 0) {
      whole = samples;
      ASSERT_EQ(whole.size(), 3000U);
    }
    EXPECT_TRUE(SameBits(samples, whole)) << "seed " << seed;
    log.Take();
  }
}

}  // namespace
