#include "hardening/soak_data.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "hardening/plain_filter.h"

namespace hardening {
namespace {

class LongFile {
 public:
  explicit LongFile(const std::string& path) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    file.open(path, std::ios::binary);
  }
  void Add(const std::string& bytes) { file << bytes; }
  void Close() {
    file.close();
    if (!file) throw std::runtime_error("the temporary folder has no room for the data");
  }

 private:
  std::ofstream file;
};

// What follows the instant on an event's line.
std::string EventValues(const Kind& kind) {
  if (Is(kind, support::GlotSyn)) return " 0.5 0.6 0.1 0.3 -0.2 0.1\n";
  if (Is(kind, support::FricSyn)) return " 0.5 0.3 -0.2 0.1\n";
  return " 0.5\n";
}

void WriteEvents(LongFile& file, const Kind& kind, Stretch dense) {
  constexpr double Few = 10.0;
  const std::string values = EventValues(kind);
  const auto add = [&](double number) {
    char instant[40];
    std::snprintf(instant, sizeof instant, "%.2f", number * SoakData::EventStep_ms + 0.05);
    file.Add(instant + values);
  };
  const double first = std::max(std::ceil(dense.from_ms / SoakData::EventStep_ms), 1.0);
  for (double number = 1.0; number < std::min(first, Few); ++number) add(number);
  for (double number = first; number * SoakData::EventStep_ms < dense.to_ms; ++number) add(number);
}

void WritePellets(LongFile& file, double to_ms, int columns) {
  const auto line = [columns](const std::string& difference) {
    std::string text;
    for (int column = 0; column < columns; ++column) text += difference + " ";
    return text + "\n";
  };
  const std::string up = line("9");
  const std::string down = line("-9");
  file.Add(line("5000"));
  const auto records = static_cast<std::int64_t>(to_ms / SoakData::RecordStep_ms) + 2;
  for (std::int64_t record = 1; record < records; ++record) file.Add(record % 2 == 1 ? up : down);
}

void WriteTrack(LongFile& file, double to_ms) {
  constexpr double TrackInterval_ms = 1.145081873353945;
  std::string piece(4096, '\0');
  for (std::size_t i = 0; i < piece.size(); ++i) piece[i] = static_cast<char>(i * 101 % 251);
  const double bytes = 1024.0 + 2.0 * to_ms / TrackInterval_ms;
  for (double written = 0.0; written < bytes; written += 4096.0) file.Add(piece);
}

std::string PalateText() {
  std::string text;
  for (int point = 0; point < 200; ++point) {
    text += std::to_string(point * 100) + " " + std::to_string(20000 - point * point) + "\n";
  }
  return text;
}

}  // namespace

SoakData::SoakData(const Kind& kind, Stretch dense) : signal(folder.Path("take.wav")) {
  const auto write = [&](const std::string& path, const auto& content) {
    LongFile file(path);
    content(file);
    file.Close();
  };
  const auto events = [&](LongFile& file) { WriteEvents(file, kind, dense); };
  if (Is(kind, support::GlotSyn)) write(folder.Path("take.gpl"), events);
  if (Is(kind, support::FricSyn)) write(folder.Path("take.fla"), events);
  if (Is(kind, support::PulseSyn)) write(folder.Path("take.gpm"), events);
  if (Is(kind, support::SetTrack)) {
    write(folder.Path("take.iop"), [&](LongFile& file) { WriteTrack(file, dense.to_ms); });
  }
  const bool kinematics = Is(kind, support::BeamData);
  if (kinematics || Is(kind, support::BeamPel)) {
    folder.Write("take.wavpal.dat", PalateText());
    // The pellet readers put the stem of the path in front of the whole path.
    write(folder.Path("take" + folder.Path("take.xyd")),
          [&](LongFile& file) { WritePellets(file, dense.to_ms, kinematics ? 16 : 1); });
  }
}

}  // namespace hardening
