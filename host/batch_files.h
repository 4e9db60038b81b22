#ifndef WAVEFILTERS_HOST_BATCH_FILES_H
#define WAVEFILTERS_HOST_BATCH_FILES_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/batch.h"
#include "host/batch_choices.h"

namespace wavechain {

/// One file of a batch, and what is its own.
struct BatchFile {
  std::string input = {};
  std::string name = {};    // of the output, within the folder of outputs
  std::string output = {};  // its path
  std::string place = {};   // "list.csv:3" where a manifest names it
  std::optional<int> channel = std::nullopt;
  std::vector<FileChoice> choices = {};
  std::int64_t bytes = 0;  // of the input; 0 where it is not there

  /// The request for this file's run.
  RunRequest Run(const BatchRequest& request) const;
};

/// The files of a batch in the order given, each with its output's name. Fails (usage) where there
/// is none, where a manifest is wrong, where a format does not exist, where two files would write
/// one output, and where an output is one of the files that are read.
std::vector<BatchFile> ListFiles(const BatchRequest& request, const ChainSet& chains);

}  // namespace wavechain

#endif
