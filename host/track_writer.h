#ifndef WAVEFILTERS_HOST_TRACK_WRITER_H
#define WAVEFILTERS_HOST_TRACK_WRITER_H

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "host/gaps.h"
#include "host/signal_writer.h"
#include "host/table_writer.h"

namespace wavechain {

/// Writes one signal as a table of one column, called "value", with a column "valid" beside it
/// where gaps are known.
class TrackWriter : public SignalWriter {
 public:
  TrackWriter(int descriptor, const std::string& name, ContainerKind kind, const SignalInfo& signal,
              std::optional<Gaps> signalGaps, const std::string& comment);

  void Write(const float* samples, int count) override;
  void Close() override { table->Close(); }
  double Rate() const override { return table->Rate(); }

 private:
  std::unique_ptr<TableWriter> table;
  std::optional<Gaps> gaps;
  std::vector<unsigned char> valid;
  std::int64_t total = 0;
};

}  // namespace wavechain

#endif
