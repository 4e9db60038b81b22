#ifndef WAVEFILTERS_HOST_RERUN_H
#define WAVEFILTERS_HOST_RERUN_H

#include <optional>
#include <string>

namespace wavechain {

/// What `wavechain rerun` was asked for.
struct RerunRequest {
  std::string file;                    // an output, or the .json file beside it
  std::optional<std::string> output;   // where to make it again; without, it is compared
  std::optional<std::string> input;    // where the recording lies by now
  std::optional<std::string> folder;   // that names of inputs are relative to
  std::optional<std::string> library;  // in place of the usual one; never the recorded one
  bool otherLibrary = false;           // another library or program may make it
  bool force = false;
  bool quiet = false;
};

/// Makes an output again from the record that it carries, byte for byte. Without a place for it,
/// compares what was made with the file. Returns what to tell. Fails (input) where an input, the
/// library or the program is another one than recorded, and where the bytes are not the same.
std::string Rerun(const RerunRequest& request);

}  // namespace wavechain

#endif
