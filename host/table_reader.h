#ifndef WAVEFILTERS_HOST_TABLE_READER_H
#define WAVEFILTERS_HOST_TABLE_READER_H

#include <cstdint>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "host/sample_reader.h"

namespace wavechain {

/// What a file of NumPy's begins with, and a table of ours.
constexpr std::string_view NpyMagic = "\x93NUMPY";
constexpr std::string_view CsvMagic = "time_s,";

/// A NumPy array of 32-bit or 64-bit floats (little-endian) with one axis, or with a second one
/// for columns.
class NpyReader : public SampleReader {
 public:
  explicit NpyReader(const std::string& path);
  int Read(double* frames, int count) override;

 private:
  std::ifstream file;
  bool wide = false;  // 64-bit floats
  std::int64_t left = 0;
  std::vector<float> singles;
};

/// A table of comma-separated values whose first column is the time in seconds. The rate comes
/// from the first two times.
class CsvReader : public SampleReader {
 public:
  explicit CsvReader(const std::string& path);
  int Read(double* frames, int count) override;

 private:
  bool NextLine();
  double Time() const;
  void ReadCells(double* cells) const;
  [[noreturn]] void Refuse(const std::string& what) const;

  std::ifstream file;
  std::string line;
  std::int64_t number = 0;  // of the line
};

}  // namespace wavechain

#endif
