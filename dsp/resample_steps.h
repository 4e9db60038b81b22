#ifndef WAVEFILTERS_DSP_RESAMPLE_STEPS_H
#define WAVEFILTERS_DSP_RESAMPLE_STEPS_H

#include <algorithm>
#include <cstdint>

namespace wavefilters {

/// The high-rate steps of a rational resampler, by number instead of one after the other.
///
/// A step makes an output when the count `count` is 0. Then the phase goes up by one and, at
/// L or beyond, back to 0, which consumes an input; then the count goes up by one and, at
/// M or beyond, back to 0. Both may start anywhere in the 32-bit range: a start at
/// the limit or beyond goes back to 0 after one step, a negative start climbs to 0 first.
/// From the first return on, both are periodic, and everything below is division.
///
/// Steps are counted from 0 in 64 bits, enough for any factors, starts and 32-bit counts.
class ResampleSteps {
 public:
  /// Both factors are at least 1.
  ResampleSteps(std::int64_t upFactor, std::int64_t downFactor, std::int64_t startPhase,
                std::int64_t startCount)
      : up(upFactor), down(downFactor), phase(startPhase), count(startCount) {}

  /// Steps until `inputs` (1 or more) have been consumed.
  std::int64_t UntilConsumed(std::int64_t inputs) const {
    return FirstReturn() + (inputs - 1) * up;
  }
  /// Steps until `outputs` (1 or more) have been made; the step of the last one is among them.
  std::int64_t UntilProduced(std::int64_t outputs) const { return OutputStep(outputs - 1) + 1; }
  /// Number of the step that makes output `index` (0 or more).
  std::int64_t OutputStep(std::int64_t index) const { return FirstOutput() + index * down; }
  /// Outputs made in the first `steps` steps.
  std::int64_t Produced(std::int64_t steps) const {
    return steps > FirstOutput() ? 1 + (steps - 1 - FirstOutput()) / down : 0;
  }
  /// Inputs consumed in the first `steps` steps.
  std::int64_t Consumed(std::int64_t steps) const {
    return steps < FirstReturn() ? 0 : 1 + (steps - FirstReturn()) / up;
  }
  /// The phase after `steps` steps, which is the phase in the step of that number.
  std::int64_t Phase(std::int64_t steps) const {
    return steps < FirstReturn() ? phase + steps : (steps - FirstReturn()) % up;
  }
  /// The decimation count after `steps` steps.
  std::int64_t Count(std::int64_t steps) const {
    return steps < FirstOutput() ? count + steps : (steps - FirstOutput()) % down;
  }

 private:
  std::int64_t FirstReturn() const { return std::max<std::int64_t>(up - phase, 1); }
  std::int64_t FirstOutput() const {
    return count <= 0 ? -count : std::max<std::int64_t>(down - count, 1);
  }

  std::int64_t up;
  std::int64_t down;
  std::int64_t phase;
  std::int64_t count;
};

}  // namespace wavefilters

#endif
