// render_phrase FOLDER WAV: what GlotSyn and then FricSyn make of silence by the events in
// FOLDER/phrase.gpl and FOLDER/phrase.fla, at 16 kHz, as a WAV file of 32-bit floats.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "support/filter.h"

namespace {

constexpr int Rate = 16000;
constexpr int Length = 29120;

void Put(std::ofstream& file, std::uint32_t value, int bytes) {
  for (int byte = 0; byte < bytes; ++byte) {
    file.put(static_cast<char>(value >> (8 * byte) & 0xFFU));
  }
}

void WriteWave(const std::string& path, const support::Samples& samples) {
  std::ofstream file(path, std::ios::binary);
  const auto size = static_cast<std::uint32_t>(4 * samples.size());
  file << "RIFF";
  Put(file, 36 + size, 4);
  file << "WAVEfmt ";
  Put(file, 16, 4);
  Put(file, 3, 2);  // floats
  Put(file, 1, 2);  // channels
  Put(file, Rate, 4);
  Put(file, 4 * Rate, 4);
  Put(file, 4, 2);
  Put(file, 32, 2);
  file << "data";
  Put(file, size, 4);
  file.write(reinterpret_cast<const char*>(samples.data()), size);
}

// The filters in order, each pulled by the next.
support::Samples Render(const std::string& folder) {
  support::CallLog log;
  support::SourceMock silence("silence", log, support::Constant(Length));
  silence.description.interval_ms = 1000.0 / Rate;
  silence.description.name = folder + "/phrase.wav";
  support::Filter voiced = support::MakeFilter(support::GlotSyn);
  voiced.Set_src_list(silence);
  support::Filter voice = support::MakeFilter(support::FricSyn);
  voiced.Slots().AddRef(voiced.Object());  // for the list, which takes it over
  void* source = voiced.Object();
  voice.Slots().Set_src_list(voice.Object(), &source, 1);
  std::srand(1);
  const support::Samples phrase = voice.PullAll({1024});
  voice.Release();
  return phrase;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fputs("usage: render_phrase FOLDER WAV\n", stderr);
    return 2;
  }
  WriteWave(argv[2], Render(argv[1]));
  return 0;
}
