#ifndef WAVEFILTERS_HOST_AUDIO_WRITER_H
#define WAVEFILTERS_HOST_AUDIO_WRITER_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/signal_writer.h"
#include "host/sound_file.h"

namespace wavechain {

/// Fails (output) where so many samples do not fit into a file of the format.
void RequireRoom(const std::string& name, const OutputFormat& format, std::int64_t samples);

/// Writes one signal as an audio file. Float files hold the samples as they are; integer files
/// hold them divided by the signal's full scale, rounded to the nearest step (ties to even),
/// without dither, limited to the range. The same samples always give the same bytes.
class AudioWriter : public SignalWriter {
 public:
  /// Starts a file on an open descriptor, which stays the caller's. `name` is for messages, the
  /// comment goes into the file where its format has a place for one.
  /// Fails (output) where it cannot be started, where the announced length would not fit into
  /// the container, and (usage) where integers are wanted of a signal without a full scale.
  AudioWriter(int descriptor, std::string fileName, const OutputFormat& outputFormat,
              const SignalInfo& signal, const std::string& comment);

  void Write(const float* samples, int count) override;
  void Close() override;
  std::int64_t Clipped() const override { return clipped; }
  std::int64_t Zeroed() const override { return zeroed; }
  double Rate() const override { return rate; }
  /// All these formats want a whole number.
  bool RateRounded() const override { return rateRounded; }

 private:
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
