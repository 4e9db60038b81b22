#include "host/ssff_reader.h"

#include <cstdint>
#include <cstring>
#include <sstream>

#include "host/failure.h"
#include "host/text.h"

namespace wavechain {
namespace {

template <class Value>
double Taken(const char*& at) {
  Value value = {};
  std::memcpy(&value, at, sizeof value);
  at += sizeof value;
  return value;
}

}  // namespace

SsffReader::SsffReader(const std::string& path) : SampleReader(path), file(path, std::ios::binary) {
  std::string line;
  std::optional<double> recordRate;
  bool ended = false;
  while (!ended && std::getline(file, line)) {
    std::istringstream words(line);
    std::string key;
    std::string value;
    std::string type;
    int count = 0;
    words >> key >> value;
    if (key == "Machine" && value != "IBM-PC") {
      Fail(ExitStatus::Input, "{}: its numbers are not in the order of IBM-PC", path);
    } else if (key == "Record_Freq") {
      recordRate = ParseNumber(value);
    } else if (key == "Column" && words >> type >> count) {
      AddColumn(value, type, count);
    }
    ended = key.starts_with("-----");
  }
  if (!ended || numbers.empty()) {
    Fail(ExitStatus::Input, "{}: its header has no end, or no column", path);
  }
  Describe(static_cast<int>(numbers.size()), recordRate);
}

void SsffReader::AddColumn(const std::string& column, const std::string& type, int count) {
  const Kind kind = type == "FLOAT"    ? Kind::Float
                    : type == "DOUBLE" ? Kind::Double
                    : type == "SHORT"  ? Kind::Short
                                       : Kind::Long;
  if ((kind == Kind::Long && type != "LONG") || count < 1) {
    Fail(ExitStatus::Input, "{}: column {} holds {}, not FLOAT, DOUBLE, SHORT or LONG", Name(),
         OneLine(column), OneLine(type));
  }
  constexpr std::size_t MostNumbers = 1 << 16;
  if (numbers.size() + static_cast<std::size_t>(count) > MostNumbers) {
    Fail(ExitStatus::Input, "{}: its records hold more than {} numbers", Name(), MostNumbers);
  }
  const std::size_t size = kind == Kind::Double ? 8 : kind == Kind::Short ? 2 : 4;
  numbers.insert(numbers.end(), static_cast<std::size_t>(count), kind);
  recordBytes += size * static_cast<std::size_t>(count);
}

double SsffReader::Number(Kind kind, const char*& at) {
  switch (kind) {
    case Kind::Float:
      return Taken<float>(at);
    case Kind::Double:
      return Taken<double>(at);
    case Kind::Short:
      return Taken<std::int16_t>(at);
    case Kind::Long:
      break;
  }
  return Taken<std::int32_t>(at);
}

int SsffReader::Read(double* frames, int count) {
  bytes.resize(recordBytes * static_cast<std::size_t>(count));
  file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  const auto came = static_cast<std::size_t>(file.gcount());
  if (came % recordBytes != 0) {
    Fail(ExitStatus::Input, "{}: is cut short: its last record is not complete", Name());
  }
  const char* at = bytes.data();
  const auto records = static_cast<int>(came / recordBytes);
  for (int record = 0; record < records; ++record) {
    for (const Kind kind : numbers) {
      *frames++ = Number(kind, at);
    }
  }
  return records;
}

}  // namespace wavechain
