#ifndef WAVEFILTERS_HOST_SSFF_READER_H
#define WAVEFILTERS_HOST_SSFF_READER_H

#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "host/sample_reader.h"

namespace wavechain {

/// What a simple signal file begins with.
constexpr std::string_view SsffMagic = "SSFF -- ";

/// The records of a simple signal file, of columns of 32-bit and 64-bit floats and of 16-bit and
/// 32-bit integers, little-endian. Each number of a column is a channel.
class SsffReader : public SampleReader {
 public:
  explicit SsffReader(const std::string& path);
  int Read(double* frames, int count) override;

 private:
  enum class Kind { Float, Double, Short, Long };

  void AddColumn(const std::string& column, const std::string& type, int numbers);
  static double Number(Kind kind, const char*& at);

  std::ifstream file;
  std::vector<Kind> numbers;  // of a record
  std::size_t recordBytes = 0;
  std::vector<char> bytes;
};

}  // namespace wavechain

#endif
