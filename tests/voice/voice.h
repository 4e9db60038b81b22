#pragma once

#include <string>
#include <vector>

#include "support/filter.h"

namespace voice {

using support::Samples;

// One line of an event file: numbers that read back as the same doubles, log-area ratios that read
// back as the same floats.
std::string Line(const std::vector<double>& numbers, const std::vector<float>& ratios = {});

// A voice source over a text that a host's stream serves, driven through slots 14 and 16 alone. Its
// interval is 1 ms unless it is given, so that instants are sample indices.
class Voice {
 public:
  explicit Voice(const support::Kind& kind, const std::string& text, double interval_ms = 1.0);

  // The block after Apply, which gets told that it is `count` samples from `start` on. Nothing else
  // may be written to.
  Samples Apply(const Samples& block, int count, int start);
  Samples Apply(const Samples& block, int start = 0) {
    return Apply(block, static_cast<int>(block.size()), start);
  }

  support::Filter& Slots() { return filter; }

 private:
  support::CallLog log;
  support::NumStreamMock stream;
  support::Filter filter;
};

// What a source adds to `count` zeros that begin with the signal.
Samples Rendered(const support::Kind& kind, const std::string& text, int count,
                 double interval_ms = 1.0);

// The first and one past the last sample that is not zero; both 0 where there is none.
struct Extent {
  int first = 0;
  int end = 0;
  bool operator==(const Extent&) const = default;
};
Extent Sounding(const Samples& samples);

}  // namespace voice
