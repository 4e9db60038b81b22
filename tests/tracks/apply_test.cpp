#include <gtest/gtest.h>

#include <limits>

#include "reference/beam_data.h"
#include "reference/beam_pel.h"
#include "support/filter.h"
#include "support/guarded_buffer.h"
#include "support/temp_folder.h"
#include "tracks/pellet_text.h"
#include "tracks/twin.h"

// Slots 15 and 16, called as a host may call them: with any count and any start.
namespace tracks {
namespace {

constexpr int Lowest = std::numeric_limits<int>::min();
constexpr int Highest = std::numeric_limits<int>::max();

template <class Model>
void CallApply(Twin<Model>& twin, const std::vector<std::pair<int, int>>& calls) {
  for (const auto& [count, start] : calls) {
    twin.Apply(support::Noise(std::clamp(count, 0, 8192)), count, start);
  }
}

TEST(Apply, KeepsAReserveOf4096) {
  for (const support::Kind& kind : {support::BeamPel, support::BeamData}) {
    support::Filter filter = support::MakeFilter(kind);
    EXPECT_EQ(filter.Call<TrackGetMem>(15), 4096);
  }
}

TEST(Apply, RendersZerosOnAFilterThatWasNeverAttached) {
  for (const support::Kind& kind : {support::BeamPel, support::BeamData}) {
    for (const int start : {0, 1, 100000, -100000, Lowest, Highest}) {
      support::Filter filter = support::MakeFilter(kind);
      support::GuardedBuffer buffer(3000);
      filter.Call<TrackApply>(16, buffer.data(), 3000, start);
      buffer.CheckAfter(3000);
      // The end of the span is 0: what lies before it is left alone.
      if (start >= 0) {
        EXPECT_EQ(buffer.First(3000), support::Constant(3000)) << start;
      }
    }
  }
}

const std::vector<std::pair<int, int>> OddCalls{
    {0, 0},        {-1, 0},          {Lowest, 0},       {1, 0},          {34, 0},
    {1024, 0},     {1025, 0},        {1058, 0},         {1059, 0},       {0, Lowest},
    {-1, Highest}, {Lowest, Lowest}, {Lowest, Highest}, {8192, -100},    {8192, 50},
    {2000, -3000}, {8192, 3000},     {8192, 100},       {100, 9000},     {8192, 20000},
    {8192, 20001}, {5000, Lowest},   {8192, 40000},     {8192, Highest}, {8192, Highest - 8192},
    {8192, 0},     {8192, 123456},   {0, Highest}};

TEST(Apply, TakesAnyCountAndStartOnThePelletReader) {
  for (std::size_t first = 0; first < OddCalls.size(); ++first) {
    Twin<reference::BeamPel> pellet(support::BeamPel);
    pellet.Supply({{"take.xyd", Column(6, std::vector<double>(900, 1000.0))}});
    pellet.Attach(Signal(10));
    std::vector<std::pair<int, int>> calls(OddCalls.begin() + static_cast<std::ptrdiff_t>(first),
                                           OddCalls.end());
    CallApply(pellet, calls);
  }
}

TEST(Apply, TakesAnyCountAndStartOnTheKinematicsReader) {
  const support::TempFolder folder;
  folder.Write("x.wavpal.dat", "0 0\n1 1\n");
  const std::string stem = folder.Path("x");
  std::mt19937 random(5);
  const std::string text = RandomRecords(random, 900);
  for (std::size_t first = 0; first < OddCalls.size(); ++first) {
    Twin<reference::BeamData> kinematics(support::BeamData);
    kinematics.Set_param_list({1.0 + static_cast<double>(first % 8), 1, 2});
    kinematics.Supply({{stem + ".xyd", text}});
    kinematics.Attach(Signal(10, 0.1, stem + ".wav"));
    std::vector<std::pair<int, int>> calls(OddCalls.begin() + static_cast<std::ptrdiff_t>(first),
                                           OddCalls.end());
    CallApply(kinematics, calls);
  }
}

TEST(Apply, CatchesUpWithALateStart) {
  Twin<reference::BeamPel> pellet(support::BeamPel);
  pellet.Supply({{"take.xyd", Column(6, std::vector<double>(900, 1000.0))}});
  pellet.Attach(Signal(10));
  // Records 1 to 73 end at or before sample 4977; they add to the sum without a sample of theirs.
  const Samples samples = pellet.Apply(support::Noise(2000), 2000, 4980);
  EXPECT_EQ(samples[0], 74.0F);
  EXPECT_EQ(support::Slice(samples, 1100, 900), support::Constant(900));
}

TEST(Apply, LeavesWhatLiesBeforeTheSpanAlone) {
  Twin<reference::BeamPel> pellet(support::BeamPel);
  pellet.Supply({{"take.xyd", Column(6, std::vector<double>(900, 1000.0))}});
  pellet.Attach(Signal(10));
  const Samples input = support::Noise(2000);
  const Samples samples = pellet.Apply(input, 2000, -100);
  EXPECT_EQ(support::Slice(samples, 0, 66), support::Slice(input, 0, 66));
  EXPECT_EQ(samples[66], 1.0F) << "the first span starts at sample -34 here";
  EXPECT_EQ(samples[133], 1.0F);
  EXPECT_EQ(samples[134], 2.0F);
}

}  // namespace
}  // namespace tracks
