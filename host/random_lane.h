#ifndef WAVEFILTERS_HOST_RANDOM_LANE_H
#define WAVEFILTERS_HOST_RANDOM_LANE_H

#include <array>
#include <cstddef>

namespace wavechain {

/// A state of its own for the process's generator of random numbers, from which the library draws
/// noise: chains that are pulled in turn each get the numbers that they would get alone.
class RandomLane {
 public:
  /// The numbers that follow std::srand(seed).
  explicit RandomLane(unsigned seed);
  /// Hands the generator back as it was before.
  ~RandomLane();
  RandomLane(const RandomLane&) = delete;
  RandomLane& operator=(const RandomLane&) = delete;

  /// From here on the generator goes on with this lane.
  void Take();

 private:
  // As large as the one that the process begins with, which settles the kind of generator.
  alignas(std::max_align_t) std::array<char, 128> state = {};
  char* before = nullptr;
};

}  // namespace wavechain

#endif
