#ifndef WAVEFILTERS_HOST_IMPULSE_SOURCE_H
#define WAVEFILTERS_HOST_IMPULSE_SOURCE_H

#include <cstdint>

#include "host/host_source.h"

namespace wavechain {

/// The head of a chain that is measured: one sample of 1 among zeros.
class ImpulseSource : public HostSource {
 public:
  int TransmitNow(float* buffer, int count, int& produced) override;
  void Dispose() override {}
  bool EndOfSrc() override { return delivered >= Info().length; }

 protected:
  /// `samples` in all, `rate` (Hz) a second; the one at `instant` is 1.
  ImpulseSource(std::int64_t samples, double rate, std::int64_t instant);
  ~ImpulseSource() = default;

 private:
  std::int64_t impulse;
  std::int64_t delivered = 0;
};

}  // namespace wavechain

#endif
