#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "hardening/soak_data.h"

namespace hardening {

inline constexpr std::int64_t LargestIndex = std::numeric_limits<std::int32_t>::max();

// What one filter goes through.
struct Story {
  support::Kind kind;
  std::vector<double> params;
  std::int64_t samples;
  double interval_ms;
  Stretch dense;
};

// The signal: noise that repeats, so that what filters make of it repeats as well. A whole number
// of periods of the square wave, and of the resampler's inputs.
inline constexpr int Period = 7 * 3 * 2048;

// Sample `index` of a source's signal.
float Input(int source, std::int64_t index);

// Looks at the output as it comes. A part of the samples is compared with closed forms, where the
// kind has one; every sample with the one a cycle of the signal earlier, where the kind repeats;
// some have to be finite at least.
class Judge {
 public:
  explicit Judge(const Story& told);

  void Look(const float* block, int count);
  // Samples seen so far.
  std::int64_t Produced() const { return index; }

 private:
  std::int64_t LastSafe() const;
  void LookAt(const float* block, int offset);
  void Compare(const float* block, int count);

  const Story& story;
  int period;  // of the output; 0 where it does not repeat
  std::vector<float> cycle;
  std::int64_t index = 0;
};

}  // namespace hardening
