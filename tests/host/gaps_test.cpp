// Gaps against one flag for each sample.

#include "host/gaps.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

namespace {

using wavechain::Gap;
using wavechain::Gaps;

constexpr int Length = 200;
using Flags = std::vector<bool>;  // true for missing

Flags RandomFlags(std::mt19937& random) {
  Flags flags(Length);
  bool missing = random() % 2 == 0;
  for (int i = 0; i < Length; ++i) {
    missing = random() % 6 == 0 ? !missing : missing;
    flags[static_cast<std::size_t>(i)] = missing;
  }
  return flags;
}

Gaps FromFlags(const Flags& flags) {
  Gaps gaps;
  for (std::size_t i = 0; i < flags.size(); ++i) {
    if (flags[i]) {
      gaps.Add({static_cast<std::int64_t>(i), static_cast<std::int64_t>(i) + 1});
    }
  }
  return gaps;
}

Flags ToFlags(const Gaps& gaps, std::int64_t start = 0, std::size_t count = Length) {
  std::vector<unsigned char> valid(count, 7);
  gaps.Mark(start, valid);
  Flags flags;
  for (const unsigned char one : valid) {
    EXPECT_LE(one, 1);
    flags.push_back(one == 0);
  }
  return flags;
}

// Whether a sample up to `reach` away is missing.
Flags Near(const Flags& flags, int reach) {
  Flags near(flags.size());
  for (int i = 0; i < Length; ++i) {
    for (int j = std::max(i - reach, 0); j <= std::min(i + reach, Length - 1); ++j) {
      near[static_cast<std::size_t>(i)] =
          near[static_cast<std::size_t>(i)] || flags[static_cast<std::size_t>(j)];
    }
  }
  return near;
}

TEST(Gaps, SpansThatTouchBecomeOne) {
  Gaps gaps;
  gaps.Add({-5, 2});
  gaps.Add({2, 4});
  gaps.Add({4, 4});
  gaps.Add({9, 12});
  gaps.Add({10, 11});
  ASSERT_EQ(gaps.All().size(), 2U);
  EXPECT_EQ(gaps.All()[0], (Gap{0, 4}));
  EXPECT_EQ(gaps.All()[1], (Gap{9, 12}));
  EXPECT_EQ(gaps.Samples(100), 7);
  EXPECT_EQ(gaps.Samples(10), 5);
  EXPECT_EQ(gaps.Samples(0), 0);
}

TEST(Gaps, HoldWhatFlagsHold) {
  std::mt19937 random(1);
  for (int turn = 0; turn < 50; ++turn) {
    const Flags one = RandomFlags(random);
    const Flags other = RandomFlags(random);
    EXPECT_EQ(ToFlags(FromFlags(one)), one);
    for (const int reach : {0, 1, 3, 40}) {
      EXPECT_EQ(ToFlags(FromFlags(one).Widened(reach)), Near(one, reach));
    }
    Flags both(Length);
    for (std::size_t i = 0; i < both.size(); ++i) {
      both[i] = one[i] || other[i];
    }
    EXPECT_EQ(ToFlags(FromFlags(one).United(FromFlags(other))), both);
  }
}

TEST(Gaps, AreMarkedFromAnySample) {
  std::mt19937 random(2);
  const Flags flags = RandomFlags(random);
  const Gaps gaps = FromFlags(flags);
  for (int start = 0; start < Length; ++start) {
    const Flags part(flags.begin() + start, flags.begin() + std::min(start + 9, Length));
    EXPECT_EQ(ToFlags(gaps, start, part.size()), part);
  }
}

TEST(Gaps, SpreadBehindAResampler) {
  std::mt19937 random(3);
  const Flags flags = RandomFlags(random);
  for (const int up : {1, 2, 5}) {
    for (const int down : {1, 3, 4}) {
      for (const int reach : {5, 10, 35}) {
        const std::size_t count = static_cast<std::size_t>(Length * up / down) - 40;
        Flags wanted(count);
        for (std::size_t k = 0; k < count; ++k) {
          for (std::size_t i = 0; i < flags.size(); ++i) {
            const long way = static_cast<long>(k) * down - static_cast<long>(i) * up;
            wanted[k] = wanted[k] || (flags[i] && std::abs(way) <= reach);
          }
        }
        EXPECT_EQ(ToFlags(FromFlags(flags).Resampled(up, down, reach), 0, count), wanted)
            << up << " " << down << " " << reach;
      }
    }
  }
}

}  // namespace
