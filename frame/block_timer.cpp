#include "frame/block_timer.h"

#include <limits>

namespace wavefilters {
namespace {

double ReadClock(IConsoleOutC* console) {
  double seconds = 0.0;
  if (console != nullptr) {
    console->GetTime(&seconds);
  }
  return seconds;
}

}  // namespace

void BlockTimer::Start(IConsoleOutC* console) { start = ReadClock(console); }

void BlockTimer::Stop(IConsoleOutC* console, std::int64_t operations) {
  const double now = ReadClock(console);
  sum += (now - start) * 1e9 / static_cast<double>(operations);
  // Days of single-sample pulls would overflow the count; the average then drifts instead.
  if (count < std::numeric_limits<std::int32_t>::max()) {
    ++count;
  }
}

void BlockTimer::Report(IConsoleOutC* console, const char* caption) const {
  if (console == nullptr) {
    return;
  }
  console->PutStr(caption);
  if (count > 0) {
    console->PutNum(10, 3, sum / count);
  }
  console->NewLine();
}

}  // namespace wavefilters
