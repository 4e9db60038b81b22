#ifndef WAVEFILTERS_HOST_BATCH_COMMAND_H
#define WAVEFILTERS_HOST_BATCH_COMMAND_H

#include <CLI/App.hpp>

#include "host/batch.h"

namespace wavechain {

/// Adds `wavechain batch`; parsing fills the request, which must outlive the command, and acts.
void AddBatch(CLI::App& app, BatchRequest& request);

}  // namespace wavechain

#endif
