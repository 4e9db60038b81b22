#ifndef WAVEFILTERS_HOST_CSV_WRITER_H
#define WAVEFILTERS_HOST_CSV_WRITER_H

#include <string>

#include "host/table_writer.h"

namespace wavechain {

/// A table of comma-separated values: time in seconds, then the columns, with a line of names
/// that tell the units, as in "time_s,value_mm/s,valid". Numbers are the shortest that read back
/// as the same number.
class CsvWriter : public TableWriter {
 public:
  CsvWriter(int descriptor, std::string name, Table described);
  void Write(std::span<const ColumnBlock> blocks, int rows) override;

 private:
  std::string text;
};

}  // namespace wavechain

#endif
