#include "host/table_writer.h"

#include <unistd.h>

#include <cerrno>

#include "host/csv_writer.h"
#include "host/failure.h"
#include "host/file.h"
#include "host/interrupt.h"
#include "host/npy_writer.h"
#include "host/npz_writer.h"
#include "host/ssff_writer.h"

namespace wavechain {

void TableWriter::Put(const void* bytes, std::size_t count) const {
  if (const int error = WriteAll(descriptor, bytes, count)) {
    Refuse(error);
  }
}

void TableWriter::PutAt(long offset, const void* bytes, std::size_t count) const {
  if (::pwrite(descriptor, bytes, count, offset) != static_cast<ssize_t>(count)) {
    Refuse(errno);
  }
}

void TableWriter::Refuse(int error) const {
  StopIfInterrupted();
  Fail(ExitStatus::Output, "{}: cannot be written: {}", name, SystemText(error));
}

std::unique_ptr<TableWriter> MakeTableWriter(ContainerKind kind, int descriptor,
                                             const std::string& name, Table table) {
  if (kind == ContainerKind::Csv) {
    return std::make_unique<CsvWriter>(descriptor, name, std::move(table));
  }
  if (kind == ContainerKind::Npz) {
    return std::make_unique<NpzWriter>(descriptor, name, std::move(table));
  }
  if (kind == ContainerKind::Ssff) {
    return std::make_unique<SsffWriter>(descriptor, name, std::move(table));
  }
  return std::make_unique<NpyWriter>(descriptor, name, std::move(table));
}

}  // namespace wavechain
