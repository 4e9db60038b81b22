#include "benches/signals.h"

#include <random>

namespace wavefilters::bench {

std::vector<float> Noise(std::size_t count) {
  std::mt19937 random{1};
  std::uniform_real_distribution<float> uniform(-1.0F, 1.0F);
  std::vector<float> noise(count);
  for (float& sample : noise) {
    sample = uniform(random);
  }
  return noise;
}

}  // namespace wavefilters::bench
