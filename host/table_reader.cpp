#include "host/table_reader.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <regex>

#include "host/failure.h"
#include "host/text.h"

namespace wavechain {
namespace {

std::int64_t WholeNumber(const std::string& digits) {
  std::int64_t number = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), number);
  return number;
}

// The length of the header that follows, by the format's version.
std::size_t HeaderSize(std::ifstream& file) {
  std::array<unsigned char, 2> version = {};
  file.read(reinterpret_cast<char*>(version.data()), version.size());
  std::array<unsigned char, 4> size = {};
  file.read(reinterpret_cast<char*>(size.data()), version[0] == 1 ? 2 : 4);
  return size[0] | size[1] << 8U | std::size_t{size[2]} << 16U | std::size_t{size[3]} << 24U;
}

}  // namespace

NpyReader::NpyReader(const std::string& path) : SampleReader(path), file(path, std::ios::binary) {
  constexpr std::size_t LongestHeader = 1 << 16;
  file.seekg(NpyMagic.size());
  std::string header(std::min(HeaderSize(file), LongestHeader), '\0');
  file.read(header.data(), static_cast<std::streamsize>(header.size()));
  std::smatch shape;
  const bool hasShape =
      std::regex_search(header, shape, std::regex(R"('shape': \((\d{1,18}),? ?(\d{1,9})?\))"));
  wide = header.find("'<f8'") != std::string::npos;
  const bool isFloat = wide || header.find("'<f4'") != std::string::npos;
  const bool inRows = header.find("'fortran_order': False") != std::string::npos;
  const bool hasColumns = hasShape && shape[2].matched;
  if (!file || !hasShape || !isFloat || !(inRows || !hasColumns)) {
    Fail(ExitStatus::Input,
         "{}: is no array of float32 or float64 with one axis, or with columns as the second",
         path);
  }
  left = WholeNumber(shape[1]);
  Describe(hasColumns ? std::max(static_cast<int>(WholeNumber(shape[2])), 1) : 1, std::nullopt);
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
