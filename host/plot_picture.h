#ifndef WAVEFILTERS_HOST_PLOT_PICTURE_H
#define WAVEFILTERS_HOST_PLOT_PICTURE_H

#include <string>
#include <vector>

#include "host/log.h"
#include "host/plot_canvas.h"
#include "host/plot_layout.h"
#include "host/plot_panel.h"

namespace wavechain {

/// Where a picture goes and how it is written.
struct PictureTarget {
  std::string path;  // or "-"
  bool replace = false;
  PictureFormat format = PictureFormat::Png;

  /// Cells of a raster for each unit of the picture: what is no pixel picture may be enlarged.
  double Finesse() const { return format == PictureFormat::Png ? 1.0 : 2.0; }
};

/// Draws the panels and writes the picture, whole or not at all, and says so in the log; the
/// comment goes inside, unless it is empty. It is the last one: the drawing ends. Fails (output)
/// where that is not possible.
void WritePicture(Drawing& drawing, const PictureTarget& target, const std::string& title,
                  const std::vector<Panel>& panels, const Layout& layout,
                  const std::string& comment, Log& log);

}  // namespace wavechain

#endif
