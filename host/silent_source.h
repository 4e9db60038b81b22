#ifndef WAVEFILTERS_HOST_SILENT_SOURCE_H
#define WAVEFILTERS_HOST_SILENT_SOURCE_H

#include <cstdint>

#include "host/host_source.h"

namespace wavechain {

/// The head of a chain that has no recording: zeros, for filters that add their own signal.
class SilentSource : public HostSource {
 public:
  int TransmitNow(float* buffer, int count, int& produced) override;
  void Dispose() override {}
  bool EndOfSrc() override { return delivered >= Info().length; }

 protected:
  /// `samples` of them, `rate` (Hz) a second.
  SilentSource(std::int64_t samples, double rate);
  ~SilentSource() = default;

 private:
  std::int64_t delivered = 0;
};

}  // namespace wavechain

#endif
