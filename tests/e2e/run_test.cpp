// The main job: chains over recordings, checked against plain loops over the samples.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <limits>

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
using support::TempFolder;
using testing::HasSubstr;
using testing::Not;

constexpr double TwoPi = 6.283185307179586;

// The notch's design, straight from its formula: an impulse minus seven cosines.
std::vector<double> NotchDesign(int half, double frequency, double weight, double rate) {
  const int n = 2 * half + 1;
  const double x = frequency / rate;
  std::vector<double> c(static_cast<std::size_t>(n));
  for (int k = -half; k <= half; ++k) {
    double sum = 0.0;
    for (int j = -3; j <= 3; ++j) {
      sum += (std::abs(j) == 3 ? weight : 1.0) * std::cos(TwoPi * (x + double(j) / n) * k);
    }
    c[static_cast<std::size_t>(k + half)] = (k == 0 ? 1.0 : 0.0) - 2.0 * sum / n;
  }
  return c;
}

// Each output is centred on its input; beyond both ends there is silence.
std::vector<double> Convolved(const Samples& in, const std::vector<double>& c) {
  const auto half = static_cast<std::ptrdiff_t>(c.size() / 2);
  const auto count = static_cast<std::ptrdiff_t>(in.size());
  std::vector<double> out(in.size(), 0.0);
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    for (std::ptrdiff_t k = -half; k <= half; ++k) {
      if (i + k >= 0 && i + k < count) {
        out[static_cast<std::size_t>(i)] +=
            in[static_cast<std::size_t>(i + k)] * c[static_cast<std::size_t>(k + half)];
      }
    }
  }
  return out;
}

void ExpectNear(const Samples& actual, const std::vector<double>& expected, double tolerance) {
  ASSERT_EQ(actual.size(), expected.size());
  double worst = 0.0;
  for (std::size_t i = 0; i < actual.size(); ++i) {
    worst = std::max(worst, std::abs(actual[i] - expected[i]));
  }
  EXPECT_LE(worst, tolerance);
}

TEST(WavechainRun, NotchOverRealSpeechIsThePlainConvolution) {
  const TempFolder folder;
  for (const std::string speech : {SPEECH_48K, SPEECH_16K}) {
    const std::string out = folder.Path("out.wav");
    const Outcome run =
        Wavechain({"run", speech, out, "--force", "-f", "FIRNotch half_length=200 frequency=2500"});
    ASSERT_EQ(run.status, 0) << run.err;
    const Sound before = ReadSound(speech);
    const Sound after = ReadSound(out);
    EXPECT_EQ(after.rate, before.rate);
    EXPECT_EQ(after.channels, 1);
    EXPECT_EQ(after.format, SF_FORMAT_WAV | SF_FORMAT_FLOAT);
    ExpectNear(after.samples, Convolved(before.samples, NotchDesign(200, 2500.0, 0.5, before.rate)),
               1e-5);
  }
}

TEST(WavechainRun, NotchDepthIsThatOfItsDesign) {
  constexpr int Rate = 16000;
  const TempFolder folder;
  Samples tones = e2e::Tone(2500.0, 0.4, Rate, 32000);
  const Samples other = e2e::Tone(1000.0, 0.4, Rate, 32000);
  for (std::size_t i = 0; i < tones.size(); ++i) {
    tones[i] += other[i];
  }
  WriteSound(folder.Path("in.wav"), tones, Rate);
  ASSERT_EQ(Wavechain({"run", folder.Path("in.wav"), folder.Path("out.wav"), "-f",
                       "FIRNotch half_length=200 frequency=2500"})
                .status,
            0);
  const Sound out = ReadSound(folder.Path("out.wav"));
  // Whole periods of both tones, away from the ends.
  const Samples middle = support::Slice(out.samples, 8000, 16000);
  const std::vector<double> design = NotchDesign(200, 2500.0, 0.5, Rate);
  for (const double frequency : {1000.0, 2500.0}) {
    std::complex<double> response = 0.0;
    for (std::size_t k = 0; k < design.size(); ++k) {
      response += design[k] * std::polar(1.0, -TwoPi * frequency * static_cast<double>(k) / Rate);
    }
    EXPECT_NEAR(e2e::Level(middle, frequency, Rate), 0.4 * std::abs(response), 1e-5) << frequency;
  }
  EXPECT_LT(20.0 * std::log10(e2e::Level(middle, 2500.0, Rate) / 0.4), -40.0);
  EXPECT_NEAR(20.0 * std::log10(e2e::Level(middle, 1000.0, Rate) / 0.4), 0.0, 0.1);
}

TEST(WavechainRun, SmoothingIsTheHammingWeightedAverage) {
  const TempFolder folder;
  const Samples in = support::Noise(9000);
  WriteSound(folder.Path("in.wav"), in);
  ASSERT_EQ(Wavechain({"run", folder.Path("in.wav"), folder.Path("out.wav"), "-f", "FIRFilter 20"})
                .status,
            0);
  std::vector<double> window(41);
  double sum = 0.0;
  for (std::size_t i = 0; i < window.size(); ++i) {
    window[i] = 0.54 - 0.46 * std::cos(TwoPi * static_cast<double>(i) / 40.0);
    sum += window[i];
  }
  for (double& w : window) {
    w /= sum;
  }
  ExpectNear(ReadSound(folder.Path("out.wav")).samples, Convolved(in, window), 1e-6);
}

TEST(WavechainRun, SineOnSilenceIsASineAtEveryRate) {
  const TempFolder folder;
  for (const int rate : {8000, 11025, 16000, 22050, 44100, 48000, 96000, 192000}) {
    const std::string in = folder.Path("silence.wav");
    WriteSound(in, support::Constant(10000), rate);
    const std::string out = folder.Path("sine.wav");
    ASSERT_EQ(Wavechain({"run", in, out, "--force", "-f",
                         "SineFilter frequency=440 amplitude=0.1 phase=30"})
                  .status,
              0);
    const Sound sound = ReadSound(out);
    EXPECT_EQ(sound.rate, rate);
    std::vector<double> expected(10000);
    for (std::size_t i = 0; i < expected.size(); ++i) {
      expected[i] = 0.1 * std::cos(TwoPi * (30.0 / 360.0 + 440.0 * static_cast<double>(i) / rate));
    }
    ExpectNear(sound.samples, expected, 1e-7);
  }
}

TEST(WavechainRun, FiltersWorkInTheOrderGiven) {
  const TempFolder folder;
  WriteSound(folder.Path("in.wav"), support::Noise(1000));
  Samples square(1000);
  for (std::size_t i = 0; i < square.size(); ++i) {
    square[i] = (i / 100) % 2 == 0 ? -0.25F : 0.25F;
  }
  const auto run = [&](const std::string& first, const std::string& second) {
    const Outcome outcome = Wavechain({"run", folder.Path("in.wav"), folder.Path("out.wav"),
                                       "--force", "-f", first, "-f", second});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    return ReadSound(folder.Path("out.wav")).samples;
  };
  const std::string squareFilter = "SquareFilter half_period=100 weight=0.25";
  EXPECT_TRUE(SameBits(run("SineFilter frequency=0 amplitude=0.5", squareFilter), square));
  for (float& sample : square) {
    sample += 0.5F;
  }
  EXPECT_TRUE(SameBits(run(squareFilter, "SineFilter frequency=0 amplitude=0.5"), square));
}

TEST(WavechainRun, OneFilterMayComeTwice) {
  const TempFolder folder;
  WriteSound(folder.Path("in.wav"), support::Constant(5000, 0.5F));
  ASSERT_EQ(Wavechain({"run", folder.Path("in.wav"), folder.Path("out.wav"), "-f",
                       "SineFilter 0 0.25", "-f", "SineFilter 0 0.125"})
                .status,
            0);
  EXPECT_TRUE(SameBits(ReadSound(folder.Path("out.wav")).samples, support::Constant(5000, 0.875F)));
}

TEST(WavechainRun, SignalsOfEveryLengthKeepTheirLength) {
  const TempFolder folder;
  // Around the sizes of the program's blocks and of the filters'.
  for (const int length : {0, 1, 2, 399, 4095, 4096, 4097, 8191, 8192, 8193, 12288, 20000}) {
    const Samples in = support::Noise(length);
    WriteSound(folder.Path("in.wav"), in);
    for (const std::string filter : {"FIRNotch 200", "FIRFilter 2048", "SineFilter 100 0"}) {
      const Outcome run = Wavechain(
          {"run", folder.Path("in.wav"), folder.Path("out.wav"), "--force", "-f", filter});
      ASSERT_EQ(run.status, 0) << run.err;
      const Sound out = ReadSound(folder.Path("out.wav"));
      EXPECT_EQ(out.samples.size(), in.size()) << filter;
      EXPECT_EQ(out.rate, 48000);
      if (filter == "SineFilter 100 0") {
        EXPECT_TRUE(SameBits(out.samples, in));
      }
    }
  }
}

TEST(WavechainRun, OneSampleBecomesTheCentreCoefficient) {
  const TempFolder folder;
  WriteSound(folder.Path("in.wav"), {0.5F});
  ASSERT_EQ(
      Wavechain({"run", folder.Path("in.wav"), folder.Path("out.wav"), "-f", "FIRFilter 1"}).status,
      0);
  // 0.08, 1, 0.08, divided by their sum.
  EXPECT_TRUE(
      SameBits(ReadSound(folder.Path("out.wav")).samples, {0.5F * static_cast<float>(1.0 / 1.16)}));
}

TEST(WavechainRun, TwoRunsGiveIdenticalBytesInEveryFormat) {
  const TempFolder folder;
  for (const std::string extension : {"wav", "flac", "aiff", "w64", "rf64", "au", "caf"}) {
    const std::string first = folder.Path("first." + extension);
    const std::string second = folder.Path("second." + extension);
    ASSERT_EQ(Wavechain({"run", SPEECH_48K, first, "-f", "FIRNotch 200"}).status, 0);
    // Time stamps count seconds.
    ::sleep(extension == "wav" || extension == "rf64" ? 1 : 0);
    ASSERT_EQ(Wavechain({"run", SPEECH_48K, second, "-f", "FIRNotch 200"}).status, 0);
    EXPECT_EQ(e2e::ReadFile(first), e2e::ReadFile(second)) << extension;
  }
}

TEST(WavechainRun, ResamplingGivesTheFileItsNewRate) {
  const TempFolder folder;
  WriteSound(folder.Path("in.wav"), e2e::Tone(1000.0, 0.5, 48000, 30000));
  ASSERT_EQ(Wavechain({"run", folder.Path("in.wav"), folder.Path("out.wav"), "-f",
                       "ResampleBlackman down=3 up=1"})
                .status,
            0);
  const Sound out = ReadSound(folder.Path("out.wav"));
  EXPECT_EQ(out.rate, 16000);
  EXPECT_EQ(out.samples.size(), 10000U);
  EXPECT_NEAR(e2e::Level(support::Slice(out.samples, 1600, 6400), 1000.0, 16000), 0.5, 0.005);
}

}  // namespace
