#include "numstream/number_line.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <limits>
#include <locale>
#include <random>
#include <sstream>
#include <string>

namespace wavefilters {
namespace {

template <class T>
auto Bits(T value) {
  if constexpr (sizeof(T) == 4) {
    return std::bit_cast<std::uint32_t>(value);
  } else {
    return std::bit_cast<std::uint64_t>(value);
  }
}

// Every number of the line, by the standard stream and by NumberLine: results, values (also
// those of failed reads) and how many there are.
template <class T>
void CompareWithTheStream(const std::string& line) {
  std::istringstream stream(line);
  stream.imbue(std::locale::classic());
  std::string taken = line;
  NumberLine numbers;
  numbers.Take(taken);
  for (std::size_t i = 0; i < line.size() + 3; ++i) {
    T wanted = static_cast<T>(-77.25);
    T got = wanted;
    const bool wantedResult = static_cast<bool>(stream >> wanted);
    const bool gotResult = numbers.Read(got);
    ASSERT_EQ(gotResult, wantedResult) << "read " << i << " of '" << line << "'";
    ASSERT_EQ(Bits(got), Bits(wanted)) << "read " << i << " of '" << line << "'";
  }
}

void CompareBoth(const std::string& line) {
  CompareWithTheStream<float>(line);
  CompareWithTheStream<double>(line);
}

TEST(NumberLine, ReadsOddTokensAsTheStandardStreamDoes) {
  for (const char* line : {"",
                           "   ",
                           "1.5 2e3 x 4",
                           "1 2\r",
                           "+5 -6 +-7",
                           "-0 +0 -0.0",
                           "1. .5 . 3",
                           "1e 2",
                           "1e+ 2",
                           "1e5 1E-5",
                           "0x10 1",
                           "inf nan 1",
                           "1,000 2",
                           "12,5",
                           "1e400 2",
                           "-1e400",
                           "1e-400 5",
                           "4.9e-324",
                           "2e-324",
                           "1e38 1e39",
                           "1e-45 1e-46",
                           "3.4028236e38",
                           "1_000",
                           "1-2",
                           "1+2",
                           "1.2.3 4",
                           "--1",
                           "5e5e5",
                           "1f 2",
                           "infinity",
                           "0123 00.10",
                           "1\v2\f3\t4",
                           "9007199254740993",
                           "123456789012345678 1234567890123456789 99999999999999999999",
                           "16777217 16777219 -33554435",
                           "0.1e1.5",
                           "e5",
                           "+",
                           "-",
                           ".",
                           "+.e1"}) {
    CompareBoth(line);
  }
  CompareBoth(std::string("1\0002 3", 5));
  CompareBoth(std::string("\0", 1));
  CompareBoth("1 \xa0 2");
}

TEST(NumberLine, ReadsRandomTokensAsTheStandardStreamDoes) {
  std::mt19937 random(66);
  const std::string letters = "0123456789012345678901234567890123456789..--++eE  \tx,\rINnaf";
  for (int round = 0; round < 60000; ++round) {
    std::string line;
    const auto length = random() % 24;
    for (unsigned i = 0; i < length; ++i) {
      line += letters[random() % letters.size()];
    }
    CompareBoth(line);
    if (HasFatalFailure()) {
      return;
    }
  }
}

TEST(NumberLine, ReadsRandomNumbersAsTheStandardStreamDoes) {
  std::mt19937_64 random(67);
  for (int round = 0; round < 60000; ++round) {
    std::ostringstream line;
    line.precision(static_cast<int>(1 + random() % 21));
    line << std::bit_cast<double>(random()) << ' ' << std::bit_cast<float>(std::uint32_t(random()))
         << ' ' << static_cast<std::int64_t>(random() >> (random() % 64)) << ' ' << std::fixed
         << static_cast<double>(random() % 100000000) / 1000.0;
    CompareBoth(line.str());
    if (HasFatalFailure()) {
      return;
    }
  }
}

TEST(NumberLine, HandsTheStorageOfTheOldLineBack) {
  NumberLine numbers;
  std::string line = "first line, longer than a short string holds";
  numbers.Take(line);
  line = "second";
  numbers.Take(line);
  EXPECT_EQ(line, "first line, longer than a short string holds");
}

}  // namespace
}  // namespace wavefilters
