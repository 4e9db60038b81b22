#include "host/plot_axis.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace wavechain {
namespace {

constexpr double Air = 0.06;  // of the width, above and below

// The step of the ticks, and the decimals that tell one from the next.
struct Step {
  double width = 1.0;
  int decimals = 0;
};

// The smallest of 1, 2 and 5 times a power of ten that leaves no more than `most` ticks.
Step NiceStep(const Range& range, int most) {
  const double least = range.Width() / most;
  int power = static_cast<int>(std::floor(std::log10(least)));
  for (;; ++power) {
    for (const double factor : {1.0, 2.0, 5.0}) {
      const double width = factor * std::pow(10.0, power);
      const double count = std::floor(range.high / width) - std::ceil(range.low / width) + 1.0;
      if (count <= most) {
        return {width, std::max(-power, 0)};
      }
    }
  }
}

std::string TickLabel(double value, const Step& step, double largest) {
  constexpr int MostDecimals = 5;
  constexpr double MostWritten = 1e7;
  if (step.decimals > MostDecimals || largest >= MostWritten) {
    return fmt::format("{:g}", value);
  }
  return fmt::format("{:.{}f}", value, step.decimals);
}

}  // namespace

std::string Axis::Text() const {
  return unit.empty() ? label : fmt::format("{} ({})", label, unit);
}

std::vector<Tick> TicksEvery(double step, const Range& range) {
  std::vector<Tick> ticks;
  for (double i = std::ceil(range.low / step); i * step <= range.high; i += 1.0) {
    ticks.push_back({i * step + 0.0, fmt::format("{:g}", i * step + 0.0)});
  }
  return ticks;
}

std::vector<Tick> NiceTicks(const Range& range, int most) {
  std::vector<Tick> ticks;
  if (!std::isfinite(range.low) || !std::isfinite(range.high) || !std::isfinite(range.Width()) ||
      range.Width() <= 0.0 || range.Width() < 1e-12 * std::max(-range.low, range.high)) {
    return ticks;
  }
  const Step step = NiceStep(range, std::max(most, 2));
  const double largest = std::max(std::abs(range.low), std::abs(range.high));
  // A tick that rounding puts just beyond an end belongs to it.
  const double slack = 1e-9 * step.width;
  const double first = std::ceil((range.low - slack) / step.width);
  for (double i = first; i * step.width <= range.high + slack; i += 1.0) {
    // Adding 0 makes -0 what everybody writes.
    const double value = i * step.width + 0.0;
    ticks.push_back({value, TickLabel(value, step, largest)});
  }
  return ticks;
}

Range Padded(const std::optional<Range>& values) {
  if (!values) {
    return {0.0, 1.0};
  }
  const double width = values->Width();
  const double air =
      width > 0.0 ? Air * width : (values->low == 0.0 ? 1.0 : 0.1 * std::abs(values->low));
  return {values->low - air, values->high + air};
}

Range Symmetrical(const std::optional<Range>& values) {
  const double largest = values ? std::max(std::abs(values->low), std::abs(values->high)) : 0.0;
  const double end = largest > 0.0 ? largest * (1.0 + Air) : 1.0;
  return {-end, end};
}

std::optional<Range> Joined(const std::optional<Range>& a, const std::optional<Range>& b) {
  if (!a || !b) {
    return a ? a : b;
  }
  return Range{std::min(a->low, b->low), std::max(a->high, b->high)};
}

}  // namespace wavechain
