#ifndef WAVEFILTERS_HOST_CHECK_H
#define WAVEFILTERS_HOST_CHECK_H

#include <CLI/App.hpp>

#include "host/run.h"

namespace wavechain {

/// `wavechain check`: everything that a run does but for pulling samples. Every file is opened
/// and looked through, the whole chain is set up, and each step is printed with what it will
/// deliver and with what the library would keep silent about.
struct CheckCommand {
  RunRequest run = {};
  bool json = false;
  bool dot = false;

  /// Adds the command; parsing fills in and acts. Fails as Run does before it pulls; what had been
  /// warned of by then goes to standard error.
  void AddTo(CLI::App& app);
};

}  // namespace wavechain

#endif
