#ifndef WAVEFILTERS_HOST_INPUT_OPTIONS_H
#define WAVEFILTERS_HOST_INPUT_OPTIONS_H

#include <CLI/App.hpp>

#include "host/run.h"

namespace wavechain {

/// Gives the command the options that say what is fed to a chain and how its data files are
/// taken: --channel, --silence, --rate, -t, --allow-missing, --allow-truncated, --library-tail
/// and --library. `request` must outlive the command. Returns --silence.
CLI::Option* AddInputOptions(CLI::App& command, RunRequest& request);

}  // namespace wavechain

#endif
