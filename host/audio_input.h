#ifndef WAVEFILTERS_HOST_AUDIO_INPUT_H
#define WAVEFILTERS_HOST_AUDIO_INPUT_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/sound_input.h"

namespace wavechain {

/// One channel of a recording, read block by block.
class AudioInput {
 public:
  /// Opens `path` as SoundInput does. Channels count from 1. Fails (usage) where a file of
  /// several channels comes without a choice, or with a choice that it does not have. The choice
  /// is called by `channelArgument`, which the number follows, in messages.
  AudioInput(const std::string& path, std::optional<int> wantedChannel, bool allowTruncated,
             std::string_view channelArgument = "--channel ",
             const std::optional<RawLayout>& raw = std::nullopt);

  /// Reads up to `count` samples (1 or more); fewer at the end, or where the file gives out.
  int Read(float* samples, int count);
  /// True once the last sample has been read, or the file gave out early.
  bool AtEnd() const { return sound.AtEnd(); }
  /// Fails (input) where the file gave out early.
  void RequireIntact() const { sound.RequireIntact(); }

  /// The open file, or the copy of what came through a pipe.
  int Descriptor() const { return sound.Descriptor(); }
  const std::string& Path() const { return sound.Path(); }
  /// The path, or "standard input", for messages.
  const std::string& Name() const { return sound.Name(); }
  std::int64_t Length() const { return sound.Length(); }
  int Rate() const { return sound.Rate(); }
  int Channels() const { return sound.Channels(); }
  int Channel() const { return channel; }
  /// Container and encoding in words.
  std::string FormatText() const { return sound.FormatText(); }

 private:
  SoundInput sound;
  int channel = 1;
  std::vector<float> frames;  // a block of all channels
};

}  // namespace wavechain

#endif
