#ifndef WAVEFILTERS_HOST_PLOT_COMMAND_H
#define WAVEFILTERS_HOST_PLOT_COMMAND_H

#include <CLI/App.hpp>

#include "host/plot.h"

namespace wavechain {

/// Adds `wavechain plot` to the program. The request must outlive it.
void AddPlot(CLI::App& app, PlotRequest& request);

}  // namespace wavechain

#endif
