#ifndef WAVEFILTERS_HOST_PLOT_AXIS_H
#define WAVEFILTERS_HOST_PLOT_AXIS_H

#include <optional>
#include <string>
#include <vector>

namespace wavechain {

/// From a lower value to a higher one.
struct Range {
  double low = 0.0;
  double high = 1.0;
  double Width() const { return high - low; }
  bool operator==(const Range&) const = default;
};

/// One axis of a picture: what it counts, in which unit, and from where to where.
struct Axis {
  std::string label;
  std::string unit;  // empty for a plain number
  Range range = {};
  double step = 0.0;  // between ticks; 0 where they are to be nice

  /// "time (s)".
  std::string Text() const;
};

/// A place on an axis with the number that stands beside it.
struct Tick {
  double value = 0.0;
  std::string label;
};

/// Places within the range at multiples of the step.
std::vector<Tick> TicksEvery(double step, const Range& range);

/// Places within the range at multiples of 1, 2 or 5 times a power of ten: as many as fit, `most`
/// at the most (2 or more), all with the same number of decimals. None for a range that is
/// empty, reversed or not finite.
std::vector<Tick> NiceTicks(const Range& range, int most);

/// A range around the values with some air above and below; never empty, also where there is
/// one value or none.
Range Padded(const std::optional<Range>& values);

/// A range from -x to x that holds the values, with some air.
Range Symmetrical(const std::optional<Range>& values);

/// The smallest range that holds both.
std::optional<Range> Joined(const std::optional<Range>& a, const std::optional<Range>& b);

}  // namespace wavechain

#endif
