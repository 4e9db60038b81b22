#ifndef WAVEFILTERS_HOST_RECORD_COMMANDS_H
#define WAVEFILTERS_HOST_RECORD_COMMANDS_H

#include <CLI/App.hpp>
#include <string>

#include "host/rerun.h"

namespace wavechain {

/// `wavechain show` and `wavechain rerun`, which read how an output was made.
struct RecordCommands {
  std::string shown = {};
  bool json = false;
  RerunRequest rerun = {};

  /// Adds both; parsing fills in and acts.
  void AddTo(CLI::App& app);
};

}  // namespace wavechain

#endif
