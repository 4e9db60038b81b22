// What a chain would do, without doing it: the same setting up, reports and failures as a run's.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>

#include "e2e/support/program.h"
#include "e2e/support/sound.h"
#include "support/samples.h"
#include "support/temp_folder.h"

namespace {

using e2e::Outcome;
using e2e::Wavechain;
using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;

using Texts = std::vector<std::string>;

class Check : public testing::Test {
 protected:
  // A take with its data files, and a second recording.
  Check() {
    for (const char* name : {"take3.wav", "take3.xyd", "take3.iop", "pal.dat"}) {
      std::filesystem::create_symlink(std::string(EXAMPLE_DATA) + "/" + name, Path(name));
    }
    e2e::WriteSound(Path("noise.wav"), support::Noise(8000), 16000);
    folder.Write("take3.gpm", "10 0.5\n20 -0.25\n");
    folder.Write("take3.fla", "30 0.1 1 2\n");
    folder.Write("take3.gpl", "5 1 0.5 0.1 1\n12 0.5 0.5 0.1\n");
    std::filesystem::create_directory(Path("tmp"));
  }

  std::string Path(const std::string& name) const { return folder.Path(name); }

  Outcome Do(const Texts& arguments) const {
    return Wavechain(arguments, {.variables = {{"TMPDIR", Path("tmp")}}, .folder = Path("")});
  }

  // `command` for the input with these filters.
  static Texts Asked(const Texts& command, const Texts& filters, const Texts& options = {}) {
    Texts arguments = command;
    for (const std::string& filter : filters) {
      arguments.insert(arguments.end(), {"-f", filter});
    }
    arguments.insert(arguments.end(), options.begin(), options.end());
    return arguments;
  }

  Outcome Checked(const std::string& in, const Texts& filters, const Texts& options = {}) const {
    const Outcome check = Do(Asked({"check", in}, filters, options));
    EXPECT_EQ(check.status, 0) << check.err;
    EXPECT_EQ(check.err, "");
    EXPECT_THAT(e2e::FilesIn(Path("tmp")), SizeIs(0));
    return check;
  }

  json CheckedJson(const std::string& in, const Texts& filters, const Texts& options = {}) const {
    Texts all = options;
    all.push_back("--json");
    return json::parse(Checked(in, filters, all).out);
  }

  support::TempFolder folder;
};

TEST_F(Check, PrintsEveryStepWithWhatItDelivers) {
  // 8000 samples at 16 kHz; every second of them remains.
  EXPECT_EQ(Checked("noise.wav", {"FIRFilter 20", "ResampleBlackman down=2", "SineFilter 440"}).out,
            "input: noise.wav: WAV (Microsoft), 32 bit float, channel 1 of 1\n"
            "  8000 samples, 0.500 s; 16000 Hz, one every 0.0625 ms; sample values, full scale 1\n"
            "filter 1: FIRFilter half_length=20\n"
            "  8000 samples, 0.500 s; 16000 Hz, one every 0.0625 ms; sample values, full scale 1\n"
            "filter 2: ResampleBlackman down=2 up=1 down_start=0 phase_start=0 shift=0 "
            "half_length=60 cutoff=0.5 widen=0.52\n"
            "  4000 samples, 0.500 s; 8000 Hz, one every 0.125 ms; sample values, full scale 1\n"
            "filter 3: SineFilter frequency=440 amplitude=1 phase=0\n"
            "  4000 samples, 0.500 s; 8000 Hz, one every 0.125 ms; sample values, full scale 1\n");
}

TEST_F(Check, PrintsSecondSignalsWithTheirOwnSteps) {
  EXPECT_EQ(Checked("take3.wav", {"SumSources with='noise.wav | FIRFilter 20'"}).out,
            "input: take3.wav: WAV (Microsoft), Signed 16 bit PCM, channel 1 of 1\n"
            "  164784 samples, 10.299 s; 16000 Hz, one every 0.0625 ms; sample values, full scale "
            "1\n"
            "filter 1: SumSources gain1=1 gain2=1 with='noise.wav | FIRFilter 20'\n"
            "  with: noise.wav: WAV (Microsoft), 32 bit float, channel 1 of 1\n"
            "    8000 samples, 0.500 s; 16000 Hz, one every 0.0625 ms; sample values, full scale "
            "1\n"
            "  filter 1: FIRFilter half_length=20\n"
            "    8000 samples, 0.500 s; 16000 Hz, one every 0.0625 ms; sample values, full scale "
            "1\n"
            "  164784 samples, 10.299 s; 16000 Hz, one every 0.0625 ms; sample values, full scale "
            "1\n");
}

TEST_F(Check, TellsUnitAndFullScaleBesideTheLibrarysOwn) {
  const std::string text = Checked("take3.wav", {"BeamData mode=speed"}).out;
  EXPECT_THAT(text, HasSubstr("mm/ms, full scale 1 (the library says mm, 150)\n"));
  const json output = CheckedJson("take3.wav", {"BeamData mode=speed"})["output"];
  EXPECT_EQ(output["unit"], "mm/ms");
  EXPECT_EQ(output["full_scale"], 1.0);
}

TEST_F(Check, ForetellsTheLengthThatARunDelivers) {
  const Texts filters[] = {{"SetTrack"},
                           {"BeamPel"},
                           {"BeamData 8"},
                           {"GlotSyn"},
                           {"FricSyn"},
                           {"PulseSyn"},
                           {"FIRFilter 5"},
                           {"FIRNotch 5"},
                           {"ResampleBlackman rate=44100"},
                           {"ResampleBlackman 7 3"},
                           {"SumSources with=noise.wav"},
                           {"EchoCancel with=noise.wav"},
                           {"SineFilter"},
                           {"SquareFilter"},
                           {"BeamPel", "ResampleBlackman rate=200", "FIRFilter 2"}};
  for (const Texts& chain : filters) {
    const json check = CheckedJson("take3.wav", chain);
    const Outcome run = Do(Asked({"run", "take3.wav", "out.wav", "-q", "--force"}, chain));
    ASSERT_EQ(run.status, 0) << run.err;
    const e2e::Sound out = e2e::ReadSound(Path("out.wav"));
    EXPECT_EQ(check["output"]["samples"], out.samples.size()) << chain.front();
    EXPECT_NEAR(check["output"]["rate"].get<double>(), out.rate, 0.5) << chain.front();
    EXPECT_EQ(check["filters"].back()["output"]["samples"], out.samples.size());
  }
}

TEST_F(Check, SaysWhatARunWouldSayOfDataFiles) {
  // Nothing beyond the first three lines can be read; some events are out of place.
  folder.Write("take3.gpm", "-5 1\n10 0.5\n99999 1\noops\n20 1\n");
  folder.Write("few.xyd", e2e::ReadFile(Path("take3.xyd")).substr(0, 3000) + "\n1 2 x\n");
  const Texts filters = {"BeamPel data=few.xyd", "PulseSyn", "BeamData mode=bend", "SetTrack"};
  const std::string text = Checked("take3.wav", filters).out;
  const Outcome run = Do(Asked({"run", "take3.wav", "out.wav"}, filters));
  ASSERT_EQ(run.status, 0) << run.err;
  int said = 0;
  for (const std::string& line : run.ErrorLines()) {
    if (line.starts_with("data ") || line.starts_with("warning: take3") ||
        line.starts_with("warning: few")) {
      EXPECT_THAT(text, HasSubstr("\n  " + line + "\n"));
      ++said;
    }
  }
  // Of each of the five files what it holds, of two why they end, of one what is dropped.
  EXPECT_GE(said, 5 + 2 + 2);
  EXPECT_THAT(text, HasSubstr("\n  warning: take3.gpm: 1 event will be dropped: before the start"));
  EXPECT_THAT(text, HasSubstr("\n  warning: take3.gpm: 1 event will be dropped: behind the end"));
}

TEST_F(Check, CountsSamplesWithoutData) {
  // Pellet 7, the jaw, is never lost; pellet 1 is.
  const json whole = CheckedJson("take3.wav", {"BeamPel 13"})["filters"][0];
  const json lost = CheckedJson("take3.wav", {"BeamPel 1"})["filters"][0];
  EXPECT_GT(lost["missing_samples"], whole["missing_samples"]);
  EXPECT_EQ(CheckedJson("take3.wav", {"SineFilter"})["filters"][0]["missing_samples"], nullptr);
  const Outcome run = Do({"run", "take3.wav", "out.wav", "-f", "BeamPel 1"});
  const std::string count = std::to_string(lost["missing_samples"].get<int>());
  EXPECT_THAT(run.err, HasSubstr("gaps   " + count + " of 164784 samples"));
}

TEST_F(Check, AsJsonHoldsParametersArgumentsWarningsAndStages) {
  folder.Write("late.gpm", "10 1\n99999 1\n");
  const json check = CheckedJson(
      "take3.wav", {"PulseSyn events=late.gpm", "ResampleBlackman rate=44100 quality=best",
                    "SumSources gain2=0.5 with='noise.wav | ResampleBlackman rate=44100'"});
  EXPECT_EQ(check["input"]["recording"], "take3.wav");
  EXPECT_EQ(check["input"]["channels"], 1);
  EXPECT_EQ(check["input"]["interval_ms"], 0.0625);
  // 441 / 160 is more than one kernel takes at this quality.
  ASSERT_THAT(check["filters"], SizeIs(4));
  const json& events = check["filters"][0];
  EXPECT_EQ(events["filter"], 1);
  EXPECT_EQ(events["stage"], nullptr);
  EXPECT_EQ(events["kind"], "PulseSyn");
  EXPECT_EQ(events["parameters"], json::object());
  EXPECT_EQ(events["arguments"]["events"], "late.gpm");
  EXPECT_THAT(events["data"], ElementsAre("late.gpm: 2 events"));
  EXPECT_THAT(events["warnings"],
              ElementsAre("late.gpm: 1 event will be dropped: behind the end of the signal"));
  EXPECT_EQ(check["filters"][1]["filter"], 2);
  EXPECT_EQ(check["filters"][1]["stage"], 1);
  EXPECT_EQ(check["filters"][2]["filter"], 2);
  EXPECT_EQ(check["filters"][2]["stage"], 2);
  const json& mix = check["filters"][3];
  EXPECT_EQ(mix["filter"], 3);
  EXPECT_EQ(mix["parameters"], json({{"gain1", 1.0}, {"gain2", 0.5}}));
  EXPECT_EQ(mix["with"]["input"]["recording"], "noise.wav");
  EXPECT_EQ(mix["with"]["filters"].back()["kind"], "ResampleBlackman");
  EXPECT_EQ(mix["with"]["output"]["rate"], check["output"]["rate"]);
}

TEST_F(Check, AsJsonIsTextWhateverTheNameHolds) {
  std::filesystem::copy(Path("noise.wav"), Path("\xff\"\\.wav"));
  EXPECT_EQ(CheckedJson("\xff\"\\.wav", {"SineFilter"})["input"]["recording"],
            "\xef\xbf\xbd\"\\.wav");
}

TEST_F(Check, AsDotDrawsSignalsAsEdges) {
  std::filesystem::copy(Path("noise.wav"), Path("a\"b\\.wav"));
  EXPECT_EQ(
      Checked("noise.wav", {"SineFilter", "EchoCancel with='a\"b\\.wav | SquareFilter'"}, {"--dot"})
          .out,
      "digraph chain {\n"
      "  rankdir=LR;\n"
      "  node [shape=box];\n"
      "  n1 [label=\"noise.wav\", shape=oval];\n"
      "  n2 [label=\"filter 1\\nSineFilter frequency=100 amplitude=1 phase=0\"];\n"
      "  n1 -> n2 [label=\"16000 Hz\\n8000 samples, 0.500 s\\nsample values, full scale 1\"];\n"
      "  n3 [label=\"a\\\"b\\\\.wav\", shape=oval];\n"
      "  n4 [label=\"filter 1\\nSquareFilter half_period=256 weight=1 previous_weight=0\"];\n"
      "  n3 -> n4 [label=\"16000 Hz\\n8000 samples, 0.500 s\\nsample values, full scale 1\"];\n"
      "  n5 [label=\"filter 2\\nEchoCancel span=0 with='a\\\"b\\\\.wav | SquareFilter'\"];\n"
      "  n2 -> n5 [label=\"16000 Hz\\n8000 samples, 0.500 s\\nsample values, full scale 1\"];\n"
      "  n4 -> n5 [label=\"16000 Hz\\n8000 samples, 0.500 s\\nsample values, full scale 1\"];\n"
      "  n6 [label=\"output\", shape=plaintext];\n"
      "  n5 -> n6 [label=\"16000 Hz\\n8000 samples, 0.500 s\\nsample values, full scale 1\"];\n"
      "}\n");
}

TEST_F(Check, AsDotWarnsOnStandardError) {
  folder.Write("late.gpm", "10 1\n99999 1\n");
  const Outcome check = Do({"check", "take3.wav", "--dot", "-f", "PulseSyn events=late.gpm"});
  EXPECT_EQ(check.status, 0);
  EXPECT_EQ(check.err,
            "warning: late.gpm: 1 event will be dropped: behind the end of the signal\n");
}

TEST_F(Check, TakesSavedChainsAndSilence) {
  folder.Write("chain.toml", "[[filter]]\nkind = \"FIRFilter\"\nhalf_length = 20\n");
  EXPECT_EQ(Checked("noise.wav", {}, {"--chain", "chain.toml"}).out,
            Checked("noise.wav", {"FIRFilter 20"}).out);
  const Outcome silence = Do({"check", "--silence", "2", "--rate", "8000", "-f", "SineFilter"});
  EXPECT_EQ(silence.status, 0) << silence.err;
  EXPECT_THAT(silence.out, HasSubstr("input: silence\n  16000 samples, 2.000 s; 8000 Hz, one every "
                                     "0.125 ms; sample values, full scale 1\n"));
}

TEST_F(Check, FailsAsARunWould) {
  folder.Write("nothing.gpm", "");
  folder.Write("text.wav", "no sound");
  e2e::WriteSound(Path("slow.wav"), support::Noise(100), 4000);
  e2e::WriteSound(Path("stereo.wav"), support::Noise(100), 16000, 2);
  const struct {
    const char* in;
    Texts filters;
    int status;
  } cases[] = {
      {"none.wav", {"SineFilter"}, 2},
      {"text.wav", {"SineFilter"}, 2},
      {"stereo.wav", {"SineFilter"}, 1},
      {"noise.wav", {"SinFilter"}, 1},
      {"noise.wav", {"FIRFilter"}, 1},
      {"noise.wav", {"BeamPel"}, 2},
      {"noise.wav", {"PulseSyn events=nothing.gpm"}, 2},
      {"slow.wav", {"SineFilter 100", "FIRNotch 20 2500"}, 1},
      {"noise.wav", {"SumSources with=slow.wav"}, 1},
      {"noise.wav", {"SumSources with=none.wav"}, 2},
      {"noise.wav", {}, 1},
  };
  for (const auto& one : cases) {
    const Outcome check = Do(Asked({"check", one.in}, one.filters));
    const Outcome run = Do(Asked({"run", one.in, "out.wav", "-q"}, one.filters));
    EXPECT_EQ(check.status, one.status) << one.in;
    EXPECT_EQ(run.status, one.status) << one.in;
    EXPECT_EQ(check.err, run.err);
    EXPECT_THAT(check.ErrorLines(), SizeIs(1));
    EXPECT_EQ(check.out, "");
  }
  EXPECT_THAT(e2e::FilesIn(Path("tmp")), SizeIs(0));
}

TEST_F(Check, SaysWhatItFoundBeforeItFailed) {
  folder.Write("late.gpm", "10 1\n99999 1\n");
  const Outcome check = Do(
      {"check", "take3.wav", "-f", "PulseSyn events=late.gpm", "-f", "PulseSyn events=none.gpm"});
  EXPECT_EQ(check.status, 2);
  EXPECT_THAT(
      check.ErrorLines(),
      ElementsAre("warning: late.gpm: 1 event will be dropped: behind the end of the signal",
                  "wavechain: filter 2 (PulseSyn): none.gpm: there is no such file; name the file "
                  "by events=FILE, or run without it by --allow-missing"));
  // What may be missing is no failure, and is said all the same.
  EXPECT_THAT(Checked("take3.wav", {"PulseSyn events=none.gpm"}, {"--allow-missing"}).out,
              HasSubstr("\n  warning: filter 1 (PulseSyn): none.gpm: there is no such file; the "
                        "filter adds nothing\n"));
}

TEST_F(Check, RefusesWhatItCannotUnderstand) {
  const auto said = [&](const Texts& arguments) {
    const Outcome check = Do(arguments);
    EXPECT_EQ(check.status, 1);
    return check.err;
  };
  EXPECT_EQ(said({"check", "-f", "SineFilter"}),
            "wavechain: IN is required; see wavechain check --help\n");
  EXPECT_EQ(said({"check", "a.wav", "--silence", "1", "--rate", "8000", "-f", "SineFilter"}),
            "wavechain: with --silence there is no recording: leave out a.wav\n");
  EXPECT_EQ(said({"check", "noise.wav", "--json", "--dot", "-f", "SineFilter"}),
            "wavechain: --json excludes --dot; see wavechain check --help\n");
  EXPECT_EQ(
      said({"check", "noise.wav", "out.wav", "-f", "SineFilter"}),
      "wavechain: 'out.wav' is one word too many; a filter and its parameters stand in quotes, "
      "as in -f \"FIRNotch half_length=200\"\n");
}

TEST_F(Check, FullStandardOutputIsAnError) {
  const Outcome check =
      Wavechain({"check", Path("noise.wav"), "-f", "SineFilter"}, {.outputFile = "/dev/full"});
  EXPECT_EQ(check.status, 3);
}

}  // namespace
