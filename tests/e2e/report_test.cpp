// What the program says while it runs: the filters' reports, warnings, progress.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

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
using support::Samples;
using support::TempFolder;
using testing::HasSubstr;
using testing::Not;

int Occurrences(const std::string& text, const std::string& part) {
  int count = 0;
  for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; at += part.size()) {
    ++count;
  }
  return count;
}

TEST(WavechainReport, FiltersReportOnceEachAtTheEnd) {
  const TempFolder folder;
  // Lengths at which the end falls on the end of a block, too.
  for (const int length : {0, 1, 4096, 10000}) {
    WriteSound(folder.Path("in.wav"), support::Noise(length));
    const Outcome run =
        Wavechain({"run", folder.Path("in.wav"), folder.Path("out.wav"), "--force", "-f",
                   "SineFilter", "-f", "FIRNotch 200 2500", "-f", "SineFilter"});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(Occurrences(run.err, "Avg complex multiply (ns) ="), length == 0 ? 1 : 2) << run.err;
    EXPECT_EQ(Occurrences(run.err, "Avg MACC (ns) ="), length == 0 ? 0 : 1) << run.err;
    // 2 pi 2500 / 48000, six decimals in ten columns.
    EXPECT_EQ(Occurrences(run.err, "filter 2 (FIRNotch):   0.327249\n"), 1) << run.err;
    EXPECT_EQ(run.out, "");
  }
}

TEST(WavechainReport, AnInPlaceFilterReportsOnAnEmptyRecordingToo) {
  const TempFolder folder;
  WriteSound(folder.Path("in.wav"), {});
  const Outcome run =
      Wavechain({"run", folder.Path("in.wav"), folder.Path("out.wav"), "-f", "SineFilter"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(Occurrences(run.err, "filter 1 (SineFilter): Avg complex multiply (ns) =\n"), 1)
      << run.err;
}

TEST(WavechainReport, QuietSaysNothing) {
  const TempFolder folder;
  const Outcome run = Wavechain({"run", SPEECH_48K, folder.Path("out.wav"), "-q", "-f",
                                 "FIRNotch 200", "-f", "SineFilter 440 0.01"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.out, "");
}

TEST(WavechainReport, QuietAndTalkativeRunsWriteTheSameBytes) {
  const TempFolder folder;
  for (const std::string name : {"a.wav", "b.wav"}) {
    std::vector<std::string> arguments = {"run",          SPEECH_48K, folder.Path(name),    "-f",
                                          "FIRNotch 200", "-f",       "SineFilter 440 0.01"};
    if (name == "b.wav") {
      arguments.push_back("-q");
    }
    ASSERT_EQ(Wavechain(arguments).status, 0);
  }
  EXPECT_EQ(e2e::ReadFile(folder.Path("a.wav")), e2e::ReadFile(folder.Path("b.wav")));
}

TEST(WavechainReport, ARateThatIsNoWholeNumberIsRoundedAndSaid) {
  const TempFolder folder;
  WriteSound(folder.Path("in.wav"), support::Noise(7000), 48000);
  const Outcome run = Wavechain({"run", folder.Path("in.wav"), folder.Path("out.wav"), "-q", "-f",
                                 "ResampleBlackman down=7"});
  ASSERT_EQ(run.status, 0);
  EXPECT_EQ(ReadSound(folder.Path("out.wav")).rate, 6857);
  EXPECT_THAT(run.err, HasSubstr("out.wav: its sampling rate is rounded to 6857 Hz"));
}

TEST(WavechainReport, SamplesThatAreNotFiniteAreCountedAndReported) {
  const TempFolder folder;
  Samples in = support::Noise(10000);
  in[17] = std::numeric_limits<float>::quiet_NaN();
  in[5000] = std::numeric_limits<float>::infinity();
  in[9999] = -std::numeric_limits<float>::infinity();
  WriteSound(folder.Path("in.wav"), in);
  const Outcome through = Wavechain(
      {"run", folder.Path("in.wav"), folder.Path("through.wav"), "-q", "-f", "SineFilter 100 0"});
  EXPECT_EQ(through.status, 0);
  EXPECT_THAT(through.err, HasSubstr("in.wav: not finite: 3 samples\n"));
  EXPECT_THAT(through.err, HasSubstr("through.wav: not finite: 3 samples\n"));
  // Each of them spreads over the reach of the filter, 10 to either side, cut at the end.
  const Outcome spread = Wavechain(
      {"run", folder.Path("in.wav"), folder.Path("spread.wav"), "-q", "-f", "FIRFilter 10"});
  EXPECT_THAT(spread.err, HasSubstr("spread.wav: not finite: 53 samples\n"));
  // Integers have no such values.
  const Outcome integers = Wavechain({"run", folder.Path("in.wav"), folder.Path("integers.wav"),
                                      "-q", "--encoding", "pcm16", "-f", "SineFilter 100 0"});
  EXPECT_THAT(integers.err, HasSubstr("not finite: 3 samples (1 not a number, written as 0)"));
  EXPECT_EQ(e2e::ReadIntegers(folder.Path("integers.wav"))[17], 0);
}

TEST(WavechainReport, WithoutOddSamplesThereIsNoWarning) {
  const TempFolder folder;
  const Outcome run = Wavechain(
      {"run", SPEECH_48K, folder.Path("out.wav"), "--encoding", "pcm16", "-f", "FIRFilter 5"});
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.err, Not(HasSubstr("warning")));
}

TEST(WavechainReport, TellsWhatItReadWhatRanAndWhatItWrote) {
  const TempFolder folder;
  const std::string out = folder.Path("out.wav");
  const Outcome run = Wavechain({"run", SPEECH_48K, out, "-f", "FIRNotch 200 edge_weight=0.25"});
  const Sound speech = ReadSound(SPEECH_48K);
  EXPECT_THAT(run.err, HasSubstr(std::string("read   ") + SPEECH_48K));
  EXPECT_THAT(run.err, HasSubstr("48000 Hz, 1 channel, " + std::to_string(speech.samples.size()) +
                                 " samples"));
  EXPECT_THAT(run.err,
              HasSubstr("chain  FIRNotch half_length=200 frequency=2500 edge_weight=0.25"));
  EXPECT_THAT(run.err, HasSubstr("write  " + out + ": wav, float32, 48000 Hz"));
}

TEST(WavechainReport, ShowsProgressInATerminalAndClearsIt) {
  const TempFolder folder;
  const Outcome run =
      e2e::WavechainInTerminal({"run", SPEECH_48K, folder.Path("out.wav"), "-f", "FIRNotch 200"});
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.out, HasSubstr(" %  "));
  EXPECT_GT(run.out.rfind("\r\x1b[K"), run.out.rfind(" %  "));
  const Outcome quiet = e2e::WavechainInTerminal(
      {"run", SPEECH_48K, folder.Path("quiet.wav"), "-q", "-f", "FIRNotch 200"});
  EXPECT_EQ(quiet.out, "");
}

}  // namespace
