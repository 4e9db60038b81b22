#ifndef WAVEFILTERS_HOST_RECORDING_SOURCE_H
#define WAVEFILTERS_HOST_RECORDING_SOURCE_H

#include <cstdint>

#include "host/audio_input.h"
#include "host/host_source.h"

namespace wavechain {

/// The head of a chain: one channel of a recording.
class RecordingSource : public HostSource {
 public:
  /// Fewer than asked only at the end. Requests of 0 and below get 0 samples.
  int TransmitNow(float* buffer, int count, int& produced) override;
  /// The file stays open; it is the owner's.
  void Dispose() override {}
  /// True as soon as the last sample has been delivered, or when the file gave out early
  /// (the input then knows why).
  bool EndOfSrc() override;

  /// Samples delivered so far that are infinite or not a number.
  std::int64_t NonFinite() const { return nonFinite; }

 protected:
  /// The input must outlive the source.
  explicit RecordingSource(AudioInput& recording);
  ~RecordingSource() = default;

 private:
  AudioInput& input;
  std::int64_t nonFinite = 0;
};

/// How many of the samples are infinite or not a number.
std::int64_t CountNonFinite(const float* samples, int count);

}  // namespace wavechain

#endif
