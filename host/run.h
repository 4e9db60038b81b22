#ifndef WAVEFILTERS_HOST_RUN_H
#define WAVEFILTERS_HOST_RUN_H

#include <optional>
#include <string>
#include <vector>

namespace wavechain {

/// What `wavechain run` was asked for.
struct RunRequest {
  std::string input;   // a path, or "-"
  std::string output;  // a path, or "-"
  std::vector<std::string> filters;
  std::optional<std::string> library;
  std::optional<int> channel;
  std::optional<std::string> format;
  std::optional<std::string> encoding;
  bool force = false;
  bool quiet = false;
  bool allowTruncated = false;
};

/// Pulls the recording through the chain into the output, which appears whole or not at all.
/// Fails with the status that the program is to end with.
void Run(const RunRequest& request);

}  // namespace wavechain

#endif
