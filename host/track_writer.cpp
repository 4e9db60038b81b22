#include "host/track_writer.h"

namespace wavechain {

TrackWriter::TrackWriter(int descriptor, const std::string& name, ContainerKind kind,
                         const SignalInfo& signal, std::optional<Gaps> signalGaps,
                         const std::string& comment)
    : gaps(std::move(signalGaps)) {
  Table described = {signal.interval_ms, {{"value", signal.units, gaps ? "valid" : ""}}, comment};
  table = MakeTableWriter(kind, descriptor, name, std::move(described));
}

void TrackWriter::Write(const float* samples, int count) {
  if (gaps) {
    valid.resize(static_cast<std::size_t>(count));
    gaps->Mark(total, valid);
  }
  const ColumnBlock block = {samples, valid.data(), count};
  table->Write({&block, 1}, count);
  total += count;
}

}  // namespace wavechain
