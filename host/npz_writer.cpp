#include "host/npz_writer.h"

#include <archive.h>
#include <archive_entry.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <new>

#include "host/npy_writer.h"

namespace wavechain {
namespace {

// The errno value of what went wrong. Where libarchive names none it is memory that it lacked.
int ErrorOf(archive* zip) {
  const int error = ::archive_errno(zip);
  if (error == 0 || error == ENOMEM) {
    throw std::bad_alloc();
  }
  return error;
}

}  // namespace

NpzWriter::NpzWriter(int fileDescriptor, std::string fileName, Table described)
    : TableWriter(fileDescriptor, std::move(fileName), std::move(described)) {
  for (const TableColumn& column : table.columns) {
    AddMember(column.name, "<f4", sizeof(float));
    if (!column.validity.empty()) {
      AddMember(column.validity, "|b1", 1);
    }
  }
}

void NpzWriter::AddMember(const std::string& member, const char* type, int bytes) {
  members.push_back({member, type, bytes, TemporaryFile()});
  if (!members.back().data.IsOpen()) {
    Refuse(errno);
  }
}

void NpzWriter::Append(const Member& member, const void* bytes, std::size_t count) const {
  if (const int error = WriteAll(member.data.Descriptor(), bytes, count)) {
    Refuse(error);
  }
}

void NpzWriter::Write(std::span<const ColumnBlock> blocks, int rows) {
  auto member = members.begin();
  for (std::size_t i = 0; i < blocks.size(); ++i) {
    const ColumnBlock& block = blocks[i];
    values.assign(static_cast<std::size_t>(rows), std::numeric_limits<float>::quiet_NaN());
    std::copy_n(block.values, block.count, values.begin());
    Append(*member++, values.data(), values.size() * sizeof(float));
    if (!table.columns[i].validity.empty()) {
      valid.assign(static_cast<std::size_t>(rows), 0);
      std::copy_n(block.valid, block.count, valid.begin());
      Append(*member++, valid.data(), valid.size());
    }
  }
  total += rows;
}

void NpzWriter::Close() {
  const std::unique_ptr<archive, decltype(&::archive_write_free)> zip(::archive_write_new(),
                                                                      &::archive_write_free);
  if (!zip || ::archive_write_set_format_zip(zip.get()) != ARCHIVE_OK) {
    throw std::bad_alloc();
  }
  ::archive_write_zip_set_compression_store(zip.get());
  if (::archive_write_open_fd(zip.get(), Descriptor()) != ARCHIVE_OK) {
    Refuse(ErrorOf(zip.get()));
  }
  for (const Member& member : members) {
    Store(zip.get(), member);
  }
  const double rate = Rate();
  StoreText(
      zip.get(), "rate_hz.npy",
      NpyHeader("<f8", "()") + std::string(reinterpret_cast<const char*>(&rate), sizeof rate));
  if (table.comment.starts_with('{')) {
    StoreText(zip.get(), "record.json", table.comment);
  }
  if (::archive_write_close(zip.get()) != ARCHIVE_OK) {
    Refuse(ErrorOf(zip.get()));
  }
}

void NpzWriter::Store(archive* zip, const Member& member) const {
  const std::string header = NpyHeader(member.type, fmt::format("({},)", total));
  Begin(zip, member.name + ".npy", static_cast<std::int64_t>(header.size()) + total * member.bytes);
  Continue(zip, header.data(), header.size());
  std::vector<char> block(1 << 16);
  ::lseek(member.data.Descriptor(), 0, SEEK_SET);
  for (;;) {
    const long came = ReadSome(member.data.Descriptor(), block.data(), block.size());
    if (came < 0) {
      Refuse(static_cast<int>(-came));
    }
    if (came == 0) {
      return;
    }
    Continue(zip, block.data(), static_cast<std::size_t>(came));
  }
}

void NpzWriter::StoreText(archive* zip, const std::string& member, const std::string& text) const {
  Begin(zip, member, static_cast<std::int64_t>(text.size()));
  Continue(zip, text.data(), text.size());
}

void NpzWriter::Begin(archive* zip, const std::string& member, std::int64_t size) const {
  const std::unique_ptr<archive_entry, decltype(&::archive_entry_free)> entry(
      ::archive_entry_new(), &::archive_entry_free);
  if (!entry) {
    throw std::bad_alloc();
  }
  ::archive_entry_set_pathname(entry.get(), member.c_str());
  ::archive_entry_set_size(entry.get(), size);
  ::archive_entry_set_filetype(entry.get(), AE_IFREG);
  ::archive_entry_set_perm(entry.get(), 0644);
  // The same table always gives the same bytes.
  ::archive_entry_set_mtime(entry.get(), 0, 0);
  if (::archive_write_header(zip, entry.get()) != ARCHIVE_OK) {
    Refuse(ErrorOf(zip));
  }
}

void NpzWriter::Continue(archive* zip, const void* bytes, std::size_t count) const {
  if (::archive_write_data(zip, bytes, count) != static_cast<la_ssize_t>(count)) {
    Refuse(ErrorOf(zip));
  }
}

}  // namespace wavechain
