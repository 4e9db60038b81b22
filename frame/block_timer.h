#ifndef WAVEFILTERS_FRAME_BLOCK_TIMER_H
#define WAVEFILTERS_FRAME_BLOCK_TIMER_H

#include <cstdint>

#include "frame/interfaces.h"

namespace wavefilters {

/// Times the blocks that a filter works through, by the clock of the host's console, and
/// reports the average. Sum and count run on for the whole life of the filter, through
/// every new source. Without a console each reading is 0: blocks are counted, not timed.
class BlockTimer {
 public:
  /// Reads the clock ahead of a block's work.
  void Start(IConsoleOutC* console);
  /// Reads the clock after it and adds the block's nanoseconds per operation.
  /// `operations` is above 0.
  void Stop(IConsoleOutC* console, std::int64_t operations);
  /// Writes caption, average (if any block was timed) and line end. Nothing without a console.
  void Report(IConsoleOutC* console, const char* caption) const;

 private:
  double sum = 0.0;  // of nanoseconds per operation, one term a block
  std::int32_t count = 0;
  double start = 0.0;  // seconds
};

}  // namespace wavefilters

#endif
