// One line for each thing that is wrong with what was asked for.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "e2e/support/program.h"
#include "e2e/support/sound.h"
#include "support/samples.h"
#include "support/temp_folder.h"

namespace {

using e2e::Outcome;
using e2e::Wavechain;
using support::TempFolder;
using testing::HasSubstr;
using testing::SizeIs;

void ExpectUsageError(const std::vector<std::string>& arguments, const std::string& line) {
  const Outcome run = Wavechain(arguments);
  EXPECT_EQ(run.status, 1) << line;
  EXPECT_EQ(run.err, "wavechain: " + line + "\n");
  EXPECT_EQ(run.out, "");
}

// The whole line for a filter that is written wrongly.
void ExpectFilterError(const std::string& filter, const std::string& what) {
  const TempFolder folder;
  e2e::WriteSound(folder.Path("in.wav"), support::Noise(10), 48000);
  ExpectUsageError({"run", folder.Path("in.wav"), folder.Path("out.wav"), "-f", filter},
                   "-f '" + filter + "': " + what);
  EXPECT_THAT(e2e::FilesIn(folder.Path("")), SizeIs(1));
}

TEST(WavechainUsage, MisspeltFiltersComeWithTheNearestName) {
  ExpectFilterError("FIRNotsch 200", "there is no filter 'FIRNotsch'; did you mean FIRNotch?");
  ExpectFilterError("firnotch 200", "there is no filter 'firnotch'; did you mean FIRNotch?");
  ExpectFilterError("SinFilter", "there is no filter 'SinFilter'; did you mean SineFilter?");
  ExpectFilterError("reverb",
                    "there is no filter 'reverb'; there are SetTrack, BeamPel, BeamData, GlotSyn, "
                    "FricSyn, PulseSyn, FIRFilter, FIRNotch, ResampleBlackman, SumSources, "
                    "EchoCancel, SineFilter, SquareFilter");
}

TEST(WavechainUsage, MisspeltParametersComeWithTheNearestName) {
  ExpectFilterError("FIRNotch half_lenght=200",
                    "FIRNotch has no parameter 'half_lenght'; did you mean half_length?");
  ExpectFilterError("FIRNotch 200 width=3",
                    "FIRNotch has no parameter 'width'; there are half_length, frequency, "
                    "edge_weight");
  ExpectFilterError("BeamData mode=sped",
                    "mode takes a number or a name, not 'sped'; did you mean "
                    "speed?");
}

TEST(WavechainUsage, TheHalfLengthMustBeGivenAndMakeSense) {
  ExpectFilterError("FIRFilter",
                    "half_length is missing (samples, whole, 1 to 2048); add half_length=NUMBER");
  ExpectFilterError("FIRNotch frequency=2500",
                    "half_length is missing (samples, whole, 0 to 2048); add half_length=NUMBER");
  ExpectFilterError("FIRFilter half_length=0",
                    "half_length=0 is out of range (samples, whole, 1 to 2048): with 0 its only "
                    "coefficient would be 0/0, not a number");
  ExpectFilterError("FIRNotch 2049",
                    "half_length=2049 is out of range (samples, whole, 0 to 2048)");
  ExpectFilterError("FIRFilter -1",
                    "half_length=-1 is out of range (samples, whole, 1 to 2048): "
                    "with 0 its only coefficient would be 0/0, not a number");
}

TEST(WavechainUsage, ValuesMustBeNumbersOfTheRightKind) {
  ExpectFilterError("FIRNotch 2.5", "half_length takes a whole number, not 2.5");
  ExpectFilterError("FIRNotch long",
                    "half_length takes a number (samples, whole, 0 to 2048), not 'long'");
  ExpectFilterError("FIRNotch 200 2500Hz",
                    "frequency takes a number (Hz, real, 0 to half the sampling rate), not "
                    "'2500Hz'");
  ExpectFilterError("SineFilter amplitude=nan",
                    "amplitude takes a number (sample units, real, any value), not 'nan'");
  ExpectFilterError("SineFilter amplitude=inf",
                    "amplitude takes a number (sample units, real, any value), not 'inf'");
  ExpectFilterError("SineFilter amplitude=1e999",
                    "amplitude takes a number (sample units, real, any value), not '1e999'");
  ExpectFilterError("SineFilter amplitude=",
                    "amplitude takes a number (sample units, real, any value), not ''");
  ExpectFilterError("SineFilter amplitude=0,5",
                    "amplitude takes a number (sample units, real, any value), not '0,5'");
}

TEST(WavechainUsage, ValuesAreGivenOnceAndNotTooMany) {
  ExpectFilterError("FIRNotch 200 half_length=100", "half_length is given twice, 200 and 100");
  ExpectFilterError("FIRNotch 200 2500 0.5 7",
                    "'7' is one value too many; FIRNotch takes 3 parameters");
  ExpectFilterError("FIRFilter 200 7", "'7' is one value too many; FIRFilter takes 1 parameter");
  ExpectFilterError("GlotSyn gain=2", "GlotSyn has no parameter 'gain'; there are events");
}

TEST(WavechainUsage, AFilterIsWrittenInOnePieceAndStartsWithItsName) {
  ExpectFilterError("", "a filter's name comes first, as in FIRNotch half_length=200");
  ExpectFilterError("half_length=3", "a filter's name comes first, as in FIRNotch half_length=200");
  ExpectFilterError("FIRNotch \"200", "a \" is opened and never closed");
  ExpectUsageError({"run", "in.wav", "out.wav", "-f", "FIRNotch", "half_length=200"},
                   "'half_length=200' is one word too many; a filter and its parameters stand in "
                   "quotes, as in -f \"FIRNotch half_length=200\"");
}

TEST(WavechainUsage, FrequenciesLieBelowHalfTheSamplingRate) {
  const TempFolder folder;
  e2e::WriteSound(folder.Path("in.wav"), support::Noise(10), 4000);
  const auto run = [&](const std::vector<std::string>& filters) {
    std::vector<std::string> arguments = {"run", folder.Path("in.wav"), folder.Path("out.wav"),
                                          "--force", "-q"};
    for (const std::string& filter : filters) {
      arguments.insert(arguments.end(), {"-f", filter});
    }
    return Wavechain(arguments);
  };
  const Outcome above = run({"SineFilter", "FIRNotch 20 2500"});
  EXPECT_EQ(above.status, 1);
  EXPECT_EQ(above.err,
            "wavechain: filter 2 (FIRNotch): frequency=2500 is above half the sampling rate (2000 "
            "of 4000 Hz)\n");
  // The rate that counts is the one that the filter is fed.
  EXPECT_EQ(run({"ResampleBlackman down=1 up=2", "FIRNotch 20 2500"}).status, 0);
  EXPECT_EQ(run({"ResampleBlackman down=2", "SineFilter 1001"}).status, 1);
}

TEST(WavechainUsage, ParametersGoByNameByPositionOrBoth) {
  const TempFolder folder;
  e2e::WriteSound(folder.Path("in.wav"), support::Noise(5000), 48000);
  const auto result = [&](const std::string& filter) {
    const Outcome run = Wavechain({"run", folder.Path("in.wav"), "-", "-q", "-f", filter});
    EXPECT_EQ(run.status, 0) << run.err;
    return run.out;
  };
  const std::string expected = result("FIRNotch half_length=50 frequency=3000 edge_weight=0.25");
  for (const std::string filter :
       {"FIRNotch 50 3000 0.25", "FIRNotch 50 edge_weight=0.25 3000",
        "FIRNotch edge_weight=0.25 frequency=3000 50", "FIRNotch half_length=50 3000 0.25",
        "  FIRNotch\t50 \"3000\" edge_weight='0.25' ", "FIRNotch 5e1 +3000 .25"}) {
    EXPECT_TRUE(result(filter) == expected) << filter;
  }
  EXPECT_FALSE(result("FIRNotch 50 3000") == expected);
}

TEST(WavechainUsage, CommandsAndOptionsThatDoNotExistAreNamed) {
  ExpectUsageError({},
                   "no command is given; there are run, batch, list, info, check, diff, show, "
                   "rerun, skeleton, plot, help; see wavechain --help");
  ExpectUsageError({"help", "cheek"}, "there is no help on 'cheek'; did you mean check?");
  ExpectUsageError({"help", "FIRNotsch"},
                   "there is no help on 'FIRNotsch'; did you mean FIRNotch?");
  ExpectUsageError({"help", "run", "now"}, "'now' is one word too many");
  ExpectUsageError({"rum"}, "there is no command 'rum'; did you mean run?");
  ExpectUsageError({"--frob"}, "there is no option --frob; there are --help, --version");
  ExpectUsageError({"run", "a", "b", "--chanel", "2", "-f", "SineFilter"},
                   "there is no option --chanel; did you mean --channel?");
  ExpectUsageError({"run", "a"}, "OUT is required; see wavechain run --help");
  ExpectUsageError({"run", "a", "b", "--channel", "left", "-f", "SineFilter"},
                   "--channel left: takes a whole number from 1");
  ExpectUsageError({"run", "a", "b", "--channel", "0", "-f", "SineFilter"},
                   "--channel 0: takes a whole number from 1");
  ExpectUsageError(
      {"run", "a", "b"},
      "no filter is given; add -f \"FIRNotch half_length=200\" or its like, or --chain "
      "FILE");
  ExpectUsageError({"info"}, "FILTER is required; see wavechain info --help");
  ExpectUsageError({"info", "FIRNotsch"}, "there is no filter 'FIRNotsch'; did you mean FIRNotch?");
}

TEST(WavechainUsage, MessagesStayOneLineWhateverTheNamesHold) {
  const Outcome run = Wavechain({"run", "two\nlines\x1b[31m", "out.wav", "-f", "SineFilter"});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.err,
            "wavechain: two\\nlines\\x1b[31m: cannot be opened: No such file or directory\n");
}

}  // namespace
