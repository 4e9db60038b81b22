#ifndef WAVEFILTERS_BENCHES_DATA_FILES_H
#define WAVEFILTERS_BENCHES_DATA_FILES_H

#include <filesystem>
#include <iosfwd>
#include <string>

namespace wavefilters::bench {

/// Writes the header of a file of 16-bit samples of one channel at 22.05 kHz.
void WriteWavHeader(std::ostream& out, int seconds);

/// A recording of silence of any length, which takes no room on the disk; gone at the end.
class SilentRecording {
 public:
  explicit SilentRecording(int seconds);
  ~SilentRecording();
  SilentRecording(const SilentRecording&) = delete;
  SilentRecording& operator=(const SilentRecording&) = delete;

  const std::string& Path() const { return path; }

 private:
  std::string path;
};

/// A folder of its own with a recording and every data file that a filter may look for beside it.
/// It goes with its files at the end.
class DataFiles {
 public:
  /// The recording has `seconds` of noise at 22.05 kHz, 16 bits; pulses come 100 times a second.
  explicit DataFiles(int seconds);
  ~DataFiles();
  DataFiles(const DataFiles&) = delete;
  DataFiles& operator=(const DataFiles&) = delete;

  std::string Recording() const { return folder / "take.wav"; }
  std::string Pellets() const { return folder / "take.xyd"; }
  /// Where the filters look for the palate of a recording whose path has no backslash.
  std::string Palate() const { return Recording() + "pal.dat"; }
  std::string File(const std::string& name) const { return folder / name; }

 private:
  void WriteRecording(int seconds) const;
  void WriteTrack(int seconds) const;
  void WritePellets(int seconds) const;
  void WritePalate() const;
  void WriteEvents(int seconds) const;

  std::filesystem::path folder;
};

/// The recording, made at the first call and kept to the end of the program.
const DataFiles& Data();

}  // namespace wavefilters::bench

#endif
