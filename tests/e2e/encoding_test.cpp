// How samples are stored: encodings, formats, scaling and clipping.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "e2e/support/program.h"
#include "e2e/support/sound.h"
#include "support/samples.h"
#include "support/temp_folder.h"

namespace {

using e2e::Outcome;
using e2e::ReadFile;
using e2e::ReadSound;
using e2e::Wavechain;
using e2e::WriteSound;
using support::SameBits;
using support::Samples;
using support::TempFolder;
using testing::HasSubstr;

const std::string Through = "SineFilter 0 0";

class WavechainEncoding : public testing::Test {
 protected:
  void SetUp() override { WriteSound(Path("in.wav"), noise); }

  std::string Path(const std::string& name) const { return folder.Path(name); }

  Outcome Run(const std::string& out, const std::vector<std::string>& more = {}) const {
    std::vector<std::string> arguments = {"run", Path("in.wav"), out, "-q", "-f", Through};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return Wavechain(arguments);
  }

  // The run must refuse its arguments in one line and write nothing.
  void ExpectRefusal(const std::string& out, const std::string& reason,
                     const std::vector<std::string>& more = {}) const {
    const std::vector<std::string> before = e2e::FilesIn(Path(""));
    const Outcome run = Run(out, more);
    EXPECT_EQ(run.status, 1) << run.err;
    EXPECT_THAT(run.ErrorLines(), testing::SizeIs(1)) << run.err;
    EXPECT_THAT(run.err, HasSubstr(reason));
    EXPECT_EQ(e2e::FilesIn(Path("")), before);
  }

  TempFolder folder;
  Samples noise = support::Noise(30000);
};

// The integer of so many bits for a sample, uppermost in 32: the nearest step, ties to even.
int Quantised(double sample, int bits, int& clipped) {
  const double steps = std::ldexp(1.0, bits - 1);
  double nearest = std::floor(sample * steps + 0.5);
  if (nearest - sample * steps == 0.5 && std::fmod(nearest, 2.0) != 0.0) {
    nearest -= 1.0;
  }
  const double limited = std::min(std::max(nearest, -steps), steps - 1.0);
  clipped += limited == nearest ? 0 : 1;
  return static_cast<int>(limited * std::ldexp(1.0, 32 - bits));
}

TEST_F(WavechainEncoding, IntegersAreTheNearestStepsAndClippingIsCounted) {
  Samples in = noise;
  for (const float special :
       {0.0F, 1.0F, -1.0F, 1.5F, -1.5F, 0.5F / 32768, 1.5F / 32768, -0.5F / 32768, 32767.0F / 32768,
        32767.4F / 32768, -32768.4F / 32768, 127.5F / 128, 1e30F, -1e30F}) {
    in.push_back(special);
  }
  WriteSound(Path("in.wav"), in);
  const std::vector<std::pair<std::string, std::vector<std::string>>> formats = {
      {"wav", {"pcm8", "pcm16", "pcm24", "pcm32"}},  {"flac", {"pcm8", "pcm16", "pcm24"}},
      {"aiff", {"pcm8", "pcm16", "pcm24", "pcm32"}}, {"w64", {"pcm8", "pcm16", "pcm24", "pcm32"}},
      {"rf64", {"pcm8", "pcm16", "pcm24", "pcm32"}}, {"au", {"pcm8", "pcm16", "pcm24", "pcm32"}},
      {"caf", {"pcm8", "pcm16", "pcm24", "pcm32"}}};
  for (const auto& [extension, encodings] : formats) {
    for (const std::string& encoding : encodings) {
      const std::string out = Path("out-" + encoding + "." + extension);
      const Outcome run = Run(out, {"--encoding", encoding});
      ASSERT_EQ(run.status, 0) << run.err;
      int clipped = 0;
      std::vector<int> expected;
      for (const float sample : in) {
        expected.push_back(Quantised(sample, std::stoi(encoding.substr(3)), clipped));
      }
      EXPECT_EQ(e2e::ReadIntegers(out), expected) << extension << " " << encoding;
      EXPECT_THAT(run.err, HasSubstr(": clipped: " + std::to_string(clipped) + " of " +
                                     std::to_string(in.size()) + " samples\n"));
    }
  }
}

TEST_F(WavechainEncoding, SixteenBitSpeechPassesUnchanged) {
  ASSERT_EQ(
      Wavechain({"run", SPEECH_48K, Path("out.wav"), "--encoding", "pcm16", "-f", Through}).status,
      0);
  EXPECT_EQ(e2e::ReadIntegers(Path("out.wav")), e2e::ReadIntegers(SPEECH_48K));
}

TEST_F(WavechainEncoding, FloatsKeepTheirBitsInEveryFormatThatHoldsThem) {
  noise[3] = 1234.5F;
  noise[4] = 1e-30F;
  WriteSound(Path("in.wav"), noise);
  for (const std::string extension : {"wav", "aiff", "w64", "rf64", "au", "caf"}) {
    for (const std::string encoding : {"float32", "float64"}) {
      const std::string out = Path(encoding + "." + extension);
      const Outcome run = Run(out, {"--encoding", encoding});
      ASSERT_EQ(run.status, 0) << run.err;
      EXPECT_EQ(run.err, "");
      EXPECT_TRUE(SameBits(ReadSound(out).samples, noise)) << out;
    }
  }
}

TEST_F(WavechainEncoding, CompandedEncodingsComeWithinTheirStep) {
  for (const std::string encoding : {"ulaw", "alaw"}) {
    ASSERT_EQ(Run(Path(encoding + ".wav"), {"--encoding", encoding}).status, 0);
    const Samples out = ReadSound(Path(encoding + ".wav")).samples;
    ASSERT_EQ(out.size(), noise.size());
    for (std::size_t i = 0; i < out.size(); ++i) {
      // 16 steps to each of the segments, whose width doubles: a 33rd of the value at most.
      ASSERT_NEAR(out[i], noise[i], std::abs(noise[i]) / 30 + 0.001) << encoding << " " << i;
    }
  }
}

TEST_F(WavechainEncoding, TheExtensionChoosesTheFormat) {
  const std::vector<std::pair<std::string, int>> expected = {
      {"out.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT},
      {"OUT.WAV", SF_FORMAT_WAV | SF_FORMAT_FLOAT},
      {"out.wave", SF_FORMAT_WAV | SF_FORMAT_FLOAT},
      {"out.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_24},
      {"out.aiff", SF_FORMAT_AIFF | SF_FORMAT_FLOAT},
      {"out.aif", SF_FORMAT_AIFF | SF_FORMAT_FLOAT},
      {"out.w64", SF_FORMAT_W64 | SF_FORMAT_FLOAT},
      {"out.rf64", SF_FORMAT_RF64 | SF_FORMAT_FLOAT},
      {"out.au", SF_FORMAT_AU | SF_FORMAT_FLOAT},
      {"out.caf", SF_FORMAT_CAF | SF_FORMAT_FLOAT},
      {"two words. and.dots.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT},
      {"no extension", SF_FORMAT_WAV | SF_FORMAT_FLOAT},
      {".hidden", SF_FORMAT_WAV | SF_FORMAT_FLOAT}};
  for (const auto& [name, format] : expected) {
    const Outcome run = Run(Path(name));
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(ReadSound(Path(name)).format, format) << name;
  }
}

TEST_F(WavechainEncoding, DotsInFoldersAreNoExtension) {
  ASSERT_EQ(::mkdir(Path("v1.2").c_str(), 0700), 0);
  ASSERT_EQ(Run(Path("v1.2/out")).status, 0);
  EXPECT_EQ(ReadSound(Path("v1.2/out")).format, SF_FORMAT_WAV | SF_FORMAT_FLOAT);
}

TEST_F(WavechainEncoding, TheFormatMayBeNamed) {
  ASSERT_EQ(Run(Path("out.5 final"), {"--format", "flac"}).status, 0);
  EXPECT_EQ(ReadSound(Path("out.5 final")).format, SF_FORMAT_FLAC | SF_FORMAT_PCM_24);
  ExpectRefusal(Path("out.5 final2"), "the extension .5 final2 names no format");
  ExpectRefusal(Path("out.wva"), "did you mean wav?");
  ExpectRefusal(Path("out.wav"), "--format flak: there is no such format; did you mean flac?",
                {"--format", "flak"});
}

TEST_F(WavechainEncoding, EncodingsThatDoNotExistOrDoNotFitAreRefused) {
  ExpectRefusal(Path("out.wav"), "--encoding pcm61: there is no such encoding; did you mean pcm16?",
                {"--encoding", "pcm61"});
  ExpectRefusal(Path("out.flac"),
                "--encoding float32: flac files do not hold it; they hold pcm16, pcm24, pcm8",
                {"--encoding", "float32"});
}

TEST_F(WavechainEncoding, AWavFileIsWhatItsFormatSays) {
  WriteSound(Path("in.wav"), {0.0F, 0.5F, -1.0F}, 16000);
  ASSERT_EQ(Run(Path("out.wav"), {"--encoding", "pcm16", "--no-record"}).status, 0);
  const std::string bytes = ReadFile(Path("out.wav"));
  const auto number = [&](std::size_t at, int width) {
    std::uint32_t value = 0;
    for (int i = width - 1; i >= 0; --i) {
      value = value << 8 | static_cast<unsigned char>(bytes[at + static_cast<std::size_t>(i)]);
    }
    return value;
  };
  ASSERT_EQ(bytes.size(), 44U + 6U);
  EXPECT_EQ(bytes.substr(0, 4) + bytes.substr(8, 8), "RIFFWAVEfmt ");
  EXPECT_EQ(number(4, 4), bytes.size() - 8);
  EXPECT_EQ(number(20, 2), 1U);      // integers
  EXPECT_EQ(number(22, 2), 1U);      // channels
  EXPECT_EQ(number(24, 4), 16000U);  // samples a second
  EXPECT_EQ(number(34, 2), 16U);     // bits
  EXPECT_EQ(bytes.substr(36, 4), "data");
  EXPECT_EQ(number(40, 4), 6U);
  EXPECT_EQ(number(44, 2), 0U);
  EXPECT_EQ(number(46, 2), 0x4000U);
  EXPECT_EQ(number(48, 2), 0x8000U);
}

}  // namespace
