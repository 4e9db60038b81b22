#ifndef WAVEFILTERS_HOST_PLOT_TRACE_H
#define WAVEFILTERS_HOST_PLOT_TRACE_H

#include <optional>
#include <vector>

#include "host/plot_axis.h"

namespace wavechain {

/// A place in a picture, in the units of its axes.
struct Point {
  double x = 0.0;
  double y = 0.0;
};

/// What a line through all samples of a signal looks like, in memory that depends on the
/// picture's width alone: of the samples within each column of pixels it keeps the first, the
/// least, the greatest and the last, which draw the same line as all of them.
///
/// Method: U. Jugel, Z. Jerzak, G. Hackenbroich, V. Markl, "M4: a visualization-oriented time
/// series data aggregation", Proceedings of the VLDB Endowment 7 (2014).
class Trace {
 public:
  /// For what lies between two times (s), on so many columns.
  Trace(const Range& view_s, int columns);

  /// The next sample, times increasing. One that is missing, or not finite, breaks the line.
  /// Samples just outside the view are kept, so that lines run up to its edge.
  void Add(double time_s, double value, bool missing);
  /// To be called after the last sample, which stood for so long (s).
  void Finish(double interval_s);

  /// The line, in pieces between gaps; a piece may be a single point.
  const std::vector<std::vector<Point>>& Pieces() const { return pieces; }
  /// From the first missing sample to the next one that is there.
  const std::vector<Range>& Gaps() const { return gaps; }
  /// The least and greatest value within the view; nothing where all are missing.
  const std::optional<Range>& Values() const { return values; }

 private:
  // One column's samples, the four that matter.
  struct Extremes {
    Point first, least, greatest, last;
  };

  void Collect(const Point& point);
  void Flush();
  void Append(const Point& point);
  void EndPiece();
  void EndGap(double time_s);
  long ColumnOf(double time_s) const;

  Range view;
  double columnsPerSecond;
  long column = 0;
  std::optional<Extremes> collected;
  std::optional<Point> before;  // the last sample ahead of the view
  std::optional<double> gapStart;
  bool passed = false;  // a sample behind the view has come
  double lastTime_s = 0.0;
  std::optional<Range> values;
  std::vector<std::vector<Point>> pieces;
  std::vector<Range> gaps;
};

}  // namespace wavechain

#endif
