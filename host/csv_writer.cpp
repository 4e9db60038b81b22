#include "host/csv_writer.h"

#include <fmt/format.h>

#include <iterator>

namespace wavechain {

CsvWriter::CsvWriter(int fileDescriptor, std::string fileName, Table described)
    : TableWriter(fileDescriptor, std::move(fileName), std::move(described)) {
  std::string header = "time_s";
  for (const TableColumn& column : table.columns) {
    header += "," + column.name + (column.unit.empty() ? "" : "_" + column.unit);
    header += column.validity.empty() ? "" : "," + column.validity;
  }
  header += '\n';
  Put(header.data(), header.size());
}

void CsvWriter::Write(std::span<const ColumnBlock> blocks, int rows) {
  text.clear();
  auto out = std::back_inserter(text);
  for (int row = 0; row < rows; ++row) {
    fmt::format_to(out, "{}", 0.001 * (table.interval_ms * static_cast<double>(total + row)));
    for (std::size_t i = 0; i < blocks.size(); ++i) {
      const bool there = row < blocks[i].count;
      if (there) {
        fmt::format_to(out, ",{}", blocks[i].values[row]);
      } else {
        text += ',';
      }
      if (!table.columns[i].validity.empty()) {
        text += there && blocks[i].valid[row] != 0 ? ",1" : ",0";
      }
    }
    text += '\n';
  }
  Put(text.data(), text.size());
  total += rows;
}

}  // namespace wavechain
