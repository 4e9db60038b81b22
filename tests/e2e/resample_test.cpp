// Changes of the sampling rate: lengths, rates, and samples against the plain sum.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "e2e/support/program.h"
#include "e2e/support/sound.h"
#include "support/samples.h"
#include "support/temp_folder.h"

namespace {

using e2e::Outcome;
using e2e::ReadSound;
using e2e::Sound;
using e2e::Wavechain;
using e2e::WriteSound;
using support::SameBits;
using support::Samples;
using testing::HasSubstr;
using testing::Not;

constexpr double Pi = 3.141592653589793;

long Ceil(long samples, long up, long down) { return (samples * up + down - 1) / down; }

class Resampling : public testing::Test {
 protected:
  std::string Path(const std::string& name) const { return folder.Path(name); }

  // Runs the filters over in.wav into out.wav.
  Outcome Run(const std::vector<std::string>& filters, const std::string& out = "out.wav") const {
    std::vector<std::string> arguments = {"run", Path("in.wav"), Path(out), "--force",
                                          "--no-record"};
    for (const std::string& filter : filters) {
      arguments.insert(arguments.end(), {"-f", filter});
    }
    return Wavechain(arguments);
  }

  Sound Result(const std::vector<std::string>& filters) const {
    const Outcome run = Run(filters);
    EXPECT_EQ(run.status, 0) << run.err;
    return ReadSound(Path("out.wav"));
  }

  void ExpectSameBytes(const std::string& planned, const std::vector<std::string>& spelledOut) {
    EXPECT_EQ(Run({planned}, "planned.wav").status, 0);
    EXPECT_EQ(Run(spelledOut, "spelled.wav").status, 0);
    EXPECT_TRUE(e2e::ReadFile(Path("planned.wav")) == e2e::ReadFile(Path("spelled.wav")))
        << planned;
  }

  void ExpectRefusal(const std::string& filter, const std::string& message) {
    const Outcome run = Run({filter}, "refused.wav");
    EXPECT_EQ(run.status, 1) << filter;
    EXPECT_THAT(run.err, HasSubstr(message));
    EXPECT_EQ(e2e::ReadFile(Path("refused.wav")), "") << filter;
  }

 private:
  support::TempFolder folder;
};

// A windowed sinc at `up` times the rate, from its formula.
double Kernel(long at, int half, double cutoff, int up) {
  const double x = Pi * static_cast<double>(at);
  const double sinc = at == 0 ? cutoff : std::sin(cutoff * x) / x;
  const double window = 0.42 + 0.5 * std::cos(x / half) + 0.08 * std::cos(2.0 * x / half);
  return sinc * up * window;
}

std::vector<double> Resampled(const Samples& in, int up, int down, int half, double widen) {
  half -= half % up;
  const double cutoff = 1.0 / std::max(up, down) + widen / half;
  const auto count = static_cast<long>(in.size());
  std::vector<double> out;
  for (long m = 0; m < Ceil(count, up, down); ++m) {
    double sum = 0.0;
    for (long i = 0; i < count; ++i) {
      const long at = m * down - i * up;
      if (std::abs(at) <= half) {
        sum += in[static_cast<std::size_t>(i)] * Kernel(at, half, cutoff, up);
      }
    }
    out.push_back(sum);
  }
  return out;
}

TEST_F(Resampling, IsThePlainSumOverTheKernel) {
  const Samples in = support::Noise(3001);
  WriteSound(Path("in.wav"), in, 48000);
  struct Case {
    std::string filter;
    int up, down, half;
    double widen;
    int rate;
  };
  const Case cases[] = {
      {"ResampleBlackman down=2 up=1", 1, 2, 60, 0.52, 24000},
      {"ResampleBlackman 1 2", 2, 1, 60, 0.52, 96000},
      {"ResampleBlackman 2 3", 3, 2, 60, 0.52, 72000},
      {"ResampleBlackman down=5 up=3 half_length=200 widen=-1", 3, 5, 200, -1.0, 28800},
      {"ResampleBlackman", 1, 1, 60, 0.52, 48000},
  };
  for (const Case& c : cases) {
    const Sound out = Result({c.filter});
    EXPECT_EQ(out.rate, c.rate) << c.filter;
    const std::vector<double> expected = Resampled(in, c.up, c.down, c.half, c.widen);
    ASSERT_EQ(out.samples.size(), expected.size()) << c.filter;
    for (std::size_t i = 0; i < expected.size(); ++i) {
      ASSERT_NEAR(out.samples[i], expected[i], 2e-6) << c.filter << " at " << i;
    }
  }
}

TEST_F(Resampling, KeepsAllThatIsDeliveredWhateverIsAnnounced) {
  for (const int count : {0, 1, 2, 3, 4, 5, 4095, 4096, 4097, 8191, 20001}) {
    WriteSound(Path("in.wav"), support::Noise(count), 8000);
    for (const auto& [up, down] : {std::pair(1, 2), {2, 3}, {3, 2}, {7, 5}, {1, 50}}) {
      const std::string filter =
          "ResampleBlackman down=" + std::to_string(down) + " up=" + std::to_string(up);
      EXPECT_EQ(static_cast<long>(Result({filter}).samples.size()), Ceil(count, up, down))
          << filter << " of " << count;
    }
  }
}

TEST_F(Resampling, WhatFollowsGetsAllOfIt) {
  WriteSound(Path("in.wav"), support::Noise(4001), 16000);
  e2e::WriteFile(Path("in.gpm"), "10 0.5\n");
  EXPECT_EQ(Result({"ResampleBlackman down=2 up=1", "PulseSyn"}).samples.size(), 2001U);
  EXPECT_EQ(Result({"ResampleBlackman down=2 up=1", "FIRFilter 30"}).samples.size(), 2001U);
}

TEST_F(Resampling, EachStageRoundsTheLengthUp) {
  WriteSound(Path("in.wav"), support::Noise(10001), 48000);
  const Sound out = Result({"ResampleBlackman rate=44100 quality=best"});
  EXPECT_EQ(out.rate, 44100);
  EXPECT_EQ(static_cast<long>(out.samples.size()), Ceil(Ceil(10001, 21, 20), 7, 8));
}

TEST_F(Resampling, ARateIsTheSmallestRatio) {
  struct Case {
    int from;
    std::string rate;
    int to;
    std::string said;
  };
  const Case cases[] = {{48000, "16000", 16000, "48000 Hz times 1 / 3, quality good, 1 stage"},
                        {44100, "48000", 48000, "44100 Hz times 160 / 147, quality good, 2 stages"},
                        {44100, "16000", 16000, "44100 Hz times 160 / 441, quality good, 2 stages"},
                        {44100, "22050", 22050, "44100 Hz times 1 / 2, quality good, 1 stage"},
                        {8000, "44.1e3", 44100, "8000 Hz times 441 / 80, quality good, 2 stages"},
                        {8000, "12500.5", 12501, "8000 Hz times 25001 / 16000"},
                        {11025, "16000", 16000, "11025 Hz times 640 / 441"}};
  for (const Case& c : cases) {
    WriteSound(Path("in.wav"), support::Noise(5000), c.from);
    const Outcome run = Run({"ResampleBlackman rate=" + c.rate});
    if (c.rate == "12500.5") {  // 25001 = 23 * 1087
      EXPECT_EQ(run.status, 1);
      EXPECT_THAT(run.err, HasSubstr(c.said));
      continue;
    }
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_THAT(run.err, HasSubstr(c.said));
    EXPECT_EQ(ReadSound(Path("out.wav")).rate, c.to);
    EXPECT_THAT(run.err, Not(HasSubstr("rounded")));
  }
}

TEST_F(Resampling, WhatIsPlannedCanBeSpelledOut) {
  WriteSound(Path("in.wav"), support::Noise(9999), 48000);
  ExpectSameBytes("ResampleBlackman rate=16000",
                  {"ResampleBlackman down=3 up=1 half_length=117 widen=-5.2"});
  ExpectSameBytes("ResampleBlackman rate=24000 quality=fast",
                  {"ResampleBlackman down=2 up=1 half_length=28 widen=0"});
  ExpectSameBytes("ResampleBlackman quality=best down=2 up=3",
                  {"ResampleBlackman down=2 up=3 half_length=294 widen=-12.2"});
  ExpectSameBytes("ResampleBlackman rate=44100 quality=best",
                  {"ResampleBlackman down=20 up=21 half_length=2037 widen=-12.2",
                   "ResampleBlackman down=8 up=7 half_length=784 widen=-12.2"});
  WriteSound(Path("in.wav"), support::Noise(9999), 44100);
  ExpectSameBytes("ResampleBlackman rate=48000 quality=best",
                  {"ResampleBlackman down=7 up=8 half_length=784 widen=-12.2",
                   "ResampleBlackman down=21 up=20 half_length=2040 widen=-12.2"});
}

TEST_F(Resampling, SaysWhichKernelsItTook) {
  WriteSound(Path("in.wav"), support::Noise(100), 48000);
  const Outcome run = Run({"ResampleBlackman rate=16000 quality=best"});
  EXPECT_THAT(run.err, HasSubstr("filter 1 (ResampleBlackman), stage 1: ResampleBlackman down=3 "
                                 "up=1 down_start=0 phase_start=0 shift=0 half_length=294 "
                                 "cutoff=0.3333333333333333 widen=-12.2\n"));
}

TEST_F(Resampling, TheSameRateChangesNothing) {
  const Samples in = support::Noise(9000);
  WriteSound(Path("in.wav"), in, 44100);
  EXPECT_TRUE(SameBits(Result({"ResampleBlackman rate=44100 quality=best"}).samples, in));
}

TEST_F(Resampling, RatesAreKnownStepByStep) {
  WriteSound(Path("in.wav"), support::Noise(5000), 48000);
  EXPECT_THAT(Run({"ResampleBlackman rate=16000", "ResampleBlackman rate=44100"}).err,
              HasSubstr("filter 2 (ResampleBlackman): 16000 Hz times 441 / 160"));
  const Outcome above =
      Run({"ResampleBlackman rate=44100", "ResampleBlackman rate=8000", "SineFilter 5000"});
  EXPECT_EQ(above.status, 1);
  EXPECT_THAT(above.err, HasSubstr("filter 3 (SineFilter): frequency=5000 is above half"));
}

TEST_F(Resampling, ThereAndBackIsTheSameRateExactly) {
  WriteSound(Path("in.wav"), support::Noise(5000), 44100);
  const Outcome run = Run({"ResampleBlackman rate=48000", "ResampleBlackman rate=11025",
                           "ResampleBlackman rate=44100", "ResampleBlackman rate=44100"});
  EXPECT_THAT(run.err, HasSubstr("filter 4 (ResampleBlackman): 44100 Hz times 1 / 1"));
  EXPECT_THAT(run.err, Not(HasSubstr("rounded")));
}

TEST_F(Resampling, ARateThatIsNotWholeIsRoundedAndSaid) {
  WriteSound(Path("in.wav"), support::Noise(3000), 8000);
  const Outcome run = Run({"ResampleBlackman down=3 up=1"});
  EXPECT_THAT(run.err, HasSubstr("its sampling rate is rounded to 2667 Hz"));
  EXPECT_EQ(ReadSound(Path("out.wav")).rate, 2667);
}

TEST_F(Resampling, TonesKeepPitchAndLevel) {
  WriteSound(Path("in.wav"), e2e::Tone(1000.0, 0.5, 44100, 44100), 44100);
  for (const int rate : {48000, 16000, 96000, 8000}) {
    for (const std::string quality : {"fast", "good", "best"}) {
      const Sound out =
          Result({"ResampleBlackman rate=" + std::to_string(rate) + " quality=" + quality});
      const Samples middle = support::Slice(out.samples, rate / 4, rate / 2);
      EXPECT_NEAR(e2e::Level(middle, 1000.0, rate), 0.5, 2e-4) << rate << quality;
    }
  }
}

TEST_F(Resampling, TwoRunsGiveTheSameBytes) {
  for (const std::string out : {"one.wav", "two.wav"}) {
    ASSERT_EQ(Wavechain({"run", SPEECH_48K, Path(out), "-f", "ResampleBlackman rate=44100"}).status,
              0);
  }
  EXPECT_TRUE(e2e::ReadFile(Path("one.wav")) == e2e::ReadFile(Path("two.wav")));
}

TEST_F(Resampling, RefusesWhatItCannotDo) {
  WriteSound(Path("in.wav"), support::Noise(100), 48000);
  ExpectRefusal("ResampleBlackman rate=fast", "rate takes a number of Hz above 0, not 'fast'");
  ExpectRefusal("ResampleBlackman rate=0", "rate takes a number of Hz above 0, not '0'");
  ExpectRefusal("ResampleBlackman rate=-8000", "rate takes a number of Hz above 0");
  ExpectRefusal("ResampleBlackman rate=8000 quality=bets", "did you mean best?");
  ExpectRefusal("ResampleBlackman 3 rate=16000", "leave out down or rate");
  ExpectRefusal("ResampleBlackman rate=16000 half_length=20", "leave out half_length or rate");
  ExpectRefusal("ResampleBlackman 3 1 widen=0 quality=best", "leave out widen or quality");
  ExpectRefusal("ResampleBlackman quality=best", "add rate=HZ");
  ExpectRefusal("ResampleBlackman rate=8000 rate=8000", "rate is given twice");
  ExpectRefusal("ResampleBlackman rate=48001", "no prime factor may exceed 52; choose");
  ExpectRefusal("ResampleBlackman rate=23000 quality=best", "no prime factor may exceed 21");
  ExpectRefusal("ResampleBlackman rate=1e300", "no ratio of whole numbers");
  ExpectRefusal("ResampleBlackman rate=1e-300", "no ratio of whole numbers");
  ExpectRefusal("ResampleBlackman rate=16000.000001", "no ratio of whole numbers");
  ExpectRefusal("ResampleBlackman rate=3.141592653589793", "choose a rate nearby");
}

TEST_F(Resampling, ItsHelpTellsOfRateQualityAndLength) {
  const std::string info = Wavechain({"info", "ResampleBlackman"}).out;
  EXPECT_THAT(info, HasSubstr("rate=HZ"));
  EXPECT_THAT(info, HasSubstr("quality=fast|good|best"));
  EXPECT_THAT(info, HasSubstr("rounded up"));
  EXPECT_THAT(Wavechain({"run", "--help"}).out, HasSubstr("rate=HZ"));
}

}  // namespace
