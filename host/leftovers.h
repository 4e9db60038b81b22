#ifndef WAVEFILTERS_HOST_LEFTOVERS_H
#define WAVEFILTERS_HOST_LEFTOVERS_H

#include <string>

#include "host/file.h"
#include "host/unfinished.h"

namespace wavechain {

/// Removes from a folder the temporary files of outputs (OpenOutput) whose writer was killed. Those
/// that are being written, by whatever process on whatever machine, are locked and stay, and so do
/// all where the file system knows no locks.
void RemoveLeftovers(const std::string& folder);

/// A folder for the temporary files of a batch, in the one for all temporary files, whose place it
/// takes for this process and its children. It is gone at the end; the next one removes those of
/// killed programs.
class BatchScratch {
 public:
  /// Fails (output) where none can be made.
  BatchScratch();
  ~BatchScratch();
  BatchScratch(const BatchScratch&) = delete;
  BatchScratch& operator=(const BatchScratch&) = delete;

 private:
  std::string parent;
  std::string folder;
  TemporaryPath abandoned{folder};
  File lock;  // children share it
};

}  // namespace wavechain

#endif
