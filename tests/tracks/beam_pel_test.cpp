#include "reference/beam_pel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <locale>

#include "support/filter.h"
#include "support/temp_folder.h"
#include "tracks/pellet_text.h"
#include "tracks/twin.h"

namespace tracks {
namespace {

using support::Constant;
using support::Slice;

using Pellet = Twin<reference::BeamPel>;

// The first records' spans at 0.1 ms: record k ends before sample trunc((k - 0.5) * 68.66).
constexpr int Ends[] = {0, 34, 102, 171, 240, 308, 377};

Samples Render(const std::string& text, int count, const std::vector<double>& params = {},
               double interval_ms = 0.1) {
  Pellet pellet(support::BeamPel);
  if (!params.empty()) pellet.Set_param_list(params);
  pellet.Supply({{"take.xyd", text}});
  pellet.Attach(Signal(count, interval_ms));
  return pellet.PullAll();
}

// What record k (counted from 1) holds over its span.
void ExpectRecord(const Samples& samples, int k, float value) {
  EXPECT_EQ(Slice(samples, Ends[k - 1], Ends[k] - Ends[k - 1]),
            Constant(Ends[k] - Ends[k - 1], value))
      << "record " << k;
}

TEST(BeamPel, HoldsEachRecordOverItsOwnSpan) {
  const Samples samples = Render(Column(6, {1000, 234, -2234, 500, 1, 2}), 3000);
  ASSERT_EQ(samples.size(), 3000U);
  ExpectRecord(samples, 1, 1.0F);
  ExpectRecord(samples, 2, 1.234F);
  ExpectRecord(samples, 3, -1.0F);
  ExpectRecord(samples, 4, -0.5F);
  ExpectRecord(samples, 5, static_cast<float>(-0.499));
  ExpectRecord(samples, 6, static_cast<float>(-0.497));
  EXPECT_EQ(Slice(samples, 377, 3000 - 377), Constant(3000 - 377)) << "zeros after the data";
}

TEST(BeamPel, RendersTheGivenColumn) {
  std::vector<double> record(16);
  for (int i = 0; i < 16; ++i) record[static_cast<std::size_t>(i)] = 1000.0 * (i + 1);
  const std::string text = Lines({record, record, record});
  for (const auto& [param, column] :
       std::vector<std::pair<double, int>>{{1, 1}, {2.9, 2}, {6, 6}, {15.5, 15}, {16, 16}}) {
    const Samples samples = Render(text, 2000, {param, 3, 4});
    ExpectRecord(samples, 1, static_cast<float>(column));
    ExpectRecord(samples, 3, static_cast<float>(3 * column));
  }
  ExpectRecord(Render(text, 2000), 1, 6.0F);
}

TEST(BeamPel, HasNoDataInColumnsThatDoNotExist) {
  const std::string text = Column(6, {1000, 1000, 1000});
  for (const double column :
       {0.0, 0.99, -0.5, -1.5, -1e300, -HUGE_VAL, std::nan(""), 17.0, 1e300, HUGE_VAL}) {
    EXPECT_EQ(Render(text, 2000, {column}), Constant(2000)) << column;
  }
}

TEST(BeamPel, KeepsItsColumnWhereTheListIsEmpty) {
  Pellet pellet(support::BeamPel);
  pellet.Set_param_list({2});
  pellet.Set_param_list({});
  double unused = 3.0;
  pellet.Product().Slots().Set_param_list(pellet.Product().Object(), &unused, -1);
  pellet.Product().Slots().Set_param_list(pellet.Product().Object(), nullptr, 0);
  pellet.Supply({{"take.xyd", Column(2, {5000, 0})}});
  pellet.Attach(Signal(2000));
  ExpectRecord(pellet.PullAll(), 1, 5.0F);
}

TEST(BeamPel, RendersAMillionAndMoreAsNothingAndKeepsAdding) {
  const Samples samples = Render(Column(6, {999999.5, 0.5, 1000, -1000.5, -1000000, 0}), 3000);
  ExpectRecord(samples, 1, static_cast<float>(999.9995));
  ExpectRecord(samples, 2, 0.0F);
  ExpectRecord(samples, 3, 0.0F);
  ExpectRecord(samples, 4, static_cast<float>(999.9995));
  ExpectRecord(samples, 5, static_cast<float>(-0.0005));
}

TEST(BeamPel, EndsTheDataAtALineThatIsTooShort) {
  const std::string good = "0 0 0 0 0 100\n";
  const std::string later = "0 0 0 0 0 50000\n";
  for (const char* line :
       {"\n", "  \r\n", "1 2 3 4 5\n", "1 2 3 4 5 x\n", "1 2 x 4 5 6\n", "word\n", "1,2,3,4,5,6\n",
        "1 2 3 4 5 1e999\n", "1 2 3 4 5 nan\n", "# 0 0 0 0 0 0\n"}) {
    std::string text;
    for (int i = 0; i < 5; ++i) text += good;
    const Samples samples = Render(text + line + later + later, 3000);
    ExpectRecord(samples, 5, 0.5F);
    EXPECT_EQ(Slice(samples, 308, 2000), Constant(2000)) << line;
  }
}

TEST(BeamPel, ReadsEveryLineThatHoldsEnough) {
  // Line ends, gaps, forms of a number, extra numbers and words behind them, no last line feed.
  const Samples samples = Render(
      "0 0 0 0 0 1000\r\n\t0\t0 0  0 0 +1e3 7 8 9\r\n0 0 0 0 0 1000. word\n0 0 0 0 0 .5e3x", 3000);
  ExpectRecord(samples, 1, 1.0F);
  ExpectRecord(samples, 2, 2.0F);
  ExpectRecord(samples, 3, 3.0F);
  ExpectRecord(samples, 4, 3.5F);
  EXPECT_EQ(Slice(samples, 240, 2000), Constant(2000));
}

TEST(BeamPel, IsSilentWithAnEmptyFile) {
  EXPECT_EQ(Render("", 3000), Constant(3000));
  EXPECT_EQ(Render("\n", 3000), Constant(3000));
  EXPECT_EQ(Render("1 2 3 4 5\n1 2 3 4 5\n", 3000), Constant(3000));
}

TEST(BeamPel, ReadsNoRecordInTheLast1024Samples) {
  const std::string text = Column(6, std::vector<double>(200, 1000.0));
  EXPECT_EQ(Render(text, 1024), Constant(1024));
  EXPECT_EQ(Render(text, 10), Constant(10));
  EXPECT_EQ(Render(text, 0), Constant(0));
  const Samples one = Render(text, 1025);
  ExpectRecord(one, 1, 1.0F);
  EXPECT_EQ(Slice(one, 34, 991), Constant(991));
  // A span that began before reaches into the last 1024 samples.
  const Samples samples = Render(text, 1024 + 240);
  ExpectRecord(samples, 4, 4.0F);
  EXPECT_EQ(Slice(samples, 240, 1024), Constant(1024));
  ExpectRecord(Render(text, 1024 + 241), 5, 5.0F);
}

TEST(BeamPel, SumsTheSpansEndsRecordByRecord) {
  // After thousands of records the sum of spans differs from their product by a sample here and
  // there: the model sums.
  std::vector<double> steps;
  for (int i = 0; i < 12000; ++i) steps.push_back(i % 2 == 0 ? 7 : -3);
  EXPECT_EQ(Render(Column(6, steps), 90000, {}, 0.5 * 6.866 / 4).size(), 90000U);
  EXPECT_EQ(Render(Column(6, steps), 90000, {}, 6.866).size(), 90000U);
}

TEST(BeamPel, ReadsFilesOfItsOwnStreamInTheClassicLocale) {
  struct Comma : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
  };
  const support::TempFolder folder;
  const std::string stem = folder.Path("sig");
  folder.Write("sig" + stem + ".xyd", "-12.345 0\n0 0\n");
  const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Comma));
  Samples samples;
  {
    Pellet pellet(support::BeamPel);
    pellet.Set_param_list({1});
    pellet.Attach(Signal(2000, 0.1, stem + ".wav"));
    samples = pellet.PullAll();
  }
  std::locale::global(before);
  ExpectRecord(samples, 1, static_cast<float>(-0.012345));
  ExpectRecord(samples, 2, static_cast<float>(-0.012345));
}

TEST(BeamPel, ReadsBrokenFilesOnAStreamOfItsOwn) {
  const support::TempFolder folder;
  const std::string stem = folder.Path("sig");
  const std::string place = "sig" + stem + ".xyd";
  const std::string good = Column(6, std::vector<double>(40, 1000.0));
  std::string longLine = "0 0 0 0 0 1000";
  for (int i = 0; i < 5000000; ++i) longLine += " 1";
  for (const std::string& text :
       {std::string(), std::string("\n\n"), good, good.substr(0, good.size() - 1), longLine,
        longLine + "\n" + good, std::string(10000000, ' ') + good,
        good + std::string("\0\0\0", 3) + good}) {
    folder.Write(place, text);
    Pellet pellet(support::BeamPel);
    pellet.Attach(Signal(6000, 0.1, stem + ".wav"));
    EXPECT_EQ(pellet.PullAll().size(), 6000U);
  }
  std::filesystem::remove(folder.Path(place));
  std::filesystem::create_directory(folder.Path(place));
  Pellet pellet(support::BeamPel);
  pellet.Attach(Signal(6000, 0.1, stem + ".wav"));
  EXPECT_EQ(pellet.PullAll(), Constant(6000));
}

TEST(BeamPel, ResetsSumAndTimeButNotTheFileAtInit) {
  Pellet pellet(support::BeamPel);
  pellet.Supply({{"take.xyd", Column(6, std::vector<double>(900, 1000.0))}});
  pellet.Attach(Signal(30000));
  pellet.Pull(3000);
  pellet.Init(0.05);
  EXPECT_TRUE(pellet.LastCalls().empty());
  pellet.Pull(3000);
  pellet.Init(0.2);
  pellet.PullAll();
}

TEST(BeamPel, ChangesColumnsInMidStreamAtTheNextRecord) {
  Pellet pellet(support::BeamPel);
  std::vector<std::vector<double>> records(400, {1000, 1, -1000, 0, 0, 7, 8});
  pellet.Supply({{"take.xyd", Lines(records)}});
  pellet.Attach(Signal(20000));
  for (const double column : {1.0, 3.0, 6.0, 2.0}) {
    pellet.Set_param_list({column});
    pellet.Pull(3000);
  }
  pellet.PullAll();
}

TEST(BeamPel, LeavesTheInputUntilTheOldSpansEndWhereNoFileOpensTheSecondTime) {
  // The end of the last span outlives the attachment; only what lies behind it is cleared.
  Pellet pellet(support::BeamPel);
  pellet.Supply({{"take.xyd", Column(6, std::vector<double>(400, 1000.0))}});
  pellet.Attach(Signal(9000));
  pellet.PullAll();
  SourceScript second = Signal(9000, 0.1, "missing.wav");
  pellet.Attach(second);
  const Samples samples = pellet.PullAll();
  EXPECT_EQ(Slice(samples, 0, 7000), Slice(second.samples, 0, 7000));
  EXPECT_EQ(Slice(samples, 8100, 900), Constant(900));
}

TEST(BeamPel, StartsOverWithANewAttachment) {
  Pellet pellet(support::BeamPel);
  pellet.Supply({{"take.xyd", Column(6, std::vector<double>(400, 1000.0))}});
  pellet.Attach(Signal(9000));
  const Samples first = pellet.PullAll();
  pellet.Attach(Signal(9000));
  EXPECT_EQ(pellet.PullAll(), first);
}

}  // namespace
}  // namespace tracks
