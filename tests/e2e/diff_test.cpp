// wavechain diff on real files: what it says, and the status it ends with.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>

#include "e2e/support/program.h"
#include "e2e/support/sound.h"
#include "support/samples.h"
#include "support/temp_folder.h"

namespace {

using e2e::Outcome;
using e2e::Wavechain;
using support::TempFolder;
using testing::EndsWith;
using testing::HasSubstr;

class WavechainDiff : public testing::Test {
 protected:
  std::string Path(const std::string& name) const { return folder.Path(name); }

  std::string Sound(const std::string& name, const std::vector<float>& samples, int rate = 8000,
                    int channels = 1, int format = SF_FORMAT_WAV | SF_FORMAT_FLOAT) const {
    e2e::WriteSound(Path(name), samples, rate, channels, format);
    return Path(name);
  }

  static Outcome Diff(std::vector<std::string> arguments, const e2e::Surroundings& around = {}) {
    arguments.insert(arguments.begin(), "diff");
    return Wavechain(arguments, around);
  }

  static nlohmann::json Json(std::vector<std::string> arguments, int status) {
    arguments.emplace_back("--json");
    const Outcome run = Diff(arguments);
    EXPECT_EQ(run.status, status) << run.err;
    return nlohmann::json::parse(run.out);
  }

  static void ExpectTrouble(const std::vector<std::string>& arguments, const std::string& line) {
    const Outcome run = Diff(arguments);
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "wavechain: " + line + "\n");
  }

 private:
  TempFolder folder;
};

TEST_F(WavechainDiff, ARecordingIsTheSameAsItself) {
  const Outcome run = Diff({SPEECH_48K, SPEECH_48K});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_THAT(run.out, HasSubstr("48000 Hz, 1 channel\n"));
  EXPECT_THAT(run.out, EndsWith("\nsame\n"));
}

TEST_F(WavechainDiff, TheSameSamplesInAnotherFormatAreTheSame) {
  const std::vector<float> samples = support::Noise(5000);
  const std::string a = Sound("a.wav", samples);
  const std::string b = Sound("b.aiff", samples, 8000, 1, SF_FORMAT_AIFF | SF_FORMAT_DOUBLE);
  EXPECT_EQ(Diff({a, b}).status, 0);
}

TEST_F(WavechainDiff, EverythingThatDiffersIsNamed) {
  std::vector<float> samples(10000, 0.5F);
  const std::string a = Sound("a.wav", samples);
  samples[4100] = 0.25F;
  samples[8200] = -0.5F;
  const std::string b = Sound("b.wav", samples);
  const Outcome run = Diff({a, b});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.out, HasSubstr("greatest  1 at sample 8200 (1.025000 s): 0.5 and -0.5\n"));
  EXPECT_THAT(run.out, HasSubstr("first     sample 4100 (0.512500 s): 0.5 and 0.25\n"));
  EXPECT_THAT(run.out, EndsWith("different: 2 of 10000 samples\n"));

  const nlohmann::json json = Json({a, b}, 1);
  EXPECT_EQ(json["same"], false);
  EXPECT_EQ(json["a"]["file"], a);
  EXPECT_EQ(json["a"]["length"], 10000);
  EXPECT_EQ(json["b"]["rate_hz"], 8000.0);
  EXPECT_EQ(json["compared"], 10000);
  EXPECT_EQ(json["differing"], 2);
  EXPECT_EQ(json["first"]["sample"], 4100);
  EXPECT_EQ(json["greatest"]["sample"], 8200);
  EXPECT_EQ(json["greatest"]["time_s"], 1.025);
  EXPECT_EQ(json["greatest"]["difference"], 1.0);
  EXPECT_DOUBLE_EQ(json["rms_difference"], std::sqrt(1.0625 / 10000.0));
  EXPECT_DOUBLE_EQ(json["a"]["rms"], 0.5);
}

TEST_F(WavechainDiff, TheToleranceDecides) {
  const std::string a = Sound("a.wav", {0.0F, 0.0F});
  const std::string b = Sound("b.wav", {0.0F, 0.125F});
  EXPECT_EQ(Diff({a, b, "--tolerance", "0.124"}).status, 1);
  const Outcome run = Diff({a, b, "--tolerance", "0.125"});
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.out, HasSubstr("greatest  0.125 at sample 1"));
  EXPECT_THAT(run.out, EndsWith("same (tolerance 0.125)\n"));
}

TEST_F(WavechainDiff, ALongerFileDiffersThoughNoSampleDoes) {
  const std::string a = Sound("a.wav", std::vector<float>(100, 1.0F));
  const std::string b = Sound("b.wav", std::vector<float>(103, 1.0F));
  const Outcome run = Diff({a, b});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.out, EndsWith("\ndifferent: length (by 3 samples)\n"));
  EXPECT_EQ(Json({b, a}, 1)["compared"], 100);
}

TEST_F(WavechainDiff, AnotherRateDiffersThoughNoSampleDoes) {
  const std::string a = Sound("a.wav", {1.0F}, 8000);
  const std::string b = Sound("b.wav", {1.0F}, 16000);
  const Outcome run = Diff({a, b});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.out, EndsWith("\ndifferent: sampling rate\n"));
}

TEST_F(WavechainDiff, ChannelsAreComparedOneByOne) {
  const std::string a = Sound("a.wav", {1.0F, 2.0F, 3.0F, 4.0F}, 8000, 2);
  const std::string b = Sound("b.wav", {1.0F, 2.0F, 3.0F, 5.0F}, 8000, 2);
  const std::string mono = Sound("mono.wav", {1.0F, 3.0F});
  const Outcome run = Diff({a, b});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.out, HasSubstr("first     sample 1 (0.000125 s), channel 2: 4 and 5\n"));
  const Outcome other = Diff({a, mono});
  EXPECT_EQ(other.status, 1);
  EXPECT_THAT(other.out, EndsWith("\ndifferent: number of channels (no sample was compared)\n"));
}

TEST_F(WavechainDiff, NotANumberIsToldFromNumbers) {
  const std::string a = Sound("a.wav", {NAN, 1.0F, 2.0F});
  const std::string b = Sound("b.wav", {NAN, 1.0F, NAN});
  EXPECT_EQ(Diff({a, a}).status, 0);
  const nlohmann::json json = Json({a, b}, 1);
  EXPECT_EQ(json["one_sided_nan"], 1);
  EXPECT_EQ(json["first"]["sample"], 2);
  EXPECT_EQ(json["first"]["b"], "nan");
  EXPECT_THAT(Diff({a, b}).out, HasSubstr("not a number in one of the two: 1 sample\n"));
}

TEST_F(WavechainDiff, TablesAndArraysAreReadBack) {
  const std::string recording = Sound("in.wav", support::Noise(9000));
  for (const std::string name : {"o.wav", "o.csv", "o.npy"}) {
    ASSERT_EQ(Wavechain({"run", recording, Path(name), "-f", "FIRFilter 3"}).status, 0);
  }
  for (const std::string name : {"o.csv", "o.npy"}) {
    const Outcome run = Diff({Path("o.wav"), Path(name)});
    EXPECT_EQ(run.status, 0) << run.out << run.err;
    EXPECT_EQ(Diff({Path(name), recording, "-q"}).status, 1);
  }
  EXPECT_EQ(Json({Path("o.csv"), Path("o.npy")}, 0)["a"]["rate_hz"], 8000.0);
  EXPECT_EQ(Json({Path("o.npy"), Path("o.csv")}, 0)["a"]["rate_hz"], nullptr);
}

TEST_F(WavechainDiff, EmptyCellsOfATableAreNotANumber) {
  e2e::WriteFile(Path("a.csv"), "time_s,x,y\n0,1,\n0.5,2,inf\n");
  e2e::WriteFile(Path("b.csv"), "time_s,x,y\r\n0,1,nan\r\n0.5,2,inf\r\n");
  EXPECT_EQ(Diff({Path("a.csv"), Path("b.csv")}).status, 0);
  EXPECT_EQ(Json({Path("a.csv"), Path("b.csv")}, 0)["a"]["rate_hz"], 2.0);
}

TEST_F(WavechainDiff, QuietSaysNothing) {
  const std::string a = Sound("a.wav", {0.0F});
  const std::string b = Sound("b.wav", {1.0F});
  const Outcome run = Diff({"-q", a, b});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out + run.err, "");
}

TEST_F(WavechainDiff, OneOfTheTwoMayComeThroughAPipe) {
  const std::string a = Sound("a.wav", support::Noise(100));
  const Outcome run = Diff({"-", a}, {.input = e2e::ReadFile(a)});
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.out, HasSubstr("standard input: 100 samples"));
  ExpectTrouble({"-", "-"}, "only one of the two files can be standard input");
}

TEST_F(WavechainDiff, TroubleHasAStatusOfItsOwn) {
  const std::string a = Sound("a.wav", {0.0F});
  ExpectTrouble({a, Path("none.wav")},
                Path("none.wav") + ": cannot be opened: No such file or directory");
  ExpectTrouble({a}, "B is required; see wavechain diff --help");
  ExpectTrouble({a, a, "--tolerence", "1"},
                "there is no option --tolerence; did you mean --tolerance?");
  ExpectTrouble({a, a, "--tolerance", "-1"}, "--tolerance -1: is 0 or more");
  ExpectTrouble({a, a, "--tolerance", "nan"}, "--tolerance nan: is 0 or more");
}

TEST_F(WavechainDiff, DamagedTablesAreNamedByLine) {
  const std::string csv = Path("t.csv");
  e2e::WriteFile(csv, "time_s,x\n0,1\n1,2,3\n");
  ExpectTrouble({csv, csv}, csv + ": line 3: has 3 columns, the first line has 2");
  e2e::WriteFile(csv, "time_s,x\n0,one\n");
  ExpectTrouble({csv, csv}, csv + ": line 2: 'one' is no number");
  e2e::WriteFile(csv, "time_s,x\nzero,1\n");
  ExpectTrouble({csv, csv}, csv + ": line 2: begins with no time in seconds");
  const std::string npy = Path("t.npy");
  e2e::WriteFile(npy, "\x93NUMPY rubbish");
  ExpectTrouble({npy, npy},
                npy +
                    ": is no array of float32 or float64 with one axis, or with columns as the "
                    "second");
}

TEST_F(WavechainDiff, AnArrayThatIsCutShortIsRefused) {
  const std::string a = Sound("a.wav", support::Noise(100));
  ASSERT_EQ(Wavechain({"run", a, Path("o.npy"), "-f", "SineFilter"}).status, 0);
  const std::string bytes = e2e::ReadFile(Path("o.npy"));
  e2e::WriteFile(Path("o.npy"), bytes.substr(0, bytes.size() - 1));
  ExpectTrouble({a, Path("o.npy")},
                Path("o.npy") + ": is cut short: 100 announced samples are missing");
}

}  // namespace
