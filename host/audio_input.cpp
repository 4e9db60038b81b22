#include "host/audio_input.h"

#include <algorithm>

#include "host/failure.h"

namespace wavechain {
namespace {

constexpr int BlockFrames = 4096;

// The channel to read of a recording, from 1.
int ChooseChannel(const SoundInput& sound, std::optional<int> wanted, std::string_view argument) {
  if (!wanted && sound.Channels() > 1) {
    Fail(ExitStatus::Usage, "{}: has {} channels; choose one by {}1 to {}{}", sound.Name(),
         sound.Channels(), argument, argument, sound.Channels());
  }
  const int channel = wanted.value_or(1);
  if (channel < 1 || channel > sound.Channels()) {
    Fail(ExitStatus::Usage, "{}{}: {} has {}", argument, channel, sound.Name(),
         sound.Channels() == 1 ? "1 channel" : fmt::format("channels 1 to {}", sound.Channels()));
  }
  return channel;
}

}  // namespace

AudioInput::AudioInput(const std::string& recording, std::optional<int> wantedChannel,
                       bool allowTruncated, std::string_view channelArgument,
                       const std::optional<RawLayout>& raw)
    : sound(recording, allowTruncated, raw),
      channel(ChooseChannel(sound, wantedChannel, channelArgument)) {
  if (sound.Channels() > 1) {
    frames.resize(static_cast<std::size_t>(sound.Channels()) * BlockFrames);
  }
}

int AudioInput::Read(float* samples, int count) {
  if (frames.empty()) {
    return sound.Read(samples, count);
  }
  int total = 0;
  while (total < count) {
    const int came = sound.Read(frames.data(), std::min(count - total, BlockFrames));
    if (came == 0) {
      break;
    }
    const float* from = frames.data() + (channel - 1);
    for (int i = 0; i < came; ++i) {
      samples[total + i] = from[static_cast<std::ptrdiff_t>(i) * sound.Channels()];
    }
    total += came;
  }
  return total;
}

}  // namespace wavechain
