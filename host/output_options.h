#ifndef WAVEFILTERS_HOST_OUTPUT_OPTIONS_H
#define WAVEFILTERS_HOST_OUTPUT_OPTIONS_H

#include <CLI/App.hpp>

#include "host/run.h"

namespace wavechain {

/// Gives the command the option --track. `request` must outlive the command, as below.
void AddTrackOption(CLI::App& command, RunRequest& request);

/// Gives the command the options that say what an output is to be like: --encoding, --format,
/// --seed and --no-validity. Returns --format.
CLI::Option* AddOutputOptions(CLI::App& command, RunRequest& request);

}  // namespace wavechain

#endif
