// Recordings of any bytes: read to their end, or refused in one line.

#include <gtest/gtest.h>

#include "fuzz/input.h"
#include "fuzz/target.h"
#include "host/audio_input.h"
#include "host/failure.h"
#include "support/temp_folder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
  static const support::TempFolder folder;
  fuzz::Input input(bytes, count);
  constexpr const char* Names[] = {"a.wav", "a.flac", "a.aiff", "a.w64", "a.rf64", "a.au", "a"};
  const std::string name = Names[input.Int(0, static_cast<int>(std::size(Names)) - 1)];
  const bool allowTruncated = input.Flag();
  const std::optional<int> channel = input.Flag() ? std::optional(input.Int(1, 3)) : std::nullopt;
  const std::string path = folder.Write(name, input.Rest());
  try {
    wavechain::AudioInput recording(path, channel, allowTruncated);
    std::vector<float> block(4096);
    // A short file may announce hours: some blocks are enough.
    for (int i = 0; i < 50 && !recording.AtEnd(); ++i) {
      const int came = recording.Read(block.data(), static_cast<int>(block.size()));
      EXPECT_GE(came, 0);
      EXPECT_LE(came, static_cast<int>(block.size()));
    }
    if (recording.AtEnd()) recording.RequireIntact();
  } catch (const wavechain::Failure& failure) {
    EXPECT_EQ(std::string(failure.what()).find('\n'), std::string::npos) << failure.what();
  }
  std::filesystem::remove(path);
  return 0;
}
