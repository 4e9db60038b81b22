// What the program writes: encodings, and that an output appears whole or not at all.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstdint>

#include "e2e/support/program.h"
#include "e2e/support/sound.h"
#include "support/samples.h"
#include "support/temp_folder.h"

namespace {

using e2e::Fault;
using e2e::Outcome;
using e2e::ReadFile;
using e2e::ReadSound;
using e2e::Surroundings;
using e2e::Wavechain;
using e2e::WriteFile;
using e2e::WriteSound;
using support::SameBits;
using support::Samples;
using support::TempFolder;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;

const std::string Through = "SineFilter 0 0";

class WavechainOutput : public testing::Test {
 protected:
  void SetUp() override { WriteSound(Path("in.wav"), noise); }

  std::string Path(const std::string& name) const { return folder.Path(name); }

  Outcome Run(const std::string& out, const std::vector<std::string>& more = {},
              const Surroundings& around = {}) const {
    std::vector<std::string> arguments = {"run", Path("in.wav"), out, "-q", "-f", Through};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return Wavechain(arguments, around);
  }

  // The run must fail with that status and one line, and leave the folder as it was.
  void ExpectFailure(const std::string& out, int status, const std::string& reason,
                     const std::vector<std::string>& more = {},
                     const Surroundings& around = {}) const {
    const std::vector<std::string> before = e2e::FilesIn(Path(""));
    const std::string target = ReadFile(out);
    const Outcome run = Run(out, more, around);
    EXPECT_EQ(run.status, status) << run.err;
    EXPECT_THAT(run.ErrorLines(), SizeIs(1)) << run.err;
    EXPECT_THAT(run.err, HasSubstr(reason));
    EXPECT_TRUE(run.out.empty());
    EXPECT_EQ(e2e::FilesIn(Path("")), before);
    EXPECT_TRUE(ReadFile(out) == target);
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

TEST_F(WavechainOutput, IntegersAreTheNearestStepsAndClippingIsCounted) {
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

TEST_F(WavechainOutput, SixteenBitSpeechPassesUnchanged) {
  ASSERT_EQ(
      Wavechain({"run", SPEECH_48K, Path("out.wav"), "--encoding", "pcm16", "-f", Through}).status,
      0);
  EXPECT_EQ(e2e::ReadIntegers(Path("out.wav")), e2e::ReadIntegers(SPEECH_48K));
}

TEST_F(WavechainOutput, FloatsKeepTheirBitsInEveryFormatThatHoldsThem) {
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

TEST_F(WavechainOutput, CompandedEncodingsComeWithinTheirStep) {
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

TEST_F(WavechainOutput, TheExtensionChoosesTheFormat) {
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

TEST_F(WavechainOutput, DotsInFoldersAreNoExtension) {
  ASSERT_EQ(::mkdir(Path("v1.2").c_str(), 0700), 0);
  ASSERT_EQ(Run(Path("v1.2/out")).status, 0);
  EXPECT_EQ(ReadSound(Path("v1.2/out")).format, SF_FORMAT_WAV | SF_FORMAT_FLOAT);
}

TEST_F(WavechainOutput, TheFormatMayBeNamed) {
  ASSERT_EQ(Run(Path("out.5 final"), {"--format", "flac"}).status, 0);
  EXPECT_EQ(ReadSound(Path("out.5 final")).format, SF_FORMAT_FLAC | SF_FORMAT_PCM_24);
  ExpectFailure(Path("out.5 final2"), 1, "the extension .5 final2 names no format");
  ExpectFailure(Path("out.wva"), 1, "did you mean wav?");
  ExpectFailure(Path("out.wav"), 1, "--format flak: there is no such format; did you mean flac?",
                {"--format", "flak"});
}

TEST_F(WavechainOutput, EncodingsThatDoNotExistOrDoNotFitAreRefused) {
  ExpectFailure(Path("out.wav"), 1,
                "--encoding pcm61: there is no such encoding; did you mean pcm16?",
                {"--encoding", "pcm61"});
  ExpectFailure(Path("out.flac"), 1,
                "--encoding float32: flac files do not hold it; they hold pcm16, pcm24, pcm8",
                {"--encoding", "float32"});
}

TEST_F(WavechainOutput, AWavFileIsWhatItsFormatSays) {
  WriteSound(Path("in.wav"), {0.0F, 0.5F, -1.0F}, 16000);
  ASSERT_EQ(Run(Path("out.wav"), {"--encoding", "pcm16"}).status, 0);
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

TEST_F(WavechainOutput, AnExistingFileIsOnlyReplacedByForce) {
  WriteFile(Path("out.wav"), "dear to somebody");
  ExpectFailure(Path("out.wav"), 3, "out.wav: exists already; --force replaces it");
  ASSERT_EQ(::chmod(Path("out.wav").c_str(), 0604), 0);
  ASSERT_EQ(Run(Path("out.wav"), {"--force"}).status, 0);
  EXPECT_TRUE(SameBits(ReadSound(Path("out.wav")).samples, noise));
  struct stat status = {};
  ASSERT_EQ(::stat(Path("out.wav").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0604U);
}

TEST_F(WavechainOutput, ANewFileHasTheUsualPermissions) {
  const mode_t mask = ::umask(0027);
  EXPECT_EQ(Run(Path("out.wav")).status, 0);
  ::umask(mask);
  struct stat status = {};
  ASSERT_EQ(::stat(Path("out.wav").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0640U);
}

TEST_F(WavechainOutput, TheInputIsNeverWrittenOver) {
  ASSERT_EQ(::symlink("in.wav", Path("link.wav").c_str()), 0);
  ASSERT_EQ(::link(Path("in.wav").c_str(), Path("twin.wav").c_str()), 0);
  ASSERT_EQ(::mkdir(Path("sub").c_str(), 0700), 0);
  for (const std::string name : {"in.wav", "./in.wav", "sub/../in.wav", "link.wav", "twin.wav"}) {
    ExpectFailure(Path(name), 3, "is the input itself");
    ExpectFailure(Path(name), 3, "is the input itself", {"--force"});
  }
  const Outcome piped = Wavechain({"run", "-", Path("in.wav"), "--force", "-f", Through},
                                  {.inputFile = Path("in.wav")});
  EXPECT_EQ(piped.status, 3) << piped.err;
  EXPECT_TRUE(SameBits(ReadSound(Path("in.wav")).samples, noise));
}

TEST_F(WavechainOutput, ALinkIsWrittenThrough) {
  WriteFile(Path("target.wav"), "old");
  ASSERT_EQ(::symlink("target.wav", Path("link.wav").c_str()), 0);
  ExpectFailure(Path("link.wav"), 3, "exists already");
  ASSERT_EQ(Run(Path("link.wav"), {"--force"}).status, 0);
  EXPECT_TRUE(SameBits(ReadSound(Path("target.wav")).samples, noise));
  struct stat status = {};
  ASSERT_EQ(::lstat(Path("link.wav").c_str(), &status), 0);
  EXPECT_TRUE(S_ISLNK(status.st_mode));
}

TEST_F(WavechainOutput, ALinkToNowhereCountsAsExisting) {
  ASSERT_EQ(::symlink("nowhere.wav", Path("link.wav").c_str()), 0);
  ExpectFailure(Path("link.wav"), 3, "exists already");
}

TEST_F(WavechainOutput, OnlyFilesAreWritten) {
  ASSERT_EQ(::mkdir(Path("folder.wav").c_str(), 0700), 0);
  ExpectFailure(Path("folder.wav"), 3, "is a folder", {"--force"});
  ExpectFailure(Path("folder.wav/"), 3, "names no file");
  ExpectFailure("/dev/null", 3, "not a regular file", {"--force", "--format", "wav"});
  ExpectFailure("", 3, "names no file");
}

TEST_F(WavechainOutput, AFolderThatTakesNoFileIsNamed) {
  ExpectFailure(Path("missing/out.wav"), 3, "missing/out.wav: cannot be written: No such file");
  ExpectFailure(Path("out.wav"), 3, "Read-only file system", {},
                {.variables = Fault("create", EROFS)});
  ExpectFailure(Path("out.wav"), 3, "Permission denied", {},
                {.variables = Fault("create", EACCES)});
}

TEST_F(WavechainOutput, AFullDiskLeavesNothingBehind) {
  WriteFile(Path("old.wav"), "kept as it was");
  for (const long room : {0L, 1L, 43L, 44L, 1000L, 60000L, 80000L}) {
    const Surroundings full = {.variables = Fault("write", ENOSPC, room)};
    ExpectFailure(Path("out.wav"), 3, "out.wav: cannot be written: No space left on device", {},
                  full);
    ExpectFailure(Path("old.wav"), 3, "No space left on device", {"--force"}, full);
    ExpectFailure(Path("out.flac"), 3, "No space left on device", {}, full);
    ExpectFailure("-", 3, "standard output: cannot be written: No space left on device", {}, full);
  }
}

TEST_F(WavechainOutput, ALimitOnTheFileSizeIsAnErrorLikeAnyOther) {
  ExpectFailure(Path("out.wav"), 3, "File too large", {}, {.fileSizeLimit = 50000});
}

TEST_F(WavechainOutput, EveryStepToTheFinishedFileIsChecked) {
  for (const std::string call : {"fsync", "close", "rename"}) {
    ExpectFailure(Path("out.wav"), 3, "out.wav: cannot be written: Input/output error", {},
                  {.variables = Fault(call, EIO)});
  }
  ExpectFailure(Path("out.wav"), 3, "Disk quota exceeded", {},
                {.variables = Fault("close", EDQUOT)});
}

TEST_F(WavechainOutput, FileSystemsWithoutSafeRenamingWork) {
  const Surroundings old = {.variables = Fault("no_renameat2", 0)};
  ASSERT_EQ(Run(Path("out.wav"), {}, old).status, 0);
  EXPECT_TRUE(SameBits(ReadSound(Path("out.wav")).samples, noise));
}

TEST_F(WavechainOutput, AFileThatAppearsMeanwhileIsNotWrittenOver) {
  Surroundings around = {.variables = Fault("appear", 0)};
  around.variables["FAULT_PATH"] = Path("out.wav");
  const Outcome run = Run(Path("out.wav"), {}, around);
  EXPECT_EQ(run.status, 3);
  EXPECT_THAT(run.err, HasSubstr("out.wav: exists by now"));
  EXPECT_THAT(e2e::FilesIn(Path("")), ElementsAre("in.wav", "out.wav"));
  EXPECT_EQ(ReadFile(Path("out.wav")), "");
}

TEST_F(WavechainOutput, AnInterruptionLeavesNothingBehind) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    for (const long after : {0L, 50000L}) {
      ExpectFailure(Path("out.wav"), 130, "interrupted", {},
                    {.variables = e2e::SignalAfter(signal, after)});
      ExpectFailure("-", 130, "interrupted", {}, {.variables = e2e::SignalAfter(signal, after)});
    }
  }
}

TEST_F(WavechainOutput, AnInterruptionWhileStandardInputIsReadEndsTheWait) {
  for (const int signal : {SIGINT, SIGTERM}) {
    e2e::Running run({"run", "-", Path("out.wav"), "-f", Through});
    run.Feed(ReadFile(Path("in.wav")).substr(0, 1000));
    EXPECT_EQ(run.EndBy(signal), 130);
    EXPECT_THAT(e2e::FilesIn(Path("")), ElementsAre("in.wav"));
  }
}

TEST_F(WavechainOutput, StandardOutputGetsTheSameBytesAsAFile) {
  for (const std::string format : {"wav", "flac", "aiff", "au"}) {
    ASSERT_EQ(Run(Path("out." + format)).status, 0);
    const Outcome run = Run("-", {"--format", format});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_TRUE(run.out == ReadFile(Path("out." + format))) << format;
  }
  EXPECT_TRUE(Run("-").out == ReadFile(Path("out.wav")));
}

TEST_F(WavechainOutput, AFullStandardOutputIsAnError) {
  const Outcome run = Run("-", {}, {.outputFile = "/dev/full"});
  EXPECT_EQ(run.status, 3);
  EXPECT_THAT(run.err, HasSubstr("standard output: cannot be written: No space left on device"));
}

TEST_F(WavechainOutput, ATerminalGetsNoSound) {
  const Outcome run = e2e::WavechainInTerminal({"run", Path("in.wav"), "-", "-f", Through});
  EXPECT_EQ(run.status, 3);
  EXPECT_THAT(run.out, HasSubstr("standard output: is a terminal"));
}

TEST_F(WavechainOutput, PipesConnectTwoRuns) {
  const Outcome first = Run("-");
  const Outcome second = Wavechain({"run", "-", "-", "-q", "-f", Through}, {.input = first.out});
  EXPECT_EQ(second.status, 0) << second.err;
  EXPECT_TRUE(second.out == first.out);
}

TEST_F(WavechainOutput, MoreThanFourGiBNeedAFormatThatHoldsThem) {
  // A mu-law file of 1.2 GiB, nearly all of it a hole: 4.8 GiB as floats.
  WriteSound(Path("in.wav"), support::Constant(1000), 48000, 1, SF_FORMAT_W64 | SF_FORMAT_ULAW);
  constexpr std::int64_t Count = 1200LL << 20;
  std::string header = ReadFile(Path("in.wav"));
  const std::size_t data = header.find("data\xf3\xac\xd3\x11");
  ASSERT_NE(data, std::string::npos);
  const auto put = [&](std::size_t at, std::int64_t value) {
    for (std::size_t i = 0; i < 8; ++i) {
      header[at + i] = static_cast<char>(value >> (8 * i));
    }
  };
  const auto size = static_cast<std::int64_t>(data) + 24 + Count;
  put(16, size);
  put(data + 16, 24 + Count);
  WriteFile(Path("in.wav"), header);
  ASSERT_EQ(::truncate(Path("in.wav").c_str(), size), 0);
  ExpectFailure(Path("out.wav"), 3, "1258291200 samples do not fit into a wav file");
  ExpectFailure(Path("out.aiff"), 3, "write .w64 or .rf64");
}

}  // namespace
