#ifndef TESTS_REFERENCE_PULSE_SYN_H_
#define TESTS_REFERENCE_PULSE_SYN_H_

#include <cstdint>

#include "reference/event_source.h"

namespace reference {

// The pulse source: an impulse of the negated amplitude replaces the sample at its instant.
class PulseSyn : public EventSource {
 public:
  PulseSyn() : EventSource(".gpm") {}

  void Apply(float* out, std::int64_t count, std::int64_t start) override {
    while (pending && NextFits(count, start)) {
      double amplitude = 0.0;
      pending = stream->GetDouble(amplitude);
      if (!pending) return;
      const std::int64_t position = next - start;
      if (position >= 0) out[position] = -static_cast<float>(amplitude);
      pending = ReadNextTime();
    }
  }
};

}  // namespace reference

#endif  // TESTS_REFERENCE_PULSE_SYN_H_
