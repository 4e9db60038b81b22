#ifndef WAVEFILTERS_HOST_SAMPLE_READER_H
#define WAVEFILTERS_HOST_SAMPLE_READER_H

#include <memory>
#include <optional>
#include <string>

namespace wavechain {

/// Reads back, block by block, what a file of any format that the program writes or reads holds.
class SampleReader {
 public:
  virtual ~SampleReader() = default;
  /// Reads up to `count` frames, a sample of each channel in turn; fewer only at the end.
  /// Fails (input) where the file is damaged.
  virtual int Read(double* frames, int count) = 0;
  /// Channels of a recording, columns of a table.
  int Channels() const { return channels; }
  /// In Hz; nothing where the file does not say.
  std::optional<double> Rate() const { return rate; }
  /// The file's name, for messages.
  const std::string& Name() const { return name; }

 protected:
  explicit SampleReader(std::string fileName) : name(std::move(fileName)) {}
  void Describe(int channelCount, std::optional<double> samplingRate) {
    channels = channelCount;
    rate = samplingRate;
  }

 private:
  std::string name;
  int channels = 1;
  std::optional<double> rate;
};

/// Opens a recording ("-" is standard input), a .npy or .ssff file, or a .csv table with a first
/// column time_s. Cells of a table are read as the 32-bit floats that they were written from, empty
/// ones as not a number. Fails (input) where the file cannot be opened or understood.
std::unique_ptr<SampleReader> OpenSamples(const std::string& path, bool allowTruncated);

}  // namespace wavechain

#endif
