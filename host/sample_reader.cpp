#include "host/sample_reader.h"

#include <fstream>

#include "host/sound_input.h"
#include "host/ssff_reader.h"
#include "host/table_reader.h"

namespace wavechain {
namespace {

class SoundSamples : public SampleReader {
 public:
  SoundSamples(const std::string& path, bool allowTruncated)
      : SampleReader(path == "-" ? "standard input" : path), sound(path, allowTruncated) {
    Describe(sound.Channels(), sound.Rate());
  }
  int Read(double* frames, int count) override {
    const int came = sound.Read(frames, count);
    sound.RequireIntact();
    return came;
  }

 private:
  SoundInput sound;
};

bool BeginsWith(const std::string& path, std::string_view magic) {
  std::ifstream file(path, std::ios::binary);
  std::string start(magic.size(), '\0');
  file.read(start.data(), static_cast<std::streamsize>(start.size()));
  return file && start == magic;
}

}  // namespace

std::unique_ptr<SampleReader> OpenSamples(const std::string& path, bool allowTruncated) {
  if (path != "-" && BeginsWith(path, NpyMagic)) {
    return std::make_unique<NpyReader>(path);
  }
  if (path != "-" && BeginsWith(path, CsvMagic)) {
    return std::make_unique<CsvReader>(path);
  }
  if (path != "-" && BeginsWith(path, SsffMagic)) {
    return std::make_unique<SsffReader>(path);
  }
  return std::make_unique<SoundSamples>(path, allowTruncated);
}

}  // namespace wavechain
