#ifndef WAVEFILTERS_HOST_AUDIO_INPUT_H
#define WAVEFILTERS_HOST_AUDIO_INPUT_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/file.h"
#include "host/sound_file.h"

namespace wavechain {

/// One channel of a recording, read block by block: memory does not grow with its length.
/// What comes from a pipe is first copied to a temporary file without a name, since most
/// formats are read by jumping about.
class AudioInput {
 public:
  /// `path` may be "-" for standard input. Channels count from 1. Fails (input) where the
  /// file cannot be opened or is none that libsndfile knows, and where its header announces
  /// more than the file holds, unless `allowTruncated`; fails (usage) where a file of several
  /// channels comes without a choice, or with a choice that it does not have. The choice is
  /// called by `channelArgument`, which the number follows, in messages.
  AudioInput(const std::string& path, std::optional<int> wantedChannel, bool allowTruncated,
             std::string_view channelArgument = "--channel ");

  /// Reads up to `count` samples (1 or more); fewer at the end, or where the file gives out.
  int Read(float* samples, int count);
  /// True once the last sample has been read, or the file gave out early.
  bool AtEnd() const { return position >= length || gaveOut; }
  /// Fails (input) where the file gave out early.
  void RequireIntact() const;

  const std::string& Path() const { return path; }
  /// The path, or "standard input", for messages.
  const std::string& Name() const { return name; }
  std::int64_t Length() const { return length; }
  int Rate() const { return info.samplerate; }
  int Channels() const { return info.channels; }
  int Channel() const { return channel; }
  /// Container and encoding in words.
  std::string FormatText() const;

 private:
  void OpenFile();
  void Spool();
  void OpenSound();
  void ChooseChannel(std::optional<int> wanted, std::string_view argument);
  void RefuseTruncated() const;
  std::int64_t CountSamples();
  int ReadFrames(float* samples, int count);

  std::string path;
  std::string name;
  File file;
  SF_INFO info = {};
  std::unique_ptr<SoundFile> sound;
  int channel = 1;
  std::vector<float> frames;  // a block of all channels
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
