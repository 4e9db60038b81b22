#ifndef WAVEFILTERS_HOST_PLOT_LAYOUT_H
#define WAVEFILTERS_HOST_PLOT_LAYOUT_H

#include <optional>
#include <string_view>
#include <vector>

#include "host/plot_panel.h"

namespace wavechain {

/// Width and height of a picture in its own units: pixels, or points in a PDF.
struct PictureSize {
  int width = 0;
  int height = 0;
};

/// A rectangle in a picture, from its upper left corner.
struct Box {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
};

/// What a panel asks of the layout.
struct PanelPlan {
  PanelKind kind = PanelKind::Track;
  int titleLines = 0;
};

/// Where the panels of a picture go: one below the other, all of one width, so that their
/// common axis can be read straight down. Its numbers stand below the last panel.
struct Layout {
  PictureSize size = {};
  std::vector<Box> plots = {};  // between the axes, one for each panel
};

constexpr int DefaultWidth = 1000;
constexpr int TitleLineHeight = 17;

/// Reads "1200x800"; fails (usage) on anything else and outside 200 to 10000.
PictureSize ParseSize(std::string_view text);

/// The width that all panels have in a picture of that width; spectrograms have a scale of
/// colours beside them.
int PlotWidth(int pictureWidth, bool hasSpectrogram);

/// Places the panels, each as high as suits its kind, or sharing the height that is wanted in
/// the same proportions. Fails (usage) where the picture is too small for them.
Layout LayOut(const std::vector<PanelPlan>& panels, const std::optional<PictureSize>& wanted);

}  // namespace wavechain

#endif
