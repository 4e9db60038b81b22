#include "host/ssff_writer.h"

#include <fmt/format.h>

#include <bit>
#include <limits>

#include "host/failure.h"

namespace wavechain {

static_assert(std::endian::native == std::endian::little, "records are written as they lie");

SsffWriter::SsffWriter(int fileDescriptor, std::string fileName, Table described)
    : TableWriter(fileDescriptor, std::move(fileName), std::move(described)) {
  std::string header =
      fmt::format("SSFF -- (c) SHLRC\nMachine IBM-PC\nRecord_Freq {}\nStart_Time 0.0\n", Rate());
  for (const TableColumn& column : table.columns) {
    header += fmt::format("Column {} FLOAT 1\n", column.name);
    header += column.validity.empty() ? "" : fmt::format("Column {} FLOAT 1\n", column.validity);
  }
  header += table.comment.empty() ? "" : "Comment CHAR " + OneLine(table.comment) + "\n";
  header += "-----------------\n";
  Put(header.data(), header.size());
}

void SsffWriter::Write(std::span<const ColumnBlock> blocks, int rows) {
  records.clear();
  for (int row = 0; row < rows; ++row) {
    for (std::size_t i = 0; i < blocks.size(); ++i) {
      const bool there = row < blocks[i].count;
      records.push_back(there ? blocks[i].values[row] : std::numeric_limits<float>::quiet_NaN());
      if (!table.columns[i].validity.empty()) {
        records.push_back(there && blocks[i].valid[row] != 0 ? 1.0F : 0.0F);
      }
    }
  }
  Put(records.data(), records.size() * sizeof(float));
  total += rows;
}

}  // namespace wavechain
