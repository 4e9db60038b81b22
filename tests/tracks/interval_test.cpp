#include <gtest/gtest.h>

#include <cmath>

#include "reference/beam_data.h"
#include "reference/beam_pel.h"
#include "support/filter.h"
#include "support/temp_folder.h"
#include "tracks/pellet_text.h"
#include "tracks/twin.h"

namespace tracks {
namespace {

// What a descriptor may say, wrongly, of the time between samples: every run ends and stays inside
// its buffers.
const std::vector<double> OddIntervals{0.0,    -0.0,     1e-300,    -1e-300,      5e-324, 1e300,
                                       -1e300, HUGE_VAL, -HUGE_VAL, std::nan(""), -0.1,   -1.0,
                                       -100.0, 1e-9,     1.6e-9,    3e-6,         0.0005, 0.001,
                                       0.0067, 0.0068,   0.01,      6.866,        7.0,    100.0};

TEST(Interval, EndsThePelletReaderWhateverItIs) {
  const std::string text = Column(6, std::vector<double>(300, 1000.0));
  for (const double interval_ms : OddIntervals) {
    SCOPED_TRACE(interval_ms);
    Twin<reference::BeamPel> pellet(support::BeamPel);
    pellet.Supply({{"take.xyd", text}});
    pellet.Attach(Signal(30000, interval_ms));
    EXPECT_EQ(pellet.PullAll({1000, 8192, 3}).size(), 30000U);
    pellet.Attach(Signal(9000, interval_ms));
    EXPECT_EQ(pellet.PullAll().size(), 9000U);
  }
}

TEST(Interval, EndsTheKinematicsReaderWhateverItIs) {
  const support::TempFolder folder;
  folder.Write("x.wavpal.dat", "0 0\n1 1\n");
  const std::string stem = folder.Path("x");
  std::mt19937 random(9);
  const std::string text = RandomRecords(random, 300);
  for (const double interval_ms : OddIntervals) {
    SCOPED_TRACE(interval_ms);
    Twin<reference::BeamData> kinematics(support::BeamData);
    kinematics.Set_param_list({7, 2, 3});
    kinematics.Supply({{stem + ".xyd", text}});
    kinematics.Attach(Signal(30000, interval_ms, stem + ".wav"));
    EXPECT_EQ(kinematics.PullAll({1000, 8192, 3}).size(), 30000U);
  }
}

TEST(Interval, LetsTheInputThroughWhereASpanIsCutAtTheBuffersEnd) {
  // One frame lasts 6866 samples: the first Apply sees 5096 of them, and the rest of the record's
  // span, unknown to it, keeps the input when it comes.
  Twin<reference::BeamPel> pellet(support::BeamPel);
  pellet.Supply({{"take.xyd", Column(6, {1000, 1000, 1000, 1000})}});
  const SourceScript script = Signal(20000, 0.001);
  pellet.Attach(script);
  const Samples samples = pellet.PullAll({1000});
  // The sum of the first spans is just short of 3.433 ms.
  EXPECT_EQ(support::Slice(samples, 0, 3432), support::Constant(3432, 1.0F));
  EXPECT_EQ(support::Slice(samples, 3432, 1664), support::Constant(1664, 2.0F));
  EXPECT_EQ(support::Slice(samples, 5096, 5203), support::Slice(script.samples, 5096, 5203));
}

TEST(Interval, RendersTheLastOfTheRecordsThatShareASample) {
  // Ten records fall on one sample.
  Twin<reference::BeamPel> pellet(support::BeamPel);
  pellet.Supply({{"take.xyd", Column(6, std::vector<double>(30000, 1.0))}});
  pellet.Attach(Signal(3000, 68.66));
  const Samples samples = pellet.PullAll();
  EXPECT_GT(samples[1500], samples[1499]);
  EXPECT_EQ(support::Slice(samples, 1977, 1023), support::Constant(1023));
}

}  // namespace
}  // namespace tracks
