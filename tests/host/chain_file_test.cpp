#include "host/chain_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "host/host_arguments.h"
#include "support/temp_folder.h"

namespace {

using testing::ElementsAre;
using wavechain::FilterCall;
using wavechain::ParseFilter;
using wavechain::ReadChainFile;

// The file's only filter; names of files in it are relative to `sub`.
FilterCall ReadOne(const support::TempFolder& folder, const std::string& sub,
                   const std::string& lines) {
  std::filesystem::create_directories(folder.Path(sub));
  const std::string path = folder.Write(sub + "/chain.toml", "[[filter]]\n" + lines);
  const std::vector<FilterCall> calls = ReadChainFile(path);
  EXPECT_EQ(calls.size(), 1U);
  return calls.front();
}

TEST(ReadChainFile, GivesTheCallsOfTheCommandLine) {
  const support::TempFolder folder;
  const FilterCall read =
      ReadOne(folder, "a", "kind = \"FIRNotch\"\nfrequency = 0.1\nhalf_length = 7\n");
  const FilterCall parsed = ParseFilter("FIRNotch frequency=0.1 half_length=7");
  EXPECT_EQ(read.kind, parsed.kind);
  EXPECT_EQ(read.values, parsed.values);
  EXPECT_EQ(read.handed, 2);
  EXPECT_EQ(read.Text(), parsed.Text());
}

TEST(ReadChainFile, KeepsEveryBitOfANumber) {
  const support::TempFolder folder;
  const FilterCall read = ReadOne(
      folder, "a", "kind = \"SineFilter\"\nfrequency = 0.30000000000000004\namplitude = -1e-300\n");
  EXPECT_THAT(read.values, ElementsAre(0.1 + 0.2, -1e-300, 0.0));
}

TEST(ReadChainFile, PutsFilesBehindItsFolder) {
  const support::TempFolder folder;
  const auto data = [&](const std::string& name) {
    return ReadOne(folder, "a", "kind = \"BeamPel\"\ndata = \"" + name + "\"\n")
        .hostValues.at("data");
  };
  EXPECT_EQ(data("x.xyd"), folder.Path("a") + "/x.xyd");
  EXPECT_EQ(data("../b/x.xyd"), folder.Path("a") + "/../b/x.xyd");
  EXPECT_EQ(data("/b/x.xyd"), "/b/x.xyd");
  EXPECT_EQ(data(""), "");
}

// What a file says of the chain that made it can be read again, from any folder.
TEST(ReadChainFile, SecondSignalsAreWrittenWithTheirWholePaths) {
  const support::TempFolder folder;
  for (const std::string sub : {"plain", "two words", "a|b", "it's"}) {
    const FilterCall read =
        ReadOne(folder, sub,
                "kind = \"SumSources\"\nchannel = 2\n"
                "with = \"'n.wav' | BeamPel data='p q.xyd' | EchoCancel with=/m.wav\"\n");
    EXPECT_EQ(read.second->path, folder.Path(sub) + "/n.wav");
    const FilterCall again = ParseFilter(read.Text());
    EXPECT_EQ(again.second->path, read.second->path) << read.Text();
    EXPECT_EQ(again.second->channel, 2);
    ASSERT_EQ(again.second->filters.size(), 2U);
    EXPECT_EQ(again.second->filters[0].hostValues.at("data"), folder.Path(sub) + "/p q.xyd");
    EXPECT_EQ(again.second->filters[1].second->path, "/m.wav");
    EXPECT_EQ(again.Text(), read.Text());
  }
}

}  // namespace
