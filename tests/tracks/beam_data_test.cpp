#include "reference/beam_data.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>

#include "support/filter.h"
#include "support/temp_folder.h"
#include "tracks/pellet_text.h"
#include "tracks/twin.h"

namespace tracks {
namespace {

using support::Constant;
using support::Slice;
using testing::ElementsAre;

using Record = std::vector<double>;

// A record of 16 numbers, 0 but for those given, by their number from 1 on; the last one counts.
Record With(const std::vector<std::pair<int, double>>& numbers) {
  Record record(16, 0.0);
  for (const auto& [column, value] : numbers) record[static_cast<std::size_t>(column - 1)] = value;
  return record;
}

// A kinematics reader beside its model, in a folder with a short contour.
struct Kinematics : Twin<reference::BeamData> {
  explicit Kinematics(const std::vector<double>& params)
      : Twin<reference::BeamData>(support::BeamData), path(folder.Path("x.wav")) {
    folder.Write("x.wavpal.dat", "0 0\n1 1\n");
    Set_param_list(params);
  }

  void AttachTo(const std::string& text, int count = 4000) {
    Supply({{folder.Path("x.xyd"), text}});
    Attach(Signal(count, 0.1, path));
  }

  support::TempFolder folder;
  std::string path;
};

// The value of each record: the sample in the middle of its span.
std::vector<float> Values(const Samples& samples, std::size_t records) {
  std::vector<float> values;
  for (std::size_t k = 0; k < records; ++k) {
    values.push_back(Slice(samples, static_cast<int>(68.66 * static_cast<double>(k)) + 5, 1)[0]);
  }
  return values;
}

std::vector<float> Measure(const std::vector<double>& params, const std::vector<Record>& records) {
  Kinematics kinematics(params);
  kinematics.AttachTo(Lines(records));
  return Values(kinematics.PullAll(), records.size());
}

float Single(double value) { return static_cast<float>(value); }

TEST(BeamData, HoldsEachRecordOverItsOwnSpan) {
  Kinematics kinematics({1});
  kinematics.AttachTo(Lines(
      {With({{7, 3000}, {8, 4000}}), With({{7, 1000}, {5, 1000}}), With({{8, 1000}, {7, 9000}})}));
  const Samples samples = kinematics.PullAll();
  EXPECT_EQ(Slice(samples, 0, 34), Constant(34, 5.0F));
  EXPECT_EQ(Slice(samples, 34, 68), Constant(68, 5.0F));
  EXPECT_EQ(Slice(samples, 102, 69), Constant(69, 13.0F));
  EXPECT_EQ(Slice(samples, 171, 3829), Constant(3829));
}

TEST(BeamData, RendersNothingInOtherModesButReadsOn) {
  for (const std::vector<double>& params : std::vector<std::vector<double>>{
           {}, {0}, {9}, {-1}, {0.99}, {1e300}, {std::nan("")}, {-HUGE_VAL}, {HUGE_VAL, 1, 2}}) {
    Kinematics kinematics(params);
    kinematics.AttachTo(Lines(std::vector<Record>(10, With({{5, 1}, {6, 2}, {7, 3}}))));
    EXPECT_EQ(kinematics.PullAll(), Constant(4000));
  }
  // The calls are those of any mode: 16 numbers and a line for each record.
  Kinematics kinematics({});
  kinematics.AttachTo(Lines(std::vector<Record>(3, With({}))));
  kinematics.Pull(4000);
  EXPECT_EQ(std::count(kinematics.LastCalls().begin(), kinematics.LastCalls().end(),
                       "stream0.GetDouble()"),
            3 * 16);
  EXPECT_EQ(
      std::count(kinematics.LastCalls().begin(), kinematics.LastCalls().end(), "stream0.GetLine()"),
      3);
}

TEST(BeamData, TruncatesItsParameters) {
  EXPECT_THAT(Measure({1.9}, {With({{7, 3000}, {8, 4000}})}), ElementsAre(5.0F));
  EXPECT_THAT(Measure({7.5, 3.9, 4.1}, {With({{7, 3000}, {8, 4000}})}), ElementsAre(5.0F));
  EXPECT_THAT(Measure({7, 0.9, 4}, {With({{7, 3000}, {8, 4000}})}), ElementsAre(0.0F));
}

TEST(BeamData, ClearsTheParametersThatAreNotGiven) {
  const std::vector<Record> records(2, With({{7, 3000}, {8, 4000}}));
  for (const int given : {-1, 0, 1, 2, 3}) {
    Kinematics kinematics({7, 3, 4});
    std::vector<double> values{7, 3, 4};
    const std::vector<double> model(values.begin(), values.begin() + std::max(given, 0));
    kinematics.Product().Slots().Set_param_list(kinematics.Product().Object(), values.data(),
                                                given);
    kinematics.Reference().Set_param_list(model);
    kinematics.AttachTo(Lines(records));
    EXPECT_EQ(Values(kinematics.PullAll(), 2)[0], given == 3 ? 5.0F : 0.0F) << given;
  }
  Kinematics kept({1, 5, 5});
  kept.Product().Slots().Set_param_list(kept.Product().Object(), nullptr, 0);
  kept.Reference().Set_param_list({});
  kept.AttachTo(Lines(records));
  EXPECT_THAT(Values(kept.PullAll(), 2), ElementsAre(5.0F, 10.0F)) << "the mode stays";
}

TEST(BeamData, ModeOneIsTheDistanceOfPelletsThreeAndFour) {
  EXPECT_THAT(Measure({1}, {With({{5, 1000}, {6, -2000}, {7, 4000}, {8, 2000}}),
                            With({{1, 9}, {3, 9}, {9, 9}, {7, 5000}})}),
              ElementsAre(5.0F, Single(std::sqrt(8000.0 * 8000.0 + 4000.0 * 4000.0) / 1000)));
  for (const int column : {5, 6, 7, 8}) {
    EXPECT_THAT(Measure({1}, {With({{7, 3000}, {column, 1000000}})}), ElementsAre(0.0F)) << column;
    EXPECT_NE(Measure({1}, {With({{column, 999999}})})[0], 0.0F) << column;
  }
  for (const int column : {1, 2, 3, 4, 9, 10, 11, 16}) {
    EXPECT_THAT(Measure({1}, {With({{7, 3000}, {column, 1000000}})}),
                ElementsAre(column == 7 ? 0.0F : 3.0F));
  }
}

TEST(BeamData, ModeTwoIsTheSignedBendAtPelletFour) {
  // Straight on, a quarter turn either way, back again, half a quarter turn.
  const auto bend = [](double x, double y) {
    return Measure({2}, {With({{5, 0}, {6, 0}, {7, 2000}, {8, 0}, {9, 2000 + x}, {10, y}})})[0];
  };
  EXPECT_EQ(bend(1000, 0), 0.0F);
  EXPECT_EQ(bend(0, 1000), 2.0F);
  EXPECT_EQ(bend(0, -1000), -2.0F);
  EXPECT_EQ(bend(-1000, 0), Single(std::sin(std::atan2(0.0, -1000.0)) * 2000 / 1000));
  EXPECT_EQ(bend(1000, 1000), Single(std::sin(std::atan2(1000.0, 1000.0)) * 2000 / 1000));
  const double turned = std::atan2(-700.0, -900.0) - std::atan2(500.0, -300.0);
  EXPECT_THAT(
      Measure({2}, {With({{5, 100}, {6, 200}, {7, -200}, {8, 700}, {9, -1100}})}),
      ElementsAre(Single(std::sin(turned) * std::sqrt(300.0 * 300.0 + 500.0 * 500.0) / 1000)));
  for (const int column : {5, 6, 7, 8, 9, 10}) {
    EXPECT_THAT(Measure({2}, {With({{7, 30}, {10, 70}, {column, 1000000}})}), ElementsAre(0.0F))
        << column;
  }
  EXPECT_NE(Measure({2}, {With({{7, 30}, {10, 70}, {11, 1000000}, {4, 1000000}})})[0], 0.0F);
}

TEST(BeamData, ModeThreeIsTheVelocityOfTheSixthNumber) {
  EXPECT_THAT(Measure({3}, {With({{6, 100}}), With({}), With({})}), ElementsAre(0.0F, 0.0F, 0.0F));
  EXPECT_THAT(Measure({3}, {With({}), With({{6, 6866}}), With({}), With({{6, -6866}})}),
              ElementsAre(0.0F, 1000.0F, 0.0F, -1000.0F));
  // A missing value silences its own record and the next.
  EXPECT_THAT(Measure({3}, {With({}), With({{6, 6866}}), With({{6, 1000000}}),
                            With({{6, -1000000}}), With({{6, 6866}}), With({{5, 1000000}})}),
              ElementsAre(0.0F, 1000.0F, 0.0F, 0.0F, 1000.0F, 0.0F));
}

TEST(BeamData, ModeFourIsTheAccelerationOfTheSixthNumber) {
  const double step = 100.0 / 6.866;
  EXPECT_THAT(Measure({4}, {With({{6, 50}}), With({{6, 100}}), With({{6, 200}}), With({{6, 200}}),
                            With({{6, -100}})}),
              ElementsAre(0.0F, 0.0F, Single(1000 * (200.0 / 6.866 - step)), 0.0F,
                          Single(1000 * (-100.0 / 6.866 - 200.0 / 6.866))));
  EXPECT_THAT(Measure({4}, {With({}), With({}), With({{6, 6866}}), With({{6, 1000000}}),
                            With({{6, -1000000}}), With({{6, 6866}}), With({{6, 6866 * 3}})}),
              ElementsAre(0.0F, 0.0F, 1000000.0F, 0.0F, 0.0F, 0.0F, 2000000.0F));
}

TEST(BeamData, ModeFiveIsTheSpeedOfPelletThreeFromTheOrigin) {
  EXPECT_THAT(Measure({5}, {With({{5, 3000}, {6, 4000}}), With({{5, 3000}, {6, 4000}}), With({}),
                            With({{5, -6866}})}),
              ElementsAre(Single(5 / 6.866), Single(5 / 6.866), 0.0F, Single(6.866 / 6.866)));
  // A missing record leaves the last position, and the next measures from there.
  for (const int column : {5, 6}) {
    EXPECT_THAT(
        Measure({5}, {With({}), With({{column, 1000000}}), With({{column, 6866 - 1000000}})}),
        ElementsAre(0.0F, 0.0F, Single(6866 / 1000.0 / 6.866)))
        << column;
  }
}

TEST(BeamData, ModeSixIsTheChangeOfThatSpeed) {
  const double first = 1000 * 5.0 / 6.866;
  const double second = 1000 * 10.0 / 6.866;
  EXPECT_THAT(Measure({6}, {With({{5, 3000}, {6, 4000}}), With({{5, 6000}, {6, 8000}}),
                            With({{6, 1000000}}), With({{6, -1000000}})}),
              ElementsAre(Single(first / 6.866), Single((second - first) / 6.866), 0.0F,
                          Single((0 - second) / 6.866)));
}

TEST(BeamData, ModeSevenIsTheDistanceOfAnyTwoPellets) {
  Record record(16);
  for (std::size_t i = 0; i < 16; ++i) record[i] = static_cast<double>((i * i * 37) % 101) * 10;
  for (int a = 1; a <= 8; ++a) {
    for (int b = 1; b <= 8; ++b) {
      const auto at = [&](int k) { return record[static_cast<std::size_t>(k)]; };
      const double x = at(2 * b - 2) - at(2 * a - 2);
      const double y = at(2 * b - 1) - at(2 * a - 1);
      EXPECT_THAT(Measure({7, 1.0 * a, 1.0 * b}, {record}),
                  ElementsAre(Single(std::sqrt(x * x + y * y) / 1000)))
          << a << " " << b;
    }
  }
}

TEST(BeamData, ModeSevenRendersNothingForPelletsThatDoNotExist) {
  const std::vector<Record> records(3, With({{1, 100}, {2, 200}, {15, 700}, {16, 900}}));
  for (const double other : {0.0, -1.0, -3.0, 9.0, 10.0, 100.0, 1e9, 2147483647.0, 1e300, -1e300}) {
    EXPECT_THAT(Measure({7, other, 1}, records), ElementsAre(0.0F, 0.0F, 0.0F)) << other;
    EXPECT_THAT(Measure({7, 1, other}, records), ElementsAre(0.0F, 0.0F, 0.0F)) << other;
    EXPECT_THAT(Measure({7, other, other}, records), ElementsAre(0.0F, 0.0F, 0.0F)) << other;
  }
}

TEST(BeamData, ModeSevenChecksThePelletsOfTheRecordBefore) {
  // At first it checks c1 alone: pellets 3 and 4 may be missing themselves...
  const float missing = Single(std::sqrt(1000000.0 * 1000000.0) / 1000);
  EXPECT_THAT(Measure({7, 3, 4}, {With({{5, 1000000}}), With({})}), ElementsAre(missing, 0.0F));
  // ...and without c1 the indices are not even stored.
  EXPECT_THAT(Measure({7, 3, 4}, {With({{1, 1000000}, {7, 3000}}), With({}), With({{1, -1000000}}),
                                  With({{5, 1000000}}), With({{5, -1000000}, {1, 1000000}})}),
              ElementsAre(0.0F, 0.0F, 3.0F, 0.0F, 3.0F));
  // Each of the four is checked.
  for (const int column : {5, 6, 15, 16}) {
    EXPECT_THAT(Measure({7, 3, 8}, {With({{1, 77}}), With({{column, 1000000}})}),
                ElementsAre(0.0F, 0.0F))
        << column;
  }
}

TEST(BeamData, ModeSevenTakesAChangeOfPelletsIntoItsCheckOneRecordLate) {
  Kinematics kinematics({7, 1, 2});
  std::vector<Record> records(200, With({}));
  records[0] = With({{3, 3000}, {5, 1000000}, {6, 10}, {7, 999}});
  kinematics.AttachTo(Lines(records), 9000);
  const Samples before = kinematics.Pull(1000);
  EXPECT_EQ(before[500], 3.0F);
  kinematics.Set_param_list({7, 3, 4});
  const Samples after = kinematics.PullAll();
  // One record measures the new pellets, missing as they are; the check then finds it out.
  const auto late = std::find_if(after.begin(), after.end(), [](float v) { return v > 100.0F; });
  ASSERT_NE(late, after.end());
  EXPECT_TRUE(std::all_of(late + 70, after.end(), [](float v) { return v == 0.0F; }));
}

TEST(BeamData, ModeSevenForgetsPelletsThatDoNotExist) {
  Kinematics kinematics({7, 9, 10});
  kinematics.AttachTo(Lines(std::vector<Record>(200, With({{7, 1000}}))), 9000);
  EXPECT_EQ(kinematics.Pull(1000), Constant(1000));
  kinematics.Set_param_list({7, 3, 4});
  EXPECT_GT(kinematics.PullAll()[5000], 0.0F);
}

TEST(BeamData, KeepsItsHistoryOverAnAttachment) {
  const std::string steps = Lines({With({{5, 500}, {6, 6866}}), With({{6, 6866}}),
                                   With({{6, 6866}}), With({{5, 700}, {6, 6866}})});
  for (const double mode : {3.0, 4.0, 5.0, 6.0, 7.0}) {
    Kinematics kinematics({mode, 3, 4});
    kinematics.AttachTo(steps);
    const Samples first = kinematics.PullAll();
    kinematics.Attach(Signal(4000, 0.1, kinematics.path));
    const Samples second = kinematics.PullAll();
    if (mode == 3.0) {
      EXPECT_THAT(Values(first, 3), ElementsAre(0.0F, 1000.0F, 1000.0F));
      EXPECT_THAT(Values(second, 3), ElementsAre(-3000.0F, 1000.0F, 1000.0F))
          << "from the last record before";
    } else if (mode == 4.0) {
      EXPECT_THAT(Values(second, 2), ElementsAre(-4000000.0F, 4000000.0F));
    } else if (mode < 7.0) {
      EXPECT_NE(first[5], second[5]);
    }
  }
}

TEST(BeamData, KeepsTheHistoryOfEveryRecordInEveryMode) {
  // The mode changes in mid-stream: velocities continue from records that another mode read.
  Kinematics kinematics({0});
  std::vector<Record> records(400, With({{5, 100}, {6, 6866}, {7, 50}}));
  kinematics.AttachTo(Lines(records), 20000);
  for (const double mode : {3.0, 4.0, 1.0, 5.0, 6.0, 7.0, 2.0, 3.0, 8.0}) {
    kinematics.Set_param_list({mode, 3, 4});
    kinematics.Pull(1900);
  }
  kinematics.PullAll();
}

TEST(BeamData, EndsTheDataAtALineThatIsTooShort) {
  const std::string good = Lines({With({{7, 1000}})});
  for (const std::string& line :
       {std::string("\n"), std::string("1 2 3 4 5 6 7 8 9 10 11 12 13 14 15\n"),
        std::string("1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 x\n"), std::string("   \r\n"),
        std::string("x 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16\n"), std::string("1\n")}) {
    Kinematics kinematics({1});
    kinematics.AttachTo(good + good + line + good + good);
    const Samples samples = kinematics.PullAll();
    EXPECT_THAT(Values(samples, 4), ElementsAre(1.0F, 2.0F, 0.0F, 0.0F)) << line;
  }
}

TEST(BeamData, DropsThePartOfARecordThatItCouldRead) {
  // The broken line's numbers show in neither the sums nor the history of the next attachment.
  Kinematics kinematics({3});
  kinematics.AttachTo(Lines({With({}), With({{6, 6866}})}) + "1 1 1 1 1 500000 1 1\n");
  EXPECT_THAT(Values(kinematics.PullAll(), 3), ElementsAre(0.0F, 1000.0F, 0.0F));
  kinematics.Attach(Signal(4000, 0.1, kinematics.path));
  EXPECT_THAT(Values(kinematics.PullAll(), 2), ElementsAre(-1000.0F, 1000.0F));
}

TEST(BeamData, ReadsEveryLineThatHoldsSixteenNumbers) {
  Kinematics kinematics({1});
  kinematics.AttachTo(
      "0 0 0 0 0 0 +1e3 0 0 0 0 0 0 0 0 0 17 18 words\r\n"
      "\t0 0 0 0 0 0 1000. 0 0 0 0 0 0 0 0 0x\n"
      "0 0 0 0 0 0 .5e3 0 0 0 0 0 0 0 0 -0");
  EXPECT_THAT(Values(kinematics.PullAll(), 4), ElementsAre(1.0F, 2.0F, 2.5F, 0.0F));
}

TEST(BeamData, IsSilentWithoutPellets) {
  Kinematics empty({1});
  empty.AttachTo("");
  EXPECT_EQ(empty.PullAll(), Constant(4000));
  Kinematics missing({1});
  missing.Supply({});
  missing.Attach(Signal(4000, 0.1, missing.path));
  EXPECT_EQ(missing.PullAll(), Constant(4000));
}

TEST(BeamData, ReadsNoRecordInTheLast1024Samples) {
  const std::string text = Lines(std::vector<Record>(200, With({{7, 1000}})));
  for (const auto& [count, records] : std::vector<std::pair<int, std::size_t>>{
           {1, 0}, {1024, 0}, {1025, 1}, {1024 + 34, 1}, {1024 + 35, 2}, {1024 + 240, 4}}) {
    Kinematics kinematics({1});
    kinematics.AttachTo(text, count);
    const Samples samples = kinematics.PullAll();
    float last = 0.0F;
    for (const float sample : samples) last = std::max(last, sample);
    EXPECT_EQ(last, static_cast<float>(records)) << count;
  }
}

TEST(BeamData, ReadsOnFromAClosedStreamToItsEnd) {
  // Attached again without a contour it still takes its data for open; the stream knows better.
  Kinematics kinematics({1});
  kinematics.AttachTo(Lines(std::vector<Record>(300, With({{7, 1000}}))), 9000);
  kinematics.Pull(1000);
  const SourceScript second = Signal(20000, 0.1, kinematics.folder.Path("other.wav"));
  kinematics.Attach(second);
  const Samples samples = kinematics.PullAll();
  EXPECT_EQ(Slice(samples, 0, 4000), Slice(second.samples, 0, 4000))
      << "the old span's end is kept, and what lies before it is left alone";
  EXPECT_EQ(Slice(samples, 8000, 12000), Constant(12000));
}

TEST(BeamData, ResetsSumsAndTimeButNotTheFileAtInit) {
  Kinematics kinematics({1});
  kinematics.AttachTo(Lines(std::vector<Record>(600, With({{7, 1000}}))), 30000);
  kinematics.Pull(2000);
  kinematics.Init(0.07);
  kinematics.Pull(2000);
  kinematics.Set_param_list({3});
  kinematics.Init(0.1);
  kinematics.PullAll();
}

TEST(BeamData, ReadsTheFileBesideTheSignalWithAStreamOfItsOwn) {
  Kinematics kinematics({1});
  const std::string stem = kinematics.folder.Path("x");
  kinematics.folder.Write("x" + stem + ".xyd", Lines({With({{7, 1000}})}));
  kinematics.folder.Write("x.xyd", Lines({With({{7, 2000}})}));
  kinematics.Attach(Signal(3000, 0.1, kinematics.path));
  EXPECT_THAT(Values(kinematics.PullAll(), 2), ElementsAre(1.0F, 0.0F));
  kinematics.Attach(Signal(3000, 0.1, kinematics.path));
  EXPECT_THAT(Values(kinematics.PullAll(), 2), ElementsAre(2.0F, 0.0F));
}

}  // namespace
}  // namespace tracks
