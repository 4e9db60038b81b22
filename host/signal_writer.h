#ifndef WAVEFILTERS_HOST_SIGNAL_WRITER_H
#define WAVEFILTERS_HOST_SIGNAL_WRITER_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "host/audio_format.h"
#include "host/gaps.h"
#include "host/signal_descriptor.h"

namespace wavechain {

/// Writes one signal as a file of some format. The same samples always give the same bytes.
class SignalWriter {
 public:
  virtual ~SignalWriter() = default;
  /// Fails (output) where the samples cannot all be written.
  virtual void Write(const float* samples, int count) = 0;
  /// Completes the file, after which nothing may be written. Fails (output) like Write.
  virtual void Close() = 0;
  /// Samples that lay outside the range of the format's integers, and were limited to it.
  virtual std::int64_t Clipped() const { return 0; }
  /// Samples that were not a number, and written as 0 for want of a better integer.
  virtual std::int64_t Zeroed() const { return 0; }
  /// What the format made of the sampling rate, in Hz.
  virtual double Rate() const = 0;
  /// Whether that is not the signal's own.
  virtual bool RateRounded() const { return false; }
};

/// Starts a file of the format on an open descriptor, which stays the caller's. `name` is for
/// messages; `comment`, and which samples have no data behind them, go into the file where the
/// format has a place for them.
std::unique_ptr<SignalWriter> MakeWriter(int descriptor, const std::string& name,
                                         const OutputFormat& format, const SignalInfo& signal,
                                         const std::optional<Gaps>& gaps,
                                         const std::string& comment);

}  // namespace wavechain

#endif
