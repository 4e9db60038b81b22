#pragma once

#include <cstdlib>
#include <vector>

namespace voice {

// The numbers that the C library's generator gives after a seed, taken down beforehand. The
// generator then starts again from that seed, for the product to draw the same ones.
class RandomNumbers {
 public:
  explicit RandomNumbers(unsigned seed, std::size_t count = 200000) : numbers(count) {
    std::srand(seed);
    for (int& number : numbers) number = std::rand();
    std::srand(seed);
  }

  int Next() { return numbers.at(used++); }
  std::size_t Used() const { return used; }

 private:
  std::vector<int> numbers;
  std::size_t used = 0;
};

}  // namespace voice
