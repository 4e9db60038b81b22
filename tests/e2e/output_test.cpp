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
#include <filesystem>

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

// What another program makes in the meantime stays as it is; a record beside it would claim it.
TEST_F(WavechainOutput, AFileThatAppearsMeanwhileIsNeitherWrittenOverNorGivenARecord) {
  for (const std::string name : {"out.wav", "out.csv"}) {
    Surroundings around = {.variables = Fault("appear", 0)};
    around.variables["FAULT_PATH"] = Path(name);
    const Outcome run = Run(Path(name), {}, around);
    EXPECT_EQ(run.status, 3);
    EXPECT_THAT(run.err, HasSubstr(name + ": exists by now"));
    EXPECT_THAT(e2e::FilesIn(Path("")), ElementsAre("in.wav", name));
    EXPECT_EQ(ReadFile(Path(name)), "");
    std::filesystem::remove(Path(name));
  }
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
  const Outcome first = Run("-", {"--no-record"});
  const Outcome second =
      Wavechain({"run", "-", "-", "-q", "--no-record", "-f", Through}, {.input = first.out});
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
