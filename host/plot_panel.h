#ifndef WAVEFILTERS_HOST_PLOT_PANEL_H
#define WAVEFILTERS_HOST_PLOT_PANEL_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/plot_axis.h"
#include "host/plot_colours.h"
#include "host/plot_trace.h"

namespace wavechain {

/// A line through data, in pieces between gaps.
struct Curve {
  std::string name = {};  // for the key; empty where the panel has one curve
  Colour colour = InkColour;
  bool dashed = false;
  std::vector<std::vector<Point>> pieces = {};
};

/// A raster of colours, row by row from the top; its cells share the panel's area.
struct Raster {
  int columns = 0;
  int rows = 0;
  std::vector<Colour> cells = {};
};

/// What the colours of a raster mean, from Viridis(0) to Viridis(1).
struct ColourScale {
  Axis levels;
};

enum class PanelKind { Waveform, Spectrogram, Track, Events, Response };

/// One pair of axes and what is drawn between them; nothing here knows of pixels.
struct Panel {
  PanelKind kind = PanelKind::Track;
  std::string name;        // for scripts: "before", "speed"
  std::string title = {};  // above it; none for a panel that goes with the one above
  Axis x = {};
  Axis y = {};
  std::vector<Curve> curves = {};
  std::vector<Range> gaps = {};    // along x, where data are missing
  std::vector<double> marks = {};  // along x
  std::optional<Raster> raster = {};
  std::optional<ColourScale> colours = {};
  std::string note = {};  // in the middle, where there is nothing to draw
};

/// The kind as scripts read it: "waveform".
std::string_view NameOf(PanelKind kind);

}  // namespace wavechain

#endif
