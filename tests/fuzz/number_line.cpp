// The numbers of a line beside those that the standard stream reads: values, success, and what is
// left on the line.

#include "numstream/number_line.h"

#include <gtest/gtest.h>

#include <bit>
#include <locale>
#include <sstream>

#include "fuzz/input.h"
#include "fuzz/target.h"

namespace {

template <class Value>
bool Same(Value a, Value b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

template <class Value>
bool ReadBoth(std::istringstream& stream, wavefilters::NumberLine& numbers) {
  Value wanted = static_cast<Value>(-77.25);
  Value got = wanted;
  const bool read = static_cast<bool>(stream >> wanted);
  EXPECT_EQ(numbers.Read(got), read);
  EXPECT_TRUE(Same(got, wanted)) << got << " instead of " << wanted;
  return read;
}

}  // namespace

// The first byte says, bit by bit and over again, which numbers are read in single precision.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
  fuzz::Input input(bytes, count);
  const int singles = input.Byte();
  const std::string line = input.Rest();
  std::istringstream stream(line);
  stream.imbue(std::locale::classic());
  std::string taken = line;
  wavefilters::NumberLine numbers;
  numbers.Take(taken);
  int failures = 0;
  for (int i = 0; failures < 3; ++i) {
    const bool single = (singles >> (i % 8)) % 2 == 1;
    const bool read = single ? ReadBoth<float>(stream, numbers) : ReadBoth<double>(stream, numbers);
    failures += read ? 0 : 1;
  }
  return 0;
}
