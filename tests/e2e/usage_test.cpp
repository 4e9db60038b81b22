// What the program says: help, lists, and one line for each thing that is wrong.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "e2e/support/program.h"
#include "e2e/support/sound.h"
#include "support/samples.h"
#include "support/temp_folder.h"

namespace {

using e2e::Outcome;
using e2e::Wavechain;
using nlohmann::json;
using support::TempFolder;
using testing::HasSubstr;
using testing::SizeIs;
using testing::StartsWith;

const std::vector<std::string> Filters = {
    "SetTrack",   "BeamPel",    "BeamData",    "GlotSyn",          "FricSyn",
    "PulseSyn",   "FIRFilter",  "FIRNotch",    "ResampleBlackman", "SumSources",
    "EchoCancel", "SineFilter", "SquareFilter"};

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
  ExpectUsageError({}, "no command is given; there are run, list, info; see wavechain --help");
  ExpectUsageError({"rum"}, "there is no command 'rum'; did you mean run?");
  ExpectUsageError({"--frob"}, "there is no option --frob; there are --help, --version");
  ExpectUsageError({"run", "a", "b", "--chanel", "2", "-f", "SineFilter"},
                   "there is no option --chanel; did you mean --channel?");
  ExpectUsageError({"run", "a"}, "OUT is required; see wavechain run --help");
  ExpectUsageError({"run", "a", "b", "--channel", "left", "-f", "SineFilter"},
                   "--channel left: takes a whole number from 1");
  ExpectUsageError({"run", "a", "b", "--channel", "0", "-f", "SineFilter"},
                   "--channel 0: takes a whole number from 1");
  ExpectUsageError({"run", "a", "b"},
                   "no filter is given; add -f \"FIRNotch half_length=200\" or its like");
  ExpectUsageError({"info"}, "FILTER is required; see wavechain info --help");
  ExpectUsageError({"info", "FIRNotsch"}, "there is no filter 'FIRNotsch'; did you mean FIRNotch?");
}

TEST(WavechainUsage, MessagesStayOneLineWhateverTheNamesHold) {
  const Outcome run = Wavechain({"run", "two\nlines\x1b[31m", "out.wav", "-f", "SineFilter"});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.err,
            "wavechain: two\\nlines\\x1b[31m: cannot be opened: No such file or directory\n");
}

TEST(WavechainUsage, HelpGoesToStandardOutputWithEveryFilterAndUnit) {
  const Outcome all = Wavechain({"--help"});
  EXPECT_EQ(all.status, 0);
  EXPECT_EQ(all.err, "");
  EXPECT_THAT(all.out, HasSubstr("Exit status: 0 done"));
  const Outcome run = Wavechain({"run", "--help"});
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.out, HasSubstr("Usage: wavechain run"));
  EXPECT_THAT(run.out,
              HasSubstr("frequency (Hz, real, 0 to half the sampling rate; default 2500)"));
  for (const std::string& filter : Filters) {
    EXPECT_THAT(run.out, HasSubstr("\n  " + filter + ": "));
  }
}

TEST(WavechainUsage, TheVersionIsOneLine) {
  const Outcome run = Wavechain({"--version"});
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.out, testing::MatchesRegex("wavechain [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

TEST(WavechainUsage, ListNamesAllThirteen) {
  const Outcome list = Wavechain({"list"});
  EXPECT_EQ(list.status, 0);
  std::size_t lines = 0;
  for (const std::string& filter : Filters) {
    EXPECT_THAT("\n" + list.out, HasSubstr("\n" + filter + " "));
    ++lines;
  }
  EXPECT_EQ(static_cast<std::size_t>(std::count(list.out.begin(), list.out.end(), '\n')), lines);
}

TEST(WavechainUsage, ListAsJsonHoldsWhatInfoTells) {
  const json list = json::parse(Wavechain({"list", "--json"}).out);
  ASSERT_EQ(list.size(), Filters.size());
  for (std::size_t i = 0; i < Filters.size(); ++i) {
    EXPECT_EQ(list[i]["name"], Filters[i]);
    EXPECT_EQ(list[i], json::parse(Wavechain({"info", Filters[i], "--json"}).out));
    EXPECT_FALSE(list[i]["purpose"].get<std::string>().empty());
    for (const json& parameter : list[i]["parameters"]) {
      EXPECT_FALSE(parameter["help"].get<std::string>().empty());
    }
  }
}

TEST(WavechainUsage, InfoAsJsonTellsEveryParameter) {
  const json notch = json::parse(Wavechain({"info", "FIRNotch", "--json"}).out);
  EXPECT_EQ(notch["entry_point"], "FIRNotchI");
  EXPECT_EQ(notch["sources"], 1);
  EXPECT_EQ(notch["available"], true);
  EXPECT_EQ(notch["data_files"], json::array());
  ASSERT_EQ(notch["parameters"].size(), 3U);
  const json& half = notch["parameters"][0];
  EXPECT_EQ(half["name"], "half_length");
  EXPECT_EQ(half["unit"], "samples");
  EXPECT_EQ(half["default"], nullptr);
  EXPECT_EQ(half["default_text"], "none");
  EXPECT_EQ(half["required"], true);
  EXPECT_EQ(half["minimum"], 0);
  EXPECT_EQ(half["maximum"], 2048);
  EXPECT_EQ(half["whole"], true);
  const json& frequency = notch["parameters"][1];
  EXPECT_EQ(frequency["unit"], "Hz");
  EXPECT_EQ(frequency["default"], 2500.0);
  EXPECT_EQ(frequency["maximum"], nullptr);
  EXPECT_EQ(frequency["maximum_is_half_rate"], true);
  EXPECT_EQ(frequency["whole"], false);
  EXPECT_EQ(notch["parameters"][2]["name"], "edge_weight");
  EXPECT_EQ(notch["parameters"][2]["default"], 0.5);

  const json beams = json::parse(Wavechain({"info", "BeamData", "--json"}).out);
  EXPECT_EQ(beams["parameters"][0]["values"]["speed"], 5);
  EXPECT_EQ(beams["data_files"][0]["name"], ".xyd");
  EXPECT_EQ(beams["data_files"][1]["name"], "pal.dat");
  EXPECT_EQ(json::parse(Wavechain({"info", "SumSources", "--json"}).out)["sources"], 2);
}

TEST(WavechainUsage, InfoTellsParametersUnitsDefaultsAndFiles) {
  const Outcome notch = Wavechain({"info", "FIRNotch"});
  EXPECT_THAT(notch.out, StartsWith("FIRNotch: takes out a narrow band"));
  EXPECT_THAT(notch.out, HasSubstr("half_length  (samples, whole, 0 to 2048; default none)"));
  EXPECT_THAT(notch.out, HasSubstr("data files: none"));
  EXPECT_THAT(Wavechain({"info", "GlotSyn"}).out, HasSubstr("\n  .gpl  "));
  EXPECT_THAT(Wavechain({"info", "GlotSyn"}).out, HasSubstr("parameters: none"));
}

TEST(WavechainUsage, TheTableHoldsTheLibrarysParametersAndDefaults) {
  // Name, unit, default, whole: as the library documents them, in its order.
  const std::vector<std::pair<std::string, std::vector<std::string>>> expected = {
      {"SetTrack", {}},
      {"BeamPel", {"column||6|whole"}},
      {"BeamData", {"mode||0|whole", "a||0|whole", "b||0|whole"}},
      {"GlotSyn", {}},
      {"FricSyn", {}},
      {"PulseSyn", {}},
      {"FIRFilter", {"half_length|samples|none|whole"}},
      {"FIRNotch", {"half_length|samples|none|whole", "frequency|Hz|2500|", "edge_weight||0.5|"}},
      {"ResampleBlackman",
       {"down||1|whole", "up||1|whole", "down_start|high-rate steps|0|whole",
        "phase_start|high-rate steps|0|whole", "shift|high-rate Nyquist frequency|0|",
        "half_length|high-rate steps|60|whole",
        "cutoff|high-rate Nyquist frequency|1 / max(down, up)|", "widen||0.52|"}},
      {"SumSources", {"gain1|factor|1|", "gain2|factor|1|"}},
      {"EchoCancel", {"span|samples|0|whole"}},
      {"SineFilter", {"frequency|Hz|100|", "amplitude|sample units|1|", "phase|degrees|0|"}},
      {"SquareFilter",
       {"half_period|samples|256|whole", "weight|sample units|1|",
        "previous_weight|sample units|0|"}},
  };
  const json list = json::parse(Wavechain({"list", "--json"}).out);
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_EQ(list[i]["name"], expected[i].first);
    std::vector<std::string> parameters;
    for (const json& p : list[i]["parameters"]) {
      parameters.push_back(p["name"].get<std::string>() + "|" + p["unit"].get<std::string>() + "|" +
                           p["default_text"].get<std::string>() + "|" +
                           (p["whole"].get<bool>() ? "whole" : ""));
    }
    EXPECT_EQ(parameters, expected[i].second) << expected[i].first;
  }
}

TEST(WavechainUsage, AnotherLibraryMayBeNamed) {
  const TempFolder folder;
  EXPECT_EQ(Wavechain({"list", "--library", WAVEFILTERS_LIBRARY}).out, Wavechain({"list"}).out);
  e2e::WriteFile(folder.Path("copy.so"), e2e::ReadFile(WAVEFILTERS_LIBRARY));
  EXPECT_EQ(Wavechain({"list", "--library", "copy.so"}, {.folder = folder.Path("")}).status, 0);
  EXPECT_EQ(Wavechain({"run", SPEECH_48K, folder.Path("out.wav"), "--library",
                       folder.Path("copy.so"), "-f", "FIRNotch 200"})
                .status,
            0);
}

TEST(WavechainUsage, WhatIsNoFilterLibraryIsRefused) {
  const TempFolder folder;
  e2e::WriteFile(folder.Path("text.so"), "no library\n");
  for (const auto& [library, reason] : std::vector<std::pair<std::string, std::string>>{
           {folder.Path("missing.so"), "cannot open shared object file"},
           {folder.Path("text.so"), "cannot be loaded"},
           {folder.Path(""), "cannot be loaded"},
           {OTHER_LIBRARY, "this is no filter library, it has no entry point SetTrackI"}}) {
    for (const std::vector<std::string>& command :
         {std::vector<std::string>{"list"},
          {"info", "FIRNotch"},
          {"run", SPEECH_48K, folder.Path("out.wav"), "-f", "SineFilter"}}) {
      std::vector<std::string> arguments = command;
      arguments.insert(arguments.end(), {"--library", library});
      const Outcome run = Wavechain(arguments);
      EXPECT_EQ(run.status, 1);
      EXPECT_THAT(run.ErrorLines(), SizeIs(1));
      EXPECT_THAT(run.err, HasSubstr(library));
      EXPECT_THAT(run.err, HasSubstr(reason));
    }
  }
  EXPECT_THAT(e2e::FilesIn(folder.Path("")), testing::ElementsAre("text.so"));
}

TEST(WavechainUsage, AKindThatTheLibraryDoesNotMakeIsReported) {
  const TempFolder folder;
  const std::string out = folder.Path("out.wav");
  ExpectUsageError({"run", SPEECH_48K, out, "-q", "-f", "SineFilter", "--library", EMPTY_LIBRARY},
                   std::string("SineFilter is not in this library (") + EMPTY_LIBRARY + ")");
  EXPECT_THAT(Wavechain({"list", "--library", EMPTY_LIBRARY}).out,
              HasSubstr("adds a sine (not in this library)\n"));
  EXPECT_THAT(Wavechain({"info", "SineFilter", "--library", EMPTY_LIBRARY}).out,
              HasSubstr("not in this library\n"));
  const json info =
      json::parse(Wavechain({"info", "SineFilter", "--json", "--library", EMPTY_LIBRARY}).out);
  EXPECT_EQ(info["available"], false);
}

TEST(WavechainUsage, AFullStandardOutputIsAnErrorForListsToo) {
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"list"}, {"info", "FIRNotch"}, {"--help"}, {"--version"}}) {
    const Outcome run = Wavechain(arguments, {.outputFile = "/dev/full"});
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(run.err, "wavechain: standard output: cannot be written: No space left on device\n");
  }
}

}  // namespace
