#include "tracks/palate.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "tests/support/temp_folder.h"

namespace wavefilters {
namespace {

struct Point {
  double x;
  double y;
};

// A point a line, with all of its digits.
Palate Written(const std::vector<Point>& points) {
  const support::TempFolder folder;
  const std::string file = folder.Path("pal.dat");
  std::ofstream out(file);
  char line[80];
  for (const Point& point : points) {
    std::snprintf(line, sizeof line, "%.17g %.17g\n", point.x, point.y);
    out << line;
  }
  out.close();
  Palate palate;
  EXPECT_TRUE(palate.Load(file));
  return palate;
}

// The search as one would tell it: every root, in order.
Palate::Nearest Searched(const std::vector<Point>& points, Point from) {
  Palate::Nearest nearest;
  for (std::size_t i = 0; i + 1 < points.size() && i < 2048; ++i) {
    const double dx = points[i].x - from.x;
    const double dy = points[i].y - from.y;
    const double distance = std::sqrt(dx * dx + dy * dy);
    if (distance < nearest.distance) {
      nearest = {distance, static_cast<std::int32_t>(i)};
    }
  }
  return nearest;
}

void Compare(const Palate& palate, const std::vector<Point>& points, Point from) {
  const Palate::Nearest wanted = Searched(points, from);
  const Palate::Nearest got = palate.NearestTo(from.x, from.y);
  ASSERT_EQ(got.index, wanted.index)
      << points.size() << " points, from " << from.x << ", " << from.y;
  ASSERT_EQ(std::bit_cast<std::uint64_t>(got.distance),
            std::bit_cast<std::uint64_t>(wanted.distance));
}

TEST(PalateSearch, FindsTheFirstNearestPointOfContoursOfAnyLength) {
  std::mt19937 random(1);
  std::uniform_real_distribution<double> thousandths(-60000.0, 60000.0);
  for (const unsigned count :
       {0U, 1U, 2U, 3U, 8U, 9U, 10U, 16U, 17U, 18U, 100U, 2047U, 2048U, 2049U, 2050U, 4096U}) {
    std::vector<Point> points(count);
    for (Point& point : points) {
      point = {std::round(thousandths(random)), std::round(thousandths(random))};
    }
    const Palate palate = Written(points);
    for (int i = 0; i < 20; ++i) {
      Compare(palate, points, {thousandths(random), thousandths(random)});
    }
    for (std::size_t i = 0; i < count; i += 1 + count / 30) {
      Compare(palate, points, points[i]);
    }
  }
}

// Points of a circle: their squares differ in the last places, and many have the same root.
TEST(PalateSearch, TakesTheFirstOfPointsWhoseRootsAreEqual) {
  std::mt19937 random(2);
  std::uniform_real_distribution<double> angle(0.0, 6.28);
  for (const double radius : {1e-155, 1e-3, 1.0, 30000.0, 999999.0}) {
    std::vector<Point> points(400);
    for (int trial = 0; trial < 20; ++trial) {
      for (Point& point : points) {
        const double at = angle(random);
        point = {radius * std::cos(at), radius * std::sin(at)};
      }
      Compare(Written(points), points, {0.0, 0.0});
    }
  }
}

TEST(PalateSearch, KeepsToItsLimitsWithExtremeNumbers) {
  constexpr double Huge = std::numeric_limits<double>::max();
  constexpr double Tiny = std::numeric_limits<double>::denorm_min();
  const std::vector<Point> far = {{1e6, 0.0}, {-1e6, 0.0}, {Huge, Huge}, {0.0, 2e6}, {0.0, 0.0}};
  const Palate palate = Written(far);
  Compare(palate, far, {0.0, 0.0});
  Compare(palate, far, {1.0, 0.0});
  constexpr double NaN = std::numeric_limits<double>::quiet_NaN();
  constexpr double Infinity = std::numeric_limits<double>::infinity();
  for (const Point from :
       {Point{NaN, 0.0}, {0.0, NaN}, {Infinity, 0.0}, {-Huge, Huge}, {Tiny, -Tiny}}) {
    Compare(palate, far, from);
  }
  const std::vector<Point> near = {
      {3e-160, 0.0}, {2e-162, 0.0}, {0.0, 1e-162}, {Tiny, Tiny}, {9.0, 9.0}};
  Compare(Written(near), near, {0.0, 0.0});
}

}  // namespace
}  // namespace wavefilters
