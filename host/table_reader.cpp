#include "host/table_reader.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <optional>
#include <string_view>

#include "host/failure.h"
#include "host/text.h"

namespace wavechain {
namespace {

// Takes a whole number of at most `most` off the front of the text; none where there is no digit.
std::optional<std::int64_t> TakeNumber(std::string_view& text, std::int64_t most) {
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc{} || text.front() == '-' || number > most) {
    return std::nullopt;
  }
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return number;
}

void TakeIfThere(std::string_view& text, char wanted) {
  text.remove_prefix(text.starts_with(wanted) ? 1 : 0);
}

struct Shape {
  std::int64_t frames = 0;
  std::optional<std::int64_t> columns;
};

// What the header says as in 'shape': (1000, 2) or 'shape': (1000,).
std::optional<Shape> ShapeOf(std::string_view header) {
  constexpr std::string_view Key = "'shape': (";
  const auto key = header.find(Key);
  if (key == std::string_view::npos) {
    return std::nullopt;
  }
  header.remove_prefix(key + Key.size());
  const auto frames = TakeNumber(header, 999'999'999'999'999'999);
  if (!frames) {
    return std::nullopt;
  }
  TakeIfThere(header, ',');
  TakeIfThere(header, ' ');
  const auto columns = TakeNumber(header, 999'999'999);
  if (!header.starts_with(')')) {
    return std::nullopt;
  }
  return Shape{*frames, columns};
}

// The length of the header that follows, by the format's version.
std::size_t HeaderSize(std::ifstream& file) {
  std::array<unsigned char, 2> version = {};
  file.read(reinterpret_cast<char*>(version.data()), version.size());
  std::array<unsigned char, 4> size = {};
  file.read(reinterpret_cast<char*>(size.data()), version[0] == 1 ? 2 : 4);
  std::size_t header = 0;
  for (std::size_t i = 0; i < size.size(); ++i) {
    header |= std::size_t{size[i]} << (8 * i);
  }
  return header;
}

}  // namespace

NpyReader::NpyReader(const std::string& path) : SampleReader(path), file(path, std::ios::binary) {
  constexpr std::size_t LongestHeader = 1 << 16;
  file.seekg(NpyMagic.size());
  std::string header(std::min(HeaderSize(file), LongestHeader), '\0');
  file.read(header.data(), static_cast<std::streamsize>(header.size()));
  const auto shape = ShapeOf(header);
  wide = header.find("'<f8'") != std::string::npos;
  const bool isFloat = wide || header.find("'<f4'") != std::string::npos;
  const bool inRows = header.find("'fortran_order': False") != std::string::npos;
  const bool hasColumns = shape && shape->columns;
  if (!file || !shape || !isFloat || !(inRows || !hasColumns)) {
    Fail(ExitStatus::Input,
         "{}: is no array of float32 or float64 with one axis, or with columns as the second",
         path);
  }
  left = shape->frames;
  Describe(std::max(static_cast<int>(shape->columns.value_or(1)), 1), std::nullopt);
}

int NpyReader::Read(double* frames, int count) {
  const auto wanted = static_cast<int>(std::min<std::int64_t>(count, left));
  const auto values = static_cast<std::size_t>(wanted) * static_cast<std::size_t>(Channels());
  singles.resize(wide ? 0 : values);
  if (wide) {
    file.read(reinterpret_cast<char*>(frames),
              static_cast<std::streamsize>(values * sizeof(double)));
  } else {
    file.read(reinterpret_cast<char*>(singles.data()),
              static_cast<std::streamsize>(values * sizeof(float)));
    std::copy(singles.begin(), singles.end(), frames);
  }
  if (!file) {
    Fail(ExitStatus::Input, "{}: is cut short: {} are missing", Name(),
         Counted(left, "announced sample"));
  }
  left -= wanted;
  return wanted;
}

CsvReader::CsvReader(const std::string& path) : SampleReader(path), file(path) {
  NextLine();
  const auto columns = static_cast<int>(std::ranges::count(line, ','));
  std::optional<double> readRate;
  const std::streampos start = file.tellg();
  if (NextLine()) {
    const double first = Time();
    if (NextLine()) {
      readRate = 1.0 / (Time() - first);
    }
  }
  file.clear();
  file.seekg(start);
  number = 1;
  Describe(columns, readRate);
}

int CsvReader::Read(double* frames, int count) {
  int total = 0;
  while (total < count && NextLine()) {
    ReadCells(frames + static_cast<std::ptrdiff_t>(total) * Channels());
    ++total;
  }
  return total;
}

bool CsvReader::NextLine() {
  if (!std::getline(file, line)) {
    return false;
  }
  if (!line.empty() && line.back() == '\r') {
    line.pop_back();
  }
  ++number;
  return true;
}

double CsvReader::Time() const {
  const std::optional<double> time_s = ParseNumber(line.substr(0, line.find(',')));
  if (!time_s) {
    Refuse("begins with no time in seconds");
  }
  return *time_s;
}

void CsvReader::ReadCells(double* cells) const {
  const auto commas = static_cast<int>(std::ranges::count(line, ','));
  if (commas != Channels()) {
    Refuse(fmt::format("has {}, the first line has {}", Counted(commas + 1, "column"),
                       Channels() + 1));
  }
  std::size_t at = line.find(',') + 1;
  for (int i = 0; i < Channels(); ++i) {
    const std::size_t end = std::min(line.find(',', at), line.size());
    float value = std::numeric_limits<float>::quiet_NaN();
    const char* last = line.data() + end;
    if (end > at) {
      const auto [stop, error] = std::from_chars(line.data() + at, last, value);
      if (error != std::errc() || stop != last) {
        Refuse(fmt::format("'{}' is no number", OneLine(line.substr(at, end - at))));
      }
    }
    cells[i] = value;
    at = end + 1;
  }
}

void CsvReader::Refuse(const std::string& what) const {
  Fail(ExitStatus::Input, "{}: line {}: {}", Name(), number, what);
}

}  // namespace wavechain
