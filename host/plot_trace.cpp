#include "host/plot_trace.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace wavechain {

Trace::Trace(const Range& view_s, int columns)
    : view(view_s), columnsPerSecond(columns / view_s.Width()) {}

long Trace::ColumnOf(double time_s) const {
  return static_cast<long>(std::floor((time_s - view.low) * columnsPerSecond));
}

void Trace::Add(double time_s, double value, bool missing) {
  if (passed) {
    return;
  }
  lastTime_s = time_s;
  if (missing || !std::isfinite(value)) {
    before.reset();
    EndPiece();
    gapStart = gapStart.value_or(time_s);
    passed = time_s > view.high;
    return;
  }
  EndGap(time_s);
  const Point point = {time_s, value};
  if (time_s < view.low) {
    before = point;
    return;
  }
  if (before) {
    Collect(*before);
    before.reset();
  }
  Collect(point);
  passed = time_s > view.high;
  if (!passed) {
    values = Joined(values, Range{value, value});
  }
}

void Trace::Collect(const Point& point) {
  const long at = ColumnOf(point.x);
  if (collected && at != column) {
    Flush();
  }
  column = at;
  if (!collected) {
    collected = Extremes{point, point, point, point};
    return;
  }
  collected->last = point;
  if (point.y < collected->least.y) {
    collected->least = point;
  }
  if (point.y > collected->greatest.y) {
    collected->greatest = point;
  }
}

void Trace::Flush() {
  if (!collected) {
    return;
  }
  const Extremes e = *collected;
  collected.reset();
  const bool leastFirst = e.least.x <= e.greatest.x;
  for (const Point& point :
       {e.first, leastFirst ? e.least : e.greatest, leastFirst ? e.greatest : e.least, e.last}) {
    Append(point);
  }
}

// One sample may be several of the four.
void Trace::Append(const Point& point) {
  if (pieces.empty()) {
    pieces.emplace_back();
  }
  std::vector<Point>& piece = pieces.back();
  if (piece.empty() || piece.back().x < point.x) {
    piece.push_back(point);
  }
}

void Trace::EndPiece() {
  Flush();
  if (!pieces.empty() && !pieces.back().empty()) {
    pieces.emplace_back();
  }
}

void Trace::EndGap(double time_s) {
  if (gapStart && time_s > view.low && *gapStart < view.high) {
    gaps.push_back({std::max(*gapStart, view.low), std::min(time_s, view.high)});
  }
  gapStart.reset();
}

void Trace::Finish(double interval_s) {
  Flush();
  EndGap(lastTime_s + interval_s);
  if (!pieces.empty() && pieces.back().empty()) {
    pieces.pop_back();
  }
}

}  // namespace wavechain
