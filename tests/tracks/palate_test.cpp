#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <locale>

#include "reference/beam_data.h"
#include "support/filter.h"
#include "support/temp_folder.h"
#include "tracks/pellet_text.h"
#include "tracks/twin.h"

// The palate contour: where its file is looked for, how far it is read, and mode 8 over it.
namespace tracks {
namespace {

using support::Constant;
using support::Slice;
using support::TempFolder;

using Kinematics = Twin<reference::BeamData>;

// A record of 16 numbers with pellet 3 at (x, y).
std::vector<double> PelletThreeAt(double x, double y) {
  std::vector<double> record(16, 0.0);
  record[4] = x;
  record[5] = y;
  return record;
}

// A contour, and the output of mode 8 over the first record, with pellet 3 at (x, y).
struct Contour {
  explicit Contour(const std::string& text, const std::string& signal = "x.wav",
                   const std::string& palate = "x.wavpal.dat")
      : path(folder.Path(signal)) {
    folder.Write(palate, text);
  }

  Samples Render(double x, double y, const std::vector<double>& params) const {
    Kinematics kinematics(support::BeamData);
    kinematics.Set_param_list(params);
    kinematics.Supply({{reference::Stem(path) + ".xyd", Lines({PelletThreeAt(x, y)})}});
    kinematics.Attach(Signal(2000, 0.1, path));
    return kinematics.PullAll();
  }

  float Nearest(double x, double y) const { return Render(x, y, {8, 1})[10]; }
  float Distance(double x, double y) const { return Render(x, y, {8, 0})[10]; }

  TempFolder folder;
  std::string path;
};

std::string Points(const std::vector<std::pair<double, double>>& points) {
  std::vector<std::vector<double>> lines;
  for (const auto& [x, y] : points) lines.push_back({x, y});
  return Lines(lines);
}

TEST(Palate, GivesTheDistanceToTheNearestPointOrItsNumber) {
  const Contour contour(Points({{0, 0}, {1000, 0}, {2000, 500}, {3000, 500}, {9000, 9000}}));
  EXPECT_EQ(contour.Nearest(1000, 10), 2.0F);
  EXPECT_EQ(contour.Distance(1003, 4), 0.005F);
  EXPECT_EQ(contour.Nearest(2900, 600), 4.0F);
  EXPECT_EQ(contour.Nearest(-5, -5), 1.0F);
  EXPECT_EQ(contour.Distance(3000, 500), 0.0F);
  EXPECT_EQ(contour.Nearest(9000, 9000), 4.0F) << "the last point is never searched";
  EXPECT_EQ(contour.Render(1003, 4, {8, 2})[10], 0.005F) << "only 1 selects the number";
  EXPECT_EQ(contour.Render(1003, 4, {8, 1.9})[10], 2.0F);
  EXPECT_EQ(contour.Render(1003, 4, {8, -1})[10], 0.005F);
  EXPECT_EQ(contour.Render(1003, 4, {8})[10], 0.005F);
  EXPECT_EQ(contour.Render(1003, 4, {8, 1, 1})[10], 2.0F);
}

TEST(Palate, TakesTheFirstOfEqualDistances) {
  const Contour contour(
      Points({{500, 0}, {0, 100}, {100, 0}, {0, -100}, {0, 100}, {1, 1}, {0, 0}}));
  EXPECT_EQ(contour.Nearest(0, 0), 6.0F);
  EXPECT_EQ(contour.Nearest(-1000, 0), 7.0F - 1.0F);
  const Contour ring(Points({{0, 100}, {100, 0}, {0, -100}, {-100, 0}, {7, 7}}));
  EXPECT_EQ(ring.Nearest(0, 0), 1.0F);
}

TEST(Palate, SearchesNoPointWhereThereIsOneLineOrNone) {
  for (const char* text : {"5 5\n", "5 5", "", "\n", "x\n1 1\n2 2\n", "5\n1 1\n2 2\n"}) {
    const Contour contour(text);
    EXPECT_EQ(contour.Distance(5, 5), 1000.0F) << text;
    EXPECT_EQ(contour.Nearest(5, 5), 1.0F) << text;
  }
}

TEST(Palate, FindsNothingAThousandMetresAway) {
  const Contour contour(Points({{-9e5, 0}, {-8e5, 0}, {0, 0}}));
  EXPECT_EQ(contour.Distance(900000, 0), 1000.0F) << "1,700,000 is not below the first smallest";
  EXPECT_EQ(contour.Nearest(900000, 0), 1.0F);
  const Contour near(Points({{-5e5, 0}, {-99999, 0}, {0, 0}}));
  EXPECT_EQ(near.Distance(900000, 0), 999.999F);
  EXPECT_EQ(near.Nearest(900000, 0), 2.0F);
  const Contour equal(Points({{-5e5, 0}, {-1e5, 0}, {0, 0}}));
  EXPECT_EQ(equal.Nearest(900000, 0), 1.0F) << "equal to the first smallest";
}

TEST(Palate, GivesNothingForAMissingPelletThree) {
  const Contour contour(Points({{0, 0}, {1000, 0}, {2000, 500}}));
  for (const auto& [x, y] :
       std::vector<std::pair<double, double>>{{1000000, 0}, {0, 1000000}, {1e7, 1e7}}) {
    EXPECT_EQ(contour.Distance(x, y), 0.0F);
    EXPECT_EQ(contour.Nearest(x, y), 0.0F);
  }
  EXPECT_NE(contour.Distance(999999.9, 0), 0.0F);
  EXPECT_NE(contour.Distance(0, 999999.9), 0.0F);
}

TEST(Palate, StopsReadingAtTheFirstLineWithoutTwoNumbers) {
  const std::vector<std::string> ends{"\n", "7\n", "7 x\n", "x 7\n", "   \r\n", "7,7\n", "# 7 7\n"};
  for (const std::string& end : ends) {
    const Contour contour("0 0\n100 0\n200 0\n" + end + "300 0\n400 0\n");
    EXPECT_EQ(contour.Nearest(1000, 0), 2.0F) << end;
  }
  const Contour all("0 0 extra\r\n  100\t0 7 8\r\n+2e2 -0 word\n300 0\n400 0");
  EXPECT_EQ(all.Nearest(1000, 0), 4.0F);
}

TEST(Palate, ReadsNoMoreThan4096LinesAndSearchesTheFirst2048) {
  std::vector<std::pair<double, double>> points;
  for (int i = 0; i < 5000; ++i) points.emplace_back(10.0 * i, 0.0);
  const Contour longer(Points(points));
  EXPECT_EQ(longer.Nearest(20470, 0), 2048.0F);
  EXPECT_EQ(longer.Nearest(20480, 0), 2048.0F);
  EXPECT_EQ(longer.Nearest(49990, 0), 2048.0F);
  for (const int count : {2047, 2048, 2049, 2050, 4095, 4096, 4097}) {
    points.resize(static_cast<std::size_t>(count), {0.0, 0.0});
    for (int i = 0; i < count; ++i) points[static_cast<std::size_t>(i)] = {10.0 * i, 0.0};
    const Contour contour(Points(points));
    EXPECT_EQ(contour.Nearest(900000, 0), static_cast<float>(std::min(count - 1, 2048))) << count;
  }
}

TEST(Palate, IsFoundBehindTheLastBackslashOnly) {
  // The backslash is part of a file's name here; the contour stands beside the signal all the same.
  const std::string points = Points({{0, 0}, {1000, 0}, {2000, 0}});
  EXPECT_EQ(Contour(points, "a\\b\\x.wav", "a\\b\\pal.dat").Nearest(1000, 0), 2.0F);
  EXPECT_EQ(Contour(points, "a\\x", "a\\pal.dat").Nearest(1000, 0), 2.0F);
  EXPECT_EQ(Contour(points, "a\\b/x.wav", "a\\pal.dat").Nearest(1000, 0), 2.0F);
  EXPECT_EQ(Contour(points, "dir/x.wav", "dir/x.wavpal.dat").Nearest(1000, 0), 2.0F);
  EXPECT_EQ(Contour(points, "x", "xpal.dat").Nearest(1000, 0), 2.0F);
  EXPECT_EQ(Contour(points, "dir/x.wav", "dir/pal.dat").Distance(1000, 0), 0.0F)
      << "not found: not even the pellets are read";
  EXPECT_EQ(Contour(points, "a\\x.wav", "a\\x.wavpal.dat").Nearest(1000, 0), 0.0F);
}

TEST(Palate, MustBeARegularFile) {
  const Contour folder("", "x.wav", "unrelated");
  std::filesystem::create_directory(folder.path + "pal.dat");
  EXPECT_EQ(folder.Distance(0, 0), 0.0F);
  const Contour pipe("", "x.wav", "unrelated");
  ASSERT_EQ(mkfifo((pipe.path + "pal.dat").c_str(), 0600), 0);
  EXPECT_EQ(pipe.Distance(0, 0), 0.0F);
  const Contour link(Points({{0, 0}, {1000, 0}, {2000, 0}}), "x.wav", "elsewhere");
  std::filesystem::create_symlink("elsewhere", link.path + "pal.dat");
  EXPECT_EQ(link.Nearest(1000, 0), 2.0F);
}

TEST(Palate, IsReadInTheClassicLocale) {
  struct Comma : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };
  // The pellets come over a stream of the filter's own, too: the second attachment finds them.
  const Contour contour("0.5 0\n1000.5 0\n2000.125 0\n3 3\n");
  contour.folder.Write("x.xyd", Lines({PelletThreeAt(2000.625, 0)}));
  const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Comma));
  Samples samples;
  {
    Kinematics kinematics(support::BeamData);
    kinematics.Set_param_list({8});
    kinematics.Attach(Signal(2000, 0.1, contour.path));
    kinematics.Attach(Signal(2000, 0.1, contour.path));
    samples = kinematics.PullAll();
  }
  std::locale::global(before);
  EXPECT_EQ(Slice(samples, 0, 34), Constant(34, 0.0005F));
}

TEST(Palate, IsReadAnewAtEachAttachment) {
  const TempFolder folder;
  const std::string first = folder.Path("first.wav");
  const std::string second = folder.Path("second.wav");
  const std::string third = folder.Path("third.wav");
  folder.Write("first.wavpal.dat", Points({{0, 0}, {1000, 0}, {2000, 0}, {3000, 0}, {0, 0}}));
  folder.Write("second.wavpal.dat", Points({{0, 0}, {1000, 0}, {2000, 0}}));
  const std::string record = Lines(std::vector<std::vector<double>>(50, PelletThreeAt(60, 0)));
  std::map<std::string, std::string> files;
  for (const std::string& path : {first, second, third})
    files[reference::Stem(path) + ".xyd"] = record;
  Kinematics kinematics(support::BeamData);
  kinematics.Set_param_list({8, 1});
  kinematics.Supply(files);
  std::vector<float> last;
  for (const std::string& path : {first, second, third, first}) {
    kinematics.Attach(Signal(6000, 0.1, path));
    last.push_back(kinematics.PullAll()[3300]);
  }
  // The third finds no contour: it reads nothing, and what the second's last span covered of the
  // signal keeps the input.
  EXPECT_EQ(last[0], 4.0F);
  EXPECT_EQ(last[1], 2.0F);
  EXPECT_EQ(last[3], 4.0F);
}

}  // namespace
}  // namespace tracks
