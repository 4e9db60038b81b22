#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <string>
#include <vector>

#include "support/odd_numbers.h"

namespace fuzz {

// The fuzzer's bytes, taken from the front as values that a target asks for. Once they are used up,
// every value is 0, the lower bound, or empty.
class Input {
 public:
  Input(const std::uint8_t* bytes, std::size_t count) : next(bytes), end(bytes + count) {}

  bool Empty() const { return next == end; }
  int Byte() { return Empty() ? 0 : *next++; }
  bool Flag() { return Byte() % 2 == 1; }

  // Between the two, both included, from as many bytes as the range needs.
  int Int(int low, int high) {
    const std::int64_t span = std::int64_t{high} - low + 1;
    std::int64_t value = 0;
    for (std::int64_t reach = 1; reach < span; reach *= 256) value = value * 256 + Byte();
    return static_cast<int>(low + value % span);
  }

  // Any double at all: small whole numbers and ends of ranges more often than chance would.
  double Number() {
    const int kind = Byte();
    if (kind < 160) return kind - 32;
    if (kind < 160 + static_cast<int>(std::size(support::OddNumbers))) {
      return support::OddNumbers[kind - 160];
    }
    if (kind < 200) return std::nan("");
    if (kind < 225) return Int(-1000000, 1000000) / 1024.0;
    double any = 0.0;
    unsigned char bytes[sizeof any];
    for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(Byte());
    std::memcpy(&any, bytes, sizeof any);
    return any;
  }

  // An interval in milliseconds, ordinary ones three times out of four.
  double Interval_ms() {
    constexpr double Usual[] = {0.1, 0.125, 1.0 / 16, 1.0 / 22.05, 1.0 / 48, 1.0, 0.37};
    const int kind = Byte();
    return kind < 192 ? Usual[static_cast<std::size_t>(kind) % std::size(Usual)] : Number();
  }

  // Up to a byte of 255, which is taken away, or to the end.
  std::string Text() {
    std::string text;
    while (!Empty() && *next != 255) text.push_back(static_cast<char>(*next++));
    if (!Empty()) ++next;
    return text;
  }
  std::string Rest() {
    std::string rest(reinterpret_cast<const char*>(next), static_cast<std::size_t>(end - next));
    next = end;
    return rest;
  }

  std::vector<double> Numbers(int most) {
    std::vector<double> numbers(static_cast<std::size_t>(Int(0, most)));
    for (double& number : numbers) number = Number();
    return numbers;
  }
  // From 1 to `most`, and `most` where the bytes are used up: a thousand deliveries of a sample
  // each take long and show little.
  int Size(int most) {
    const int size = Int(0, most - 1);
    return size == 0 ? most : size;
  }
  // One to four of them.
  std::vector<int> Sizes(int most) {
    std::vector<int> sizes(static_cast<std::size_t>(Int(1, 4)));
    for (int& size : sizes) size = Size(most);
    return sizes;
  }

 private:
  const std::uint8_t* next;
  const std::uint8_t* end;
};

// What one run may take. Each request may be of any size, as long as something is left for it: the
// fuzzer learns from the number of runs.
class Allowance {
 public:
  explicit Allowance(std::int64_t most) : left(most) {}

  // One input in thirty-two, by its size, goes past the 8192 samples of the library's buffers. For
  // the others, some hundred are enough to come by every kind of event.
  static Allowance OfRun(std::size_t inputSize) {
    return Allowance(inputSize % 32 == 31 ? 10000 : 400);
  }

  // The request, or what is left of it. What is 0 or below costs nothing.
  int Of(int wanted) {
    const auto granted = static_cast<int>(std::min<std::int64_t>(wanted, left));
    left -= std::max(granted, 0);
    return granted;
  }

  int Left() const { return static_cast<int>(left); }

 private:
  std::int64_t left;
};

}  // namespace fuzz
