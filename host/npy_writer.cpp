#include "host/npy_writer.h"

#include <fmt/format.h>

#include <bit>

namespace wavechain {

static_assert(std::endian::native == std::endian::little, "NumPy files are written as they lie");

std::string NpyHeader(std::string_view type, std::string_view shape) {
  constexpr std::size_t Size = 128;
  std::string header("\x93NUMPY\x01\x00", 8);
  header += static_cast<char>(Size - 10);
  header += '\0';
  header += fmt::format("{{'descr': '{}', 'fortran_order': False, 'shape': {}, }}", type, shape);
  header.resize(Size - 1, ' ');
  return header + '\n';
}

NpyWriter::NpyWriter(int fileDescriptor, std::string fileName, Table described)
    : TableWriter(fileDescriptor, std::move(fileName), std::move(described)) {
  const std::string header = NpyHeader("<f4", "(0,)");
  Put(header.data(), header.size());
}

void NpyWriter::Write(std::span<const ColumnBlock> blocks, int rows) {
  Put(blocks[0].values, static_cast<std::size_t>(rows) * sizeof(float));
  total += rows;
}

void NpyWriter::Close() {
  // Only now is the length known; the header has kept room for any.
  const std::string header = NpyHeader("<f4", fmt::format("({},)", total));
  PutAt(0, header.data(), header.size());
}

}  // namespace wavechain
