#include "benches/data_files.h"

#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <random>
#include <stdexcept>

namespace wavefilters::bench {
namespace {

constexpr int Rate = 22050;
constexpr double Frame_ms = 6.866;

// The bytes of a number, least significant first.
void Put(std::ostream& out, std::uint_fast32_t value, int bytes) {
  for (int i = 0; i < bytes; ++i) {
    out.put(static_cast<char>(value >> (8 * i) & 0xff));
  }
}

// A new file or folder in the place for temporary ones.
std::string TemporaryName() {
  return std::filesystem::temp_directory_path() / "wavefilters_bench_XXXXXX";
}

}  // namespace

void WriteWavHeader(std::ostream& out, int seconds) {
  const auto bytes = static_cast<std::uint_fast32_t>(seconds) * Rate * 2;
  out << "RIFF";
  Put(out, 36 + bytes, 4);
  out << "WAVEfmt ";
  Put(out, 16, 4);
  Put(out, 1, 2);  // integers
  Put(out, 1, 2);  // of one channel
  Put(out, Rate, 4);
  Put(out, Rate * 2, 4);
  Put(out, 2, 2);
  Put(out, 16, 2);
  out << "data";
  Put(out, bytes, 4);
}

SilentRecording::SilentRecording(int seconds) : path(TemporaryName()) {
  const int file = mkstemp(path.data());
  if (file < 0) {
    throw std::runtime_error(path + ": cannot be made");
  }
  close(file);
  std::ofstream out(path, std::ios::binary);
  WriteWavHeader(out, seconds);
  out.close();
  const auto samples = static_cast<std::uintmax_t>(seconds) * Rate;
  std::filesystem::resize_file(path, 44 + 2 * samples);
}

SilentRecording::~SilentRecording() {
  std::error_code ignored;
  std::filesystem::remove(path, ignored);
}

DataFiles::DataFiles(int seconds) {
  std::string name = TemporaryName();
  if (mkdtemp(name.data()) == nullptr) {
    throw std::runtime_error(name + ": cannot be made");
  }
  folder = name;
  WriteRecording(seconds);
  WriteTrack(seconds);
  WritePellets(seconds);
  WritePalate();
  WriteEvents(seconds);
}

DataFiles::~DataFiles() {
  std::error_code ignored;
  std::filesystem::remove_all(folder, ignored);
}

void DataFiles::WriteRecording(int seconds) const {
  std::ofstream out(Recording(), std::ios::binary);
  WriteWavHeader(out, seconds);
  std::mt19937 random{1};
  for (int i = 0; i < seconds * Rate; ++i) {
    Put(out, (random() & 0x7fff) + 0xc000, 2);  // half of full scale
  }
}

void DataFiles::WriteTrack(int seconds) const {
  std::ofstream out(File("take.iop"), std::ios::binary);
  out << std::string(1024, '\0');
  std::mt19937 random{2};
  for (int i = 0; i < seconds * 1000; ++i) {
    Put(out, random(), 2);
  }
}

void DataFiles::WritePellets(int seconds) const {
  std::ofstream out(Pellets());
  std::mt19937 random{3};
  std::uniform_int_distribution<int> step(-300, 300);
  const int frames = static_cast<int>(seconds * 1000 / Frame_ms) + 1;
  for (int frame = 0; frame < frames; ++frame) {
    for (int column = 0; column < 16; ++column) {
      out << (frame == 0 ? 10000 * column - 50000 : step(random)) << (column < 15 ? ' ' : '\n');
    }
  }
}

void DataFiles::WritePalate() const {
  std::ofstream out(Palate());
  for (int i = 0; i < 2049; ++i) {
    const double x = -60000.0 + 30.0 * i;
    out << x << ' ' << 15000.0 - x * x / 300000.0 << '\n';
  }
}

void DataFiles::WriteEvents(int seconds) const {
  std::ofstream pulses(File("take.gpl"));
  std::ofstream bursts(File("take.fla"));
  std::ofstream impulses(File("take.gpm"));
  std::mt19937 random{4};
  std::uniform_real_distribution<double> ratio(-1.0, 1.0);
  for (int i = 0; i < seconds * 100; ++i) {
    const double time_ms = 50.0 + 10.0 * i;
    pulses << time_ms << " 1000 0.12 0.06";
    bursts << time_ms << " 100";
    for (int j = 0; j < 20; ++j) {
      const double x = ratio(random);
      pulses << ' ' << x;
      bursts << ' ' << x;
    }
    pulses << '\n';
    bursts << '\n';
    impulses << time_ms << " 1000\n";
  }
}

const DataFiles& Data() {
  static const DataFiles files(20);
  return files;
}

}  // namespace wavefilters::bench
