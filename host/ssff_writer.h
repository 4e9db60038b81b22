#ifndef WAVEFILTERS_HOST_SSFF_WRITER_H
#define WAVEFILTERS_HOST_SSFF_WRITER_H

#include <vector>

#include "host/table_writer.h"

namespace wavechain {

/// A simple signal file: a header of text lines, then records of 32-bit floats, little-endian,
/// one for each column. Every column, validity too, is a track of its own under its name;
/// units stand in the comment. What is missing is not a number.
class SsffWriter : public TableWriter {
 public:
  SsffWriter(int descriptor, std::string name, Table described);
  void Write(std::span<const ColumnBlock> blocks, int rows) override;

 private:
  std::vector<float> records;
};

}  // namespace wavechain

#endif
