#include "host/plot_drawing.h"

#include <algorithm>
#include <cmath>

#include "host/plot_label.h"

namespace wavechain {
namespace {

constexpr double TickLength = 4.0;
constexpr double LabelGap = 4.0;      // between a tick and its number
constexpr double HalfDigit = 4.4;     // from a number's baseline to its middle
constexpr double NumberHeight = 9.0;  // of its digits
constexpr double TitleDrop = 4.0;     // of letters below the baseline
constexpr std::size_t MostTitleLines = 4;

// Where the values of a panel's axes lie in the picture.
class Place {
 public:
  Place(const Box& plot, const Panel& panel) : box(plot), x(panel.x.range), y(panel.y.range) {}

  double X(double value) const { return box.x + box.width * (value - x.low) / x.Width(); }
  double Y(double value) const { return box.y + box.height * (1.0 - (value - y.low) / y.Width()); }
  Point operator()(const Point& point) const { return {X(point.x), Y(point.y)}; }

 private:
  Box box;
  Range x;
  Range y;
};

// Lines of a pixel's width are sharp where they run through the middle of pixels.
double Sharp(double at) { return std::floor(at) + 0.5; }

std::vector<Tick> TicksOfX(const Panel& panel, const Box& box) {
  constexpr int PixelsPerTick = 80;
  return NiceTicks(panel.x.range, box.width / PixelsPerTick);
}

std::vector<Tick> TicksOfY(const Axis& axis, const Box& box) {
  constexpr int PixelsPerTick = 28;
  if (axis.step > 0.0) {
    return TicksEvery(axis.step, axis.range);
  }
  return NiceTicks(axis.range, std::max(box.height / PixelsPerTick, 3));
}

// Where text goes whose digits are to have their middle at y.
double Baseline(double y) { return y + HalfDigit; }

std::string Printed(const Tick& tick) {
  constexpr std::string_view Minus = "\xe2\x88\x92";
  return tick.label.starts_with('-') ? std::string(Minus) + tick.label.substr(1) : tick.label;
}

double WidestOfY(const std::vector<Panel>& panels, const Layout& layout) {
  double widest = 0.0;
  for (std::size_t i = 0; i < panels.size(); ++i) {
    if (panels[i].kind == PanelKind::Events) {
      continue;
    }
    for (const Tick& tick : TicksOfY(panels[i].y, layout.plots[i])) {
      widest = std::max(widest, Canvas::TextWidth(Printed(tick)));
    }
  }
  return widest;
}

void DrawGrid(Canvas& canvas, const Panel& panel, const Box& box, const Place& place) {
  for (const Range& gap : panel.gaps) {
    const int from = static_cast<int>(std::floor(place.X(gap.low)));
    const int to = static_cast<int>(std::ceil(place.X(gap.high)));
    canvas.Fill({from, box.y, std::max(to - from, 1), box.height}, GapColour);
  }
  for (const Tick& tick : TicksOfX(panel, box)) {
    const double x = Sharp(place.X(tick.value));
    canvas.Line({x, 1.0 * box.y}, {x, 1.0 * box.y + box.height}, {.colour = GridColour});
  }
  if (panel.kind == PanelKind::Events) {
    return;
  }
  for (const Tick& tick : TicksOfY(panel.y, box)) {
    const double y = Sharp(place.Y(tick.value));
    canvas.Line({1.0 * box.x, y}, {1.0 * box.x + box.width, y}, {.colour = GridColour});
  }
}

void DrawMarks(Canvas& canvas, const Panel& panel, const Box& box, const Place& place) {
  for (const double mark : panel.marks) {
    const double x = Sharp(place.X(mark));
    canvas.Line({x, box.y + 2.0}, {x, box.y + box.height - 2.0}, {.colour = LineColour(1)});
  }
}

void DrawData(Canvas& canvas, const Panel& panel, const Box& box) {
  const Place place(box, panel);
  canvas.Clip(box);
  if (panel.raster) {
    canvas.Fill(box, GapColour);
    canvas.Image(box, *panel.raster);
  } else {
    DrawGrid(canvas, panel, box, place);
  }
  for (const Curve& curve : panel.curves) {
    const double width = panel.kind == PanelKind::Waveform ? 1.0 : 1.5;
    for (const std::vector<Point>& piece : curve.pieces) {
      std::vector<Point> placed(piece.size());
      std::ranges::transform(piece, placed.begin(), place);
      canvas.Polyline(placed, {curve.colour, width, curve.dashed});
    }
  }
  DrawMarks(canvas, panel, box, place);
  canvas.Unclip();
  if (!panel.note.empty()) {
    canvas.Text({box.x + 0.5 * box.width, Baseline(box.y + 0.5 * box.height)}, panel.note,
                Anchor::Middle);
  }
}

void DrawAxisOfX(Canvas& canvas, const Panel& panel, const Box& box, bool withNumbers) {
  const Place place(box, panel);
  const double bottom = box.y + box.height;
  for (const Tick& tick : TicksOfX(panel, box)) {
    const double x = Sharp(place.X(tick.value));
    canvas.Line({x, bottom + 1.0}, {x, bottom + 1.0 + TickLength}, {.colour = FrameColour});
    if (withNumbers) {
      canvas.Text({x, bottom + TickLength + LabelGap + NumberHeight}, Printed(tick),
                  Anchor::Middle);
    }
  }
  if (withNumbers) {
    canvas.Text({box.x + 0.5 * box.width, bottom + 38.0}, panel.x.Text(), Anchor::Middle);
  }
}

// The names of all axes stand in one column, `room` to the left of the panels.
void DrawAxisOfY(Canvas& canvas, const Panel& panel, const Box& box, double room) {
  if (panel.kind == PanelKind::Events) {
    canvas.Text({box.x - TickLength - LabelGap, Baseline(box.y + 0.5 * box.height)}, panel.y.label,
                Anchor::End);
    return;
  }
  const Place place(box, panel);
  for (const Tick& tick : TicksOfY(panel.y, box)) {
    const double y = Sharp(place.Y(tick.value));
    canvas.Line({box.x - 1.0, y}, {box.x - 1.0 - TickLength, y}, {.colour = FrameColour});
    canvas.Text({box.x - 1.0 - TickLength - LabelGap, Baseline(y)}, Printed(tick), Anchor::End);
  }
  canvas.TextUpwards({std::max(box.x - room, NumberHeight), box.y + 0.5 * box.height},
                     panel.y.Text());
}

void DrawColourScale(Canvas& canvas, const Axis& levels, const Box& box) {
  constexpr int Steps = 256;
  constexpr int Gap = 10;
  constexpr int Width = 12;
  Raster raster = {.columns = 1, .rows = Steps};
  for (int row = 0; row < Steps; ++row) {
    raster.cells.push_back(Viridis(1.0 - static_cast<double>(row) / (Steps - 1)));
  }
  const Box bar = {box.x + box.width + Gap, box.y, Width, box.height};
  canvas.Image(bar, raster);
  canvas.Frame(bar, FrameColour);
  const double right = bar.x + bar.width;
  for (const Tick& tick : TicksOfY(levels, bar)) {
    const double share = (tick.value - levels.range.low) / levels.range.Width();
    const double y = std::min(Sharp(bar.y + bar.height * (1.0 - share)), bar.y + bar.height + 0.5);
    canvas.Line({right + 1.0, y}, {right + 1.0 + TickLength, y}, {.colour = FrameColour});
    canvas.Text({right + 1.0 + TickLength + LabelGap, Baseline(y)}, Printed(tick), Anchor::Start);
  }
  canvas.TextUpwards({right + 54.0, box.y + 0.5 * box.height}, levels.Text());
}

// The names of several curves, in the upper right corner.
void DrawKey(Canvas& canvas, const Panel& panel, const Box& box) {
  constexpr double Sample = 26.0;
  constexpr double Inset = 10.0;
  constexpr int LineHeight = 17;
  double widest = 0.0;
  int named = 0;
  for (const Curve& curve : panel.curves) {
    widest = std::max(widest, Canvas::TextWidth(curve.name));
    named += curve.name.empty() ? 0 : 1;
  }
  if (named < 2) {
    return;
  }
  const Box key = {static_cast<int>(box.x + box.width - widest - Sample - 4.0 * Inset), box.y + 8,
                   static_cast<int>(widest + Sample + 3.0 * Inset), named * LineHeight + 8};
  canvas.Fill(key, PaperColour);
  canvas.Frame(key, GridColour);
  double y = key.y + 4.0 + 0.5 * LineHeight;
  for (const Curve& curve : panel.curves) {
    canvas.Line({key.x + Inset, y}, {key.x + Inset + Sample, y}, {curve.colour, 2.0, curve.dashed});
    canvas.Text({key.x + 2.0 * Inset + Sample, Baseline(y)}, curve.name, Anchor::Start);
    y += LineHeight;
  }
}

void DrawPanel(Canvas& canvas, const Panel& panel, const Box& box, const Layout& layout,
               double room) {
  const std::vector<std::string> title = TitleLines(panel.title, box.width);
  double y = box.y - TitleDrop - TitleLineHeight * (static_cast<double>(title.size()) - 1.0) - 4.0;
  for (const std::string& line : title) {
    canvas.Text({1.0 * box.x, y}, line, Anchor::Start, true);
    y += TitleLineHeight;
  }
  DrawData(canvas, panel, box);
  canvas.Frame(box, FrameColour);
  DrawAxisOfX(canvas, panel, box, &box == &layout.plots.back());
  DrawAxisOfY(canvas, panel, box, room);
  if (panel.colours) {
    DrawColourScale(canvas, panel.colours->levels, box);
  }
  DrawKey(canvas, panel, box);
}

double BoldWidth(std::string_view text) { return Canvas::TextWidth(text, true); }

}  // namespace

std::vector<std::string> TitleLines(const std::string& title, int plotWidth) {
  if (title.empty()) {
    return {};
  }
  return WrapTitle(title, plotWidth, MostTitleLines, BoldWidth);
}

void Draw(Canvas& canvas, const std::vector<Panel>& panels, const Layout& layout) {
  const double room = TickLength + 2.0 * LabelGap + NumberHeight + WidestOfY(panels, layout);
  for (std::size_t i = 0; i < panels.size(); ++i) {
    DrawPanel(canvas, panels[i], layout.plots[i], layout, room);
  }
}

}  // namespace wavechain
