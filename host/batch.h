#ifndef WAVEFILTERS_HOST_BATCH_H
#define WAVEFILTERS_HOST_BATCH_H

#include <optional>
#include <string>
#include <vector>

#include "host/run.h"
#include "host/shard.h"

namespace wavechain {

/// What `wavechain batch` was asked for.
struct BatchRequest {
  RunRequest run = {};  // what the runs have in common; its output and input are not
  std::vector<std::string> inputs = {};
  std::optional<std::string> manifest = std::nullopt;  // in place of the inputs
  std::string folder = {};                             // of the outputs
  std::optional<std::string> log = std::nullopt;       // in place of standard output
  int jobs = 0;                                        // processes at a time; 0: a processor each
  bool keepGoing = false;
  Shard shard = {};
};

/// Runs the chain over every file, each in a process of its own, so that none sees what another
/// has drawn from the generator of random numbers. An output that is up to date by its record
/// stays. Writes a line of JSON for every file as it ends, and failures to standard error. Fails
/// (usage) before anything is run where the whole cannot be done as asked, and at the end with the
/// status of the first file in the list that failed.
void Batch(const BatchRequest& request);

}  // namespace wavechain

#endif
