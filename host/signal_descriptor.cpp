#include "host/signal_descriptor.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace wavechain {

int SignalDescriptor::GetLength() {
  constexpr std::int64_t Most = std::numeric_limits<int>::max();
  return static_cast<int>(std::min(info.length, Most));
}

void SignalDescriptor::SetLength(int length) {
  // A filter that writes back the limited length of a longer signal has changed nothing.
  if (length != GetLength()) {
    info.length = std::max(length, 0);
  }
}

void SignalDescriptor::GetPeriod(double* interval_ms) { *interval_ms = info.interval_ms; }

void SignalDescriptor::SetPeriod(double interval_ms) { info.interval_ms = interval_ms; }

void SignalDescriptor::SetRange(double fullScale) { info.fullScale = fullScale; }

void SignalDescriptor::SetUnits(const char* units) { info.units = units == nullptr ? "" : units; }

void SignalDescriptor::GetName(char* buffer, int size) {
  if (buffer == nullptr || size < 1) {
    return;
  }
  const std::size_t room = static_cast<std::size_t>(size) - 1;
  const std::size_t length = std::min(room, info.name.size());
  std::memcpy(buffer, info.name.data(), length);
  buffer[length] = '\0';
}

}  // namespace wavechain
