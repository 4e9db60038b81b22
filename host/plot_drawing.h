#ifndef WAVEFILTERS_HOST_PLOT_DRAWING_H
#define WAVEFILTERS_HOST_PLOT_DRAWING_H

#include <string>
#include <vector>

#include "host/plot_canvas.h"
#include "host/plot_layout.h"
#include "host/plot_panel.h"

namespace wavechain {

/// The lines that a panel's title takes above a panel of that width; none for an empty title.
std::vector<std::string> TitleLines(const std::string& title, int plotWidth);

/// Draws the panels with their axes, each into its place of the layout.
void Draw(Canvas& canvas, const std::vector<Panel>& panels, const Layout& layout);

/// What lies where, for scripts: size, and of each panel name, kind, title, place, axes with
/// unit and range, gaps and marks. JSON, one document with a line end.
std::string DescribeLayout(const std::vector<Panel>& panels, const Layout& layout);

}  // namespace wavechain

#endif
