// The program over a library that is not ours: what it calls and in which order, and that it stays
// sound whatever the filters do.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "e2e/support/program.h"
#include "e2e/support/sound.h"
#include "support/samples.h"
#include "support/temp_folder.h"

namespace {

using e2e::Outcome;
using support::SameBits;
using support::Samples;
using testing::ElementsAre;
using testing::HasSubstr;

class Stranger : public testing::Test {
 protected:
  void SetUp() override { e2e::WriteSound(Path("in.wav"), noise, 8000); }

  std::string Path(const std::string& name) const { return folder.Path(name); }

  Outcome Run(const std::vector<std::string>& filters, const std::vector<std::string>& more = {}) {
    std::vector<std::string> arguments = {"run",       Path("in.wav"),  Path("out.wav"),
                                          "--library", STRANGE_LIBRARY, "--force"};
    for (const std::string& filter : filters) {
      arguments.insert(arguments.end(), {"-f", filter});
    }
    arguments.insert(arguments.end(), more.begin(), more.end());
    return e2e::Wavechain(arguments, {.variables = {{"STRANGE_LOG", Path("log")}}});
  }

  std::vector<std::string> Calls() const {
    std::vector<std::string> calls;
    std::istringstream stream(e2e::ReadFile(Path("log")));
    for (std::string line; std::getline(stream, line);) {
      calls.push_back(line);
    }
    return calls;
  }

  e2e::Sound Written() const { return e2e::ReadSound(Path("out.wav")); }

  support::TempFolder folder;
  Samples noise = support::Noise(5000);
};

TEST_F(Stranger, FiltersAreSetUpPulledAndLetGoInTheOrderTheyRelyOn) {
  ASSERT_EQ(Run({"SineFilter 300 phase=90", "FIRFilter 3"}).status, 0);
  EXPECT_THAT(Calls(),
              ElementsAre("SineFilter.GetFilter", "SineFilter.factory released",
                          "SineFilter.Set_param_list 300 1 90", "SineFilter.Set_console_out",
                          "SineFilter.Set_src_list 1: 5000 samples, 0.125 ms, in.wav",
                          "SineFilter.GetDescriptor",  //
                          "FIRFilter.GetFilter", "FIRFilter.factory released",
                          "FIRFilter.Set_param_list 3", "FIRFilter.Set_console_out",
                          "FIRFilter.Set_src_list 1: 5000 samples, 0.125 ms, in.wav",
                          "FIRFilter.GetDescriptor",
                          // blocks of 4096; the first claim of the second counts as nothing
                          "FIRFilter.TransmitNow 4096", "FIRFilter.TransmitNow 4096",
                          "SineFilter.TransmitNow 4096", "FIRFilter.TransmitNow 4096",
                          "SineFilter.TransmitNow 4096",
                          // from the end of the chain up
                          "FIRFilter.Dispose", "SineFilter.Dispose", "SineFilter.last Release",
                          "FIRFilter.last Release"));
  EXPECT_TRUE(SameBits(Written().samples, noise));
}

TEST_F(Stranger, ParametersThatWereNotGivenAreNotHandedOver) {
  ASSERT_EQ(Run({"SineFilter", "FIRNotch 20"}).status, 0);
  EXPECT_THAT(Calls(), testing::IsSupersetOf({std::string("SineFilter.Set_param_list"),
                                              std::string("FIRNotch.Set_param_list 20")}));
}

TEST_F(Stranger, AQuietRunGivesNoConsole) {
  ASSERT_EQ(Run({"SineFilter"}, {"-q"}).status, 0);
  EXPECT_THAT(Calls(), testing::Not(testing::Contains("SineFilter.Set_console_out")));
}

TEST_F(Stranger, ShortDeliveriesLoseNothing) {
  ASSERT_EQ(Run({"SineFilter 1", "SineFilter", "SineFilter 1"}).status, 0);
  EXPECT_TRUE(SameBits(Written().samples, noise));
}

TEST_F(Stranger, ClaimsBeyondTheRequestCountAsTheRequest) {
  ASSERT_EQ(Run({"SineFilter 2", "SineFilter"}).status, 0);
  EXPECT_EQ(Written().samples.size(), noise.size());
}

TEST_F(Stranger, AFilterThatNeitherDeliversNorEndsIsNamed) {
  const Outcome run = Run({"FIRNotch 20", "SineFilter 4"}, {"-q"});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.err, "wavechain: filter 2 (SineFilter): delivers nothing and does not end\n");
  EXPECT_THAT(e2e::FilesIn(Path("")), ElementsAre("in.wav", "log"));
}

TEST_F(Stranger, AKindThatNeverEndsIsCutAtItsAnnouncedLength) {
  ASSERT_EQ(Run({"SetTrack", "SineFilter"}, {"--allow-missing"}).status, 0);
  EXPECT_EQ(Written().rate, 2000);
  EXPECT_TRUE(SameBits(Written().samples, support::Constant(5000, 0.25F)));
}

TEST_F(Stranger, DescriptorsThatMakeNoSenseAreRefused) {
  const Outcome none = Run({"SineFilter 5"}, {"-q"});
  EXPECT_EQ(none.status, 1);
  EXPECT_EQ(none.err, "wavechain: filter 1 (SineFilter): hands out no descriptor\n");
  const Outcome zero = Run({"FIRNotch 20", "SineFilter 6"}, {"-q"});
  EXPECT_EQ(zero.status, 1);
  EXPECT_EQ(zero.err, "wavechain: filter 2 (SineFilter): announces a sampling interval of 0 ms\n");
}

TEST_F(Stranger, ADescriptorOfTheLibrarysOwnIsRead) {
  ASSERT_EQ(Run({"FIRNotch 7", "SineFilter"}).status, 0);
  EXPECT_EQ(Written().rate, 4000);
  EXPECT_THAT(Calls(), testing::Contains("SineFilter.Set_src_list 1: 10 samples, 0.25 ms, in.wav"));
}

TEST_F(Stranger, IntegersAreScaledByTheFullScaleThatTheChainAnnounces) {
  ASSERT_EQ(Run({"SineFilter 8"}, {"--encoding", "pcm16"}).status, 0);
  const std::vector<int> integers = e2e::ReadIntegers(Path("out.wav"));
  ASSERT_EQ(integers.size(), noise.size());
  for (std::size_t i = 0; i < noise.size(); ++i) {
    ASSERT_EQ(integers[i] / 65536, static_cast<int>(std::nearbyint(noise[i] / 4.0 * 32768.0)));
  }
  // Floats keep their physical values.
  ASSERT_EQ(Run({"SineFilter 8"}).status, 0);
  EXPECT_TRUE(SameBits(Written().samples, noise));
  const Outcome none = Run({"SineFilter 9"}, {"-q", "--encoding", "pcm16"});
  EXPECT_EQ(none.status, 1);
  EXPECT_EQ(none.err,
            "wavechain: --encoding pcm16: the signal has no full scale to scale by (0); use "
            "float32\n");
}

}  // namespace
