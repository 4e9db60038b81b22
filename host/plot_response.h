#ifndef WAVEFILTERS_HOST_PLOT_RESPONSE_H
#define WAVEFILTERS_HOST_PLOT_RESPONSE_H

#include <string>

#include "host/plot.h"

namespace wavechain {

/// Draws the frequency responses of the request's chains, measured through the library, on common
/// axes: the gain in dB and, by choice, the phase. Otherwise as Plot, which calls it where a
/// response is asked for.
std::string PlotResponse(const PlotRequest& request);

}  // namespace wavechain

#endif
