#ifndef WAVEFILTERS_HOST_AUDIO_WRITER_H
#define WAVEFILTERS_HOST_AUDIO_WRITER_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/audio_format.h"
#include "host/signal_descriptor.h"
#include "host/sound_file.h"

namespace wavechain {

/// Writes one signal as an audio file. Float files hold the samples as they are; integer files
/// hold them divided by the signal's full scale, rounded to the nearest step (ties to even),
/// without dither, limited to the range. The same samples always give the same bytes.
class AudioWriter {
 public:
  /// Starts a file on an open descriptor, which stays the caller's. `name` is for messages.
  /// Fails (output) where it cannot be started, where the announced length would not fit into
  /// the container, and (usage) where integers are wanted of a signal without a full scale.
  AudioWriter(int descriptor, std::string fileName, const OutputFormat& outputFormat,
              const SignalInfo& signal);

  /// Fails (output) where the samples cannot all be written.
  void Write(const float* samples, int count);
  /// Completes the file, after which nothing may be written. Fails (output) like Write.
  void Close();

  /// Samples that lay outside the range of the integers.
  std::int64_t Clipped() const { return clipped; }
  /// Samples that were not a number, and written as 0 (integer files only).
  std::int64_t Zeroed() const { return zeroed; }
  int Rate() const { return rate; }
  /// Whether the signal's sampling rate is not a whole number, as all these formats want it.
  bool RateRounded() const { return rateRounded; }

 private:
  void RequireRoom(std::int64_t samples) const;
  void WriteIntegers(const float* samples, int count);
  void ClearPeakTime() const;
  [[noreturn]] void Refuse() const;

  int descriptor;
  std::string name;
  OutputFormat format;
  double fullScale;
  int rate = 0;
  bool rateRounded = false;
  std::unique_ptr<SoundFile> sound;
  std::vector<double> doubles;
  std::vector<int> integers;
  std::int64_t total = 0;
  std::int64_t clipped = 0;
  std::int64_t zeroed = 0;
};

}  // namespace wavechain

#endif
