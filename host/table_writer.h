#ifndef WAVEFILTERS_HOST_TABLE_WRITER_H
#define WAVEFILTERS_HOST_TABLE_WRITER_H

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "host/audio_format.h"

namespace wavechain {

/// One signal of a table.
struct TableColumn {
  std::string name;
  std::string unit;
  /// Name of the column beside it that tells with 1 and 0 which of its samples have data behind
  /// them; empty for none.
  std::string validity;
};

struct Table {
  double interval_ms = 0.0;
  std::vector<TableColumn> columns;
  std::string comment;  // for formats that have a place for one
};

/// A block of one column's samples: `count` of them, which is less than the block's rows where
/// the signal has ended. What is missing then is left empty or not a number, and not valid.
struct ColumnBlock {
  const float* values = nullptr;
  const unsigned char* valid = nullptr;  // 1 or 0 for each; only used where the table has it
  int count = 0;
};

/// Writes signals of one rate side by side, byte after byte.
class TableWriter {
 public:
  virtual ~TableWriter() = default;
  /// The next rows: a block for each column. Fails (output) where they cannot all be written.
  virtual void Write(std::span<const ColumnBlock> blocks, int rows) = 0;
  /// Completes the file, after which nothing may be written. Fails (output) like Write.
  virtual void Close() {}
  double Rate() const { return 1000.0 / table.interval_ms; }

 protected:
  TableWriter(int fileDescriptor, std::string fileName, Table described)
      : table(std::move(described)), descriptor(fileDescriptor), name(std::move(fileName)) {}
  /// Fails (output) where the bytes cannot all be written.
  void Put(const void* bytes, std::size_t count) const;
  void PutAt(long offset, const void* bytes, std::size_t count) const;
  int Descriptor() const { return descriptor; }
  [[noreturn]] void Refuse(int error) const;

  Table table;
  std::int64_t total = 0;  // rows

 private:
  int descriptor;
  std::string name;
};

/// Starts a table on an open descriptor, which stays the caller's. `name` is for messages.
std::unique_ptr<TableWriter> MakeTableWriter(ContainerKind kind, int descriptor,
                                             const std::string& name, Table table);

}  // namespace wavechain

#endif
