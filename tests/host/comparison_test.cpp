// What two signals are compared by, against sums made by hand.

#include "host/comparison.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace {

using wavechain::Comparison;

constexpr double Infinity = std::numeric_limits<double>::infinity();
const double NaN = std::numeric_limits<double>::quiet_NaN();

Comparison Compared(const std::vector<double>& a, const std::vector<double>& b,
                    double tolerance = 0.0) {
  Comparison comparison(1, tolerance);
  comparison.Add(a.data(), b.data(), static_cast<int>(a.size()));
  return comparison;
}

TEST(Comparison, EqualSignalsDifferNowhere) {
  const Comparison comparison = Compared({1.0, -2.0}, {1.0, -2.0});
  EXPECT_EQ(comparison.Samples(), 2);
  EXPECT_EQ(comparison.Differing(), 0);
  EXPECT_FALSE(comparison.First());
  EXPECT_FALSE(comparison.Greatest());
  EXPECT_EQ(comparison.RmsDifference(), 0.0);
  EXPECT_EQ(comparison.RmsA(), std::sqrt(2.5));
}

TEST(Comparison, TheFirstAndTheGreatestDifferenceAreNamed) {
  const Comparison comparison = Compared({0.0, 1.0, 4.0, 8.0}, {0.0, 1.5, 1.0, 5.0});
  EXPECT_EQ(comparison.Differing(), 3);
  EXPECT_EQ(comparison.First()->frame, 1);
  EXPECT_EQ(comparison.First()->b, 1.5);
  // Of two that are equal, the first.
  EXPECT_EQ(comparison.Greatest()->frame, 2);
  EXPECT_EQ(comparison.Greatest()->Size(), 3.0);
  EXPECT_EQ(comparison.RmsDifference(), std::sqrt((0.25 + 9.0 + 9.0) / 4.0));
  EXPECT_EQ(comparison.RmsB(), std::sqrt((2.25 + 1.0 + 25.0) / 4.0));
}

TEST(Comparison, TheToleranceItselfIsStillTheSame) {
  const Comparison comparison = Compared({0.0, 0.0}, {0.5, 0.75}, 0.5);
  EXPECT_EQ(comparison.Differing(), 1);
  EXPECT_EQ(comparison.First()->frame, 1);
  const Comparison covered = Compared({0.0}, {0.5}, 0.5);
  EXPECT_FALSE(covered.First());
  EXPECT_EQ(covered.Greatest()->Size(), 0.5);
}

TEST(Comparison, NotANumberIsTheSameInBothAndDifferentInOne) {
  const Comparison comparison = Compared({NaN, NaN, 3.0, 1.0}, {-NaN, 4.0, NaN, 1.0}, 100.0);
  EXPECT_EQ(comparison.Differing(), 2);
  EXPECT_EQ(comparison.OneSided(), 2);
  EXPECT_EQ(comparison.First()->frame, 1);
  // The one pair of numbers.
  EXPECT_EQ(comparison.RmsA(), 1.0);
  EXPECT_EQ(comparison.RmsDifference(), 0.0);
}

TEST(Comparison, InfinitiesAndZerosAreTakenAsNumbers) {
  EXPECT_EQ(Compared({Infinity, 0.0}, {Infinity, -0.0}).Differing(), 0);
  const Comparison comparison = Compared({Infinity, 1.0}, {-Infinity, 1.0});
  EXPECT_EQ(comparison.Differing(), 1);
  EXPECT_EQ(comparison.Greatest()->Size(), Infinity);
}

TEST(Comparison, BlocksAndChannelsAreCountedOn) {
  Comparison comparison(2, 0.0);
  const std::vector<double> a = {0.0, 0.0, 0.0, 0.0};
  const std::vector<double> b = {0.0, 0.0, 0.0, 7.0};
  comparison.Add(a.data(), a.data(), 2);
  comparison.Add(a.data(), b.data(), 2);
  EXPECT_EQ(comparison.Frames(), 4);
  EXPECT_EQ(comparison.Samples(), 8);
  EXPECT_EQ(comparison.First()->frame, 3);
  EXPECT_EQ(comparison.First()->channel, 1);
}

TEST(Comparison, NothingComparedHasNoLevel) {
  const Comparison comparison(1, 0.0);
  EXPECT_EQ(comparison.RmsA(), 0.0);
  EXPECT_EQ(comparison.RmsDifference(), 0.0);
}

}  // namespace
