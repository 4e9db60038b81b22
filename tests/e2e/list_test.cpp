// What the program tells of its filters and of the library that makes them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
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

TEST(WavechainList, HelpGoesToStandardOutputWithEveryFilterAndUnit) {
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

TEST(WavechainList, TheVersionIsThatOfProgramAndLibrary) {
  const Outcome run = Wavechain({"--version"});
  EXPECT_EQ(run.status, 0);
  const std::string file = std::filesystem::canonical(WAVEFILTERS_LIBRARY).string();
  const std::string version = file.substr(file.rfind(".so.") + 4);
  EXPECT_THAT(version, testing::MatchesRegex("1\\.[0-9]+\\.[0-9]+"));
  // Both are built from one source.
  EXPECT_EQ(run.out, "wavechain " + version + "\nlibrary   " + version + ", " + file + "\n");
}

TEST(WavechainList, HelpOnACommandOrAFilterIsThatOfItsOwn) {
  EXPECT_EQ(Wavechain({"help"}).out, Wavechain({"--help"}).out);
  EXPECT_EQ(Wavechain({"help", "check"}).out, Wavechain({"check", "--help"}).out);
  EXPECT_EQ(Wavechain({"help", "FIRNotch"}).out, Wavechain({"info", "FIRNotch"}).out);
  EXPECT_EQ(Wavechain({"help", "FIRNotch"}).status, 0);
}

TEST(WavechainList, NothingIsColoured) {
  // With a terminal, which is when programs colour; so there is nothing for NO_COLOR to turn off.
  for (const std::vector<std::string>& arguments : {std::vector<std::string>{"list"},
                                                    {"--help"},
                                                    {"info", "FIRNotch"},
                                                    {"lisst"},
                                                    {"check", SPEECH_48K, "-f", "FIRNotch 200"}}) {
    const Outcome run = e2e::WavechainInTerminal(arguments);
    EXPECT_NE(run.out, "");
    EXPECT_EQ(run.out.find('\x1b'), std::string::npos) << run.out;
  }
}

TEST(WavechainList, SpeaksTheSameInEveryLocale) {
  const support::TempFolder folder;
  std::filesystem::create_symlink(SPEECH_48K, folder.Path("t\xc3\xb6n.wav"));
  folder.Write("gl\xc3\xa4tten.toml", "[[filter]]\nkind = \"SineFilter\"\nphase = 0.5\n");
  const std::vector<std::vector<std::string>> asked = {
      {"check", "t\xc3\xb6n.wav", "-f", "FIRNotch 200 edge_weight=0.25", "--chain",
       "gl\xc3\xa4tten.toml"},
      {"run", "t\xc3\xb6n.wav", "-", "-q", "--format", "csv", "--chain", "gl\xc3\xa4tten.toml"},
      {"run", "kein t\xc3\xb6n.wav", "-", "-f", "SineFilter 0.5"},
      {"run", "t\xc3\xb6n.wav", "-", "-f", "SineFilter ph\xc3\xa4se=1"},
      {"info", "FIRNotch", "--json"},
      {"--generate", "man"}};
  for (const std::vector<std::string>& arguments : asked) {
    std::vector<Outcome> runs;
    for (const char* locale : {"C", "C.UTF-8", "de_DE.UTF-8", ""}) {
      runs.push_back(Wavechain(arguments, {.variables = {{"LC_ALL", locale}, {"LANG", locale}},
                                           .folder = folder.Path("")}));
    }
    for (const Outcome& run : runs) {
      EXPECT_EQ(run.status, runs.front().status);
      EXPECT_TRUE(run.out == runs.front().out) << arguments.front();
      EXPECT_EQ(run.err, runs.front().err);
      EXPECT_NE(run.out + run.err, "");
    }
  }
  EXPECT_EQ(Wavechain(asked[2], {.variables = {{"LC_ALL", "C"}}}).err,
            "wavechain: kein t\xc3\xb6n.wav: cannot be opened: No such file or directory\n");
}

TEST(WavechainList, ListNamesAllThirteen) {
  const Outcome list = Wavechain({"list"});
  EXPECT_EQ(list.status, 0);
  std::size_t lines = 0;
  for (const std::string& filter : Filters) {
    EXPECT_THAT("\n" + list.out, HasSubstr("\n" + filter + " "));
    ++lines;
  }
  EXPECT_EQ(static_cast<std::size_t>(std::count(list.out.begin(), list.out.end(), '\n')), lines);
}

TEST(WavechainList, ListAsJsonHoldsWhatInfoTells) {
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

TEST(WavechainList, InfoAsJsonTellsEveryParameter) {
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

TEST(WavechainList, InfoTellsParametersUnitsDefaultsAndFiles) {
  const Outcome notch = Wavechain({"info", "FIRNotch"});
  EXPECT_THAT(notch.out, StartsWith("FIRNotch: takes out a narrow band"));
  EXPECT_THAT(notch.out, HasSubstr("half_length  (samples, whole, 0 to 2048; default none)"));
  EXPECT_THAT(notch.out, HasSubstr("data files: none"));
  EXPECT_THAT(Wavechain({"info", "GlotSyn"}).out, HasSubstr("\n  .gpl  "));
  EXPECT_THAT(Wavechain({"info", "GlotSyn"}).out, HasSubstr("parameters: none"));
}

TEST(WavechainList, TheTableHoldsTheLibrarysParametersAndDefaults) {
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

TEST(WavechainList, AnotherLibraryMayBeNamed) {
  const TempFolder folder;
  EXPECT_EQ(Wavechain({"list", "--library", WAVEFILTERS_LIBRARY}).out, Wavechain({"list"}).out);
  e2e::WriteFile(folder.Path("copy.so"), e2e::ReadFile(WAVEFILTERS_LIBRARY));
  EXPECT_EQ(Wavechain({"list", "--library", "copy.so"}, {.folder = folder.Path("")}).status, 0);
  EXPECT_EQ(Wavechain({"run", SPEECH_48K, folder.Path("out.wav"), "--library",
                       folder.Path("copy.so"), "-f", "FIRNotch 200"})
                .status,
            0);
}

TEST(WavechainList, WhatIsNoFilterLibraryIsRefused) {
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

TEST(WavechainList, AKindThatTheLibraryDoesNotMakeIsReported) {
  const TempFolder folder;
  const std::string out = folder.Path("out.wav");
  const Outcome run =
      Wavechain({"run", SPEECH_48K, out, "-q", "-f", "SineFilter", "--library", EMPTY_LIBRARY});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err,
            std::string("wavechain: SineFilter is not in this library (") + EMPTY_LIBRARY + ")\n");
  EXPECT_THAT(Wavechain({"list", "--library", EMPTY_LIBRARY}).out,
              HasSubstr("adds a sine (not in this library)\n"));
  EXPECT_THAT(Wavechain({"info", "SineFilter", "--library", EMPTY_LIBRARY}).out,
              HasSubstr("not in this library\n"));
  const json info =
      json::parse(Wavechain({"info", "SineFilter", "--json", "--library", EMPTY_LIBRARY}).out);
  EXPECT_EQ(info["available"], false);
}

TEST(WavechainList, AFullStandardOutputIsAnErrorForListsToo) {
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"list"}, {"info", "FIRNotch"}, {"--help"}, {"--version"}}) {
    const Outcome run = Wavechain(arguments, {.outputFile = "/dev/full"});
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(run.err, "wavechain: standard output: cannot be written: No space left on device\n");
  }
}

}  // namespace
