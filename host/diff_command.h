#ifndef WAVEFILTERS_HOST_DIFF_COMMAND_H
#define WAVEFILTERS_HOST_DIFF_COMMAND_H

#include <CLI/App.hpp>

#include "host/diff.h"
#include "host/failure.h"

namespace wavechain {

/// `wavechain diff`, which answers by its exit status as such programs do: 0 for same, 1 for
/// different, 2 for trouble of any kind.
struct DiffCommand {
  DiffRequest request = {};
  bool asked = false;
  bool different = false;

  /// Adds the command; parsing fills in and acts.
  void AddTo(CLI::App& app);
  /// The status for a failure while this command ran, or the same for any other.
  int Status(ExitStatus status) const;
};

}  // namespace wavechain

#endif
