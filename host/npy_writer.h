#ifndef WAVEFILTERS_HOST_NPY_WRITER_H
#define WAVEFILTERS_HOST_NPY_WRITER_H

#include <cstdint>
#include <string>
#include <string_view>

#include "host/table_writer.h"

namespace wavechain {

/// The header of a NumPy array (format version 1.0), of the same size for every length. Type and
/// shape are NumPy's, as "<f4" and "(100,)".
std::string NpyHeader(std::string_view type, std::string_view shape);

/// A NumPy array of 32-bit floats with one axis (little-endian): the table's one column without
/// its validity, for which an array of numbers has no place.
class NpyWriter : public TableWriter {
 public:
  NpyWriter(int descriptor, std::string name, Table described);
  void Write(std::span<const ColumnBlock> blocks, int rows) override;
  void Close() override;
};

}  // namespace wavechain

#endif
