#ifndef WAVEFILTERS_HOST_SOUND_INPUT_H
#define WAVEFILTERS_HOST_SOUND_INPUT_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "host/file.h"
#include "host/raw_format.h"
#include "host/sound_file.h"

namespace wavechain {

/// A recording with all its channels, read block by block: memory does not grow with its length.
/// What comes from a pipe is first copied to a temporary file without a name, since most
/// formats are read by jumping about.
class SoundInput {
 public:
  /// `path` may be "-" for standard input. Fails (input) where the file cannot be opened or is
  /// none that libsndfile knows, and where its header announces more than the file holds,
  /// unless `allowTruncated`. With a layout, the file is raw samples of one channel.
  SoundInput(const std::string& path, bool allowTruncated,
             const std::optional<RawLayout>& rawLayout = std::nullopt);

  /// Reads up to `count` frames (1 or more), a sample of each channel in turn; fewer at the
  /// end, or where the file gives out.
  int Read(float* frames, int count);
  int Read(double* frames, int count);
  /// True once the last frame has been read, or the file gave out early.
  bool AtEnd() const { return position >= length || gaveOut; }
  /// Fails (input) where the file gave out early.
  void RequireIntact() const;

  /// The open file, or the copy of what came through a pipe.
  int Descriptor() const { return file.Descriptor(); }
  const std::string& Path() const { return path; }
  /// The path, or "standard input", for messages.
  const std::string& Name() const { return name; }
  /// In frames.
  std::int64_t Length() const { return length; }
  int Rate() const { return info.samplerate; }
  int Channels() const { return info.channels; }
  /// Container and encoding in words.
  std::string FormatText() const;

 private:
  void OpenFile();
  void Spool();
  void OpenSound();
  void RefuseTruncated() const;
  void RefuseHalfSample() const;
  std::int64_t CountFrames();
  template <class Sample>
  int ReadBy(sf_count_t (*read)(SNDFILE*, Sample*, sf_count_t), Sample* frames, int count);

  std::string path;
  std::string name;
  std::optional<RawLayout> raw;
  File file;
  SF_INFO info = {};
  std::unique_ptr<SoundFile> sound;
  std::int64_t length = 0;
  std::int64_t position = 0;
  bool gaveOut = false;
};

/// What libsndfile's log of a header says about a file that was cut short: how many bytes of
/// audio (or of the whole file) were announced and how many there are. Sizes that programs
/// write when they cannot know them (0x7FFFF000 and beyond) announce nothing.
struct Shortfall {
  std::int64_t announced = 0;
  std::int64_t present = 0;
};
std::optional<Shortfall> FindShortfall(const std::string& headerLog);

}  // namespace wavechain

#endif
