// Chain files to fill in: for every kind of filter, complete, and read back as they stand.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
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
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::SizeIs;

std::string Skeleton(const std::vector<std::string>& kinds) {
  std::vector<std::string> arguments = {"skeleton"};
  arguments.insert(arguments.end(), kinds.begin(), kinds.end());
  const Outcome run = Wavechain(arguments);
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err, "");
  return run.out;
}

json Filters() { return json::parse(Wavechain({"list", "--json"}).out); }

// The text without line breaks: comments are broken where they are long.
std::string Joined(const std::string& text) {
  std::istringstream words(text);
  std::string joined;
  for (std::string word; words >> word;) {
    joined += word == "#" ? "" : word + " ";
  }
  return joined;
}

// The comment before the line "NAME =", active or not, as one line.
std::string CommentOf(const std::string& skeleton, const std::string& name) {
  std::istringstream lines(skeleton);
  std::string comment;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with(name + " = ") || line.starts_with("#" + name + " = ")) {
      return Joined(comment);
    }
    comment = line.starts_with("# ") ? comment + line + "\n" : "";
  }
  ADD_FAILURE() << "no line for " << name << " in\n" << skeleton;
  return "";
}

class SkeletonFile : public testing::Test {
 protected:
  // A recording with every data file beside it.
  SkeletonFile() {
    for (const char* name : {"take3.wav", "take3.xyd", "take3.iop", "pal.dat"}) {
      std::filesystem::create_symlink(std::string(EXAMPLE_DATA) + "/" + name, Path(name));
    }
    e2e::WriteSound(Path("noise.wav"), support::Noise(3000), 16000);
    folder.Write("take3.gpm", "10 0.5\n20 -0.25\n");
    folder.Write("take3.fla", "30 0.1 1 2\n");
    folder.Write("take3.gpl", "5 1 0.5 0.1 1\n12 0.5 0.5 0.1\n");
  }

  std::string Path(const std::string& name) const { return folder.Path(name); }

  Outcome Run(const std::vector<std::string>& chain) const {
    std::vector<std::string> arguments = {"run", "take3.wav", "-", "-q"};
    arguments.insert(arguments.end(), chain.begin(), chain.end());
    return Wavechain(arguments, {.folder = Path("")});
  }

  support::TempFolder folder;
};

// What must be filled in: what is said of it, the line as it stands, and how it is filled in.
struct Gap {
  std::string message;
  std::string line;
  std::string filled;
  std::string argument;
};

const std::map<std::string, Gap>& Gaps() {
  static const std::string second =
      "with is missing (the second signal: a recording, and filters that it goes through by "
      "choice); add with=\"FILE | FILTER | ...\"";
  static const Gap signal = {second, "#with = \"FILE | FILTER | ...\"", "with = \"noise.wav\"",
                             "with=noise.wav"};
  static const std::map<std::string, Gap> gaps = {
      {"FIRFilter",
       {"half_length is missing (samples, whole, 1 to 2048); add half_length=NUMBER",
        "#half_length = NUMBER", "half_length = 9", "half_length=9"}},
      {"FIRNotch",
       {"half_length is missing (samples, whole, 0 to 2048); add half_length=NUMBER",
        "#half_length = NUMBER", "half_length = 9", "half_length=9"}},
      {"SumSources", signal},
      {"EchoCancel", signal},
  };
  return gaps;
}

TEST_F(SkeletonFile, OfEveryKindRunsAsTheFilterItself) {
  ASSERT_THAT(Filters(), SizeIs(13));
  for (const json& filter : Filters()) {
    const std::string kind = filter["name"];
    std::string skeleton = Skeleton({kind});
    std::string equivalent = kind;
    folder.Write("chain.toml", skeleton);
    if (const auto gap = Gaps().find(kind); gap != Gaps().end()) {
      const Outcome run = Run({"--chain", "chain.toml"});
      EXPECT_EQ(run.status, 1) << kind;
      EXPECT_THAT(run.err, ContainsRegex("^wavechain: chain.toml:[0-9]+:1: "));
      EXPECT_THAT(run.err, HasSubstr(": " + gap->second.message + "\n"));
      const std::size_t at = skeleton.find("\n" + gap->second.line + "\n");
      ASSERT_NE(at, std::string::npos) << skeleton;
      folder.Write("chain.toml",
                   skeleton.replace(at + 1, gap->second.line.size(), gap->second.filled));
      equivalent += " " + gap->second.argument;
    }
    const Outcome saved = Run({"--chain", "chain.toml"});
    EXPECT_EQ(saved.status, 0) << saved.err;
    EXPECT_TRUE(saved.out == Run({"-f", equivalent}).out) << kind;
  }
}

TEST_F(SkeletonFile, TellsOfEveryParameterItsMeaningUnitRangeAndDefault) {
  for (const json& filter : Filters()) {
    const std::string skeleton = Skeleton({filter["name"]});
    EXPECT_THAT(Joined(skeleton), HasSubstr(filter["purpose"].get<std::string>()));
    for (const json& parameter : filter["parameters"]) {
      const std::string comment = CommentOf(skeleton, parameter["name"]);
      EXPECT_THAT(comment, HasSubstr(Joined(parameter["help"])));
      EXPECT_THAT(comment, HasSubstr(parameter["unit"].get<std::string>()));
      EXPECT_THAT(comment, HasSubstr(parameter["whole"].get<bool>() ? "whole, " : "real, "));
      EXPECT_THAT(comment,
                  HasSubstr(parameter["required"].get<bool>()
                                ? "required, there is no default"
                                : "default " + parameter["default_text"].get<std::string>()));
      for (const auto& [name, value] : parameter["values"].items()) {
        EXPECT_THAT(comment, HasSubstr("=" + name));
      }
    }
    for (const json& own : filter["host_arguments"]) {
      EXPECT_THAT(CommentOf(skeleton, own["name"]), HasSubstr(Joined(own["help"])));
    }
    for (const json& file : filter["data_files"]) {
      EXPECT_THAT(Joined(skeleton), HasSubstr("reads " + file["name"].get<std::string>() + ": "));
    }
  }
  EXPECT_THAT(CommentOf(Skeleton({"FIRNotch"}), "frequency"),
              HasSubstr("(Hz, real, 0 to half the sampling rate; default 2500)"));
}

TEST_F(SkeletonFile, HoldsTheFiltersInTheOrderOfTheirNames) {
  folder.Write("chain.toml", Skeleton({"SineFilter", "SquareFilter", "SineFilter"}));
  const Outcome run = Run({"--chain", "chain.toml"});
  EXPECT_TRUE(run.out == Run({"-f", "SineFilter", "-f", "SquareFilter", "-f", "SineFilter"}).out);
  EXPECT_FALSE(run.out == Run({"-f", "SineFilter", "-f", "SineFilter", "-f", "SquareFilter"}).out);
}

TEST_F(SkeletonFile, TakesARateWithNothingElseToTakeOut) {
  std::string skeleton = Skeleton({"ResampleBlackman"});
  const std::string line = "#rate = HZ";
  ASSERT_NE(skeleton.find(line), std::string::npos);
  folder.Write("chain.toml", skeleton.replace(skeleton.find(line), line.size(), "rate = 8000"));
  EXPECT_TRUE(Run({"--chain", "chain.toml"}).out == Run({"-f", "ResampleBlackman rate=8000"}).out);
}

TEST_F(SkeletonFile, LinesFitAnEditor) {
  std::istringstream lines(Skeleton({"ResampleBlackman", "BeamData", "SumSources"}));
  for (std::string line; std::getline(lines, line);) {
    EXPECT_LE(line.size(), 100U) << line;
  }
}

TEST(WavechainSkeleton, NeedsNamesOfFilters) {
  EXPECT_EQ(Wavechain({"skeleton"}).err,
            "wavechain: FILTER is required; see wavechain skeleton --help\n");
  const Outcome run = Wavechain({"skeleton", "SineFilter", "FIRNotsch"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "wavechain: there is no filter 'FIRNotsch'; did you mean FIRNotch?\n");
  EXPECT_EQ(run.out, "");
}

}  // namespace
