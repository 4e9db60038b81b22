#include "host/table_writer.h"

#include <fmt/format.h>
#include <unistd.h>

#include <bit>
#include <cerrno>
#include <iterator>

#include "host/failure.h"
#include "host/file.h"
#include "host/interrupt.h"

namespace wavechain {

static_assert(std::endian::native == std::endian::little, "NumPy files are written as they lie");

void PlainWriter::Put(const void* bytes, std::size_t count) const {
  if (const int error = WriteAll(descriptor, bytes, count)) {
    Refuse(error);
  }
}

void PlainWriter::PutAt(long offset, const void* bytes, std::size_t count) const {
  if (::pwrite(descriptor, bytes, count, offset) != static_cast<ssize_t>(count)) {
    Refuse(errno);
  }
}

void PlainWriter::Refuse(int error) const {
  StopIfInterrupted();
  Fail(ExitStatus::Output, "{}: cannot be written: {}", name, SystemText(error));
}

CsvWriter::CsvWriter(int fileDescriptor, std::string fileName, const SignalInfo& signal)
    : PlainWriter(fileDescriptor, std::move(fileName), signal) {
  const std::string header =
      signal.units.empty() ? "time_s,value\n" : fmt::format("time_s,value_{}\n", signal.units);
  Put(header.data(), header.size());
}

void CsvWriter::Write(const float* samples, int count) {
  text.clear();
  for (int i = 0; i < count; ++i) {
    const double time_s = 0.001 * (interval_ms * static_cast<double>(total + i));
    fmt::format_to(std::back_inserter(text), "{},{}\n", time_s, samples[i]);
  }
  Put(text.data(), text.size());
  total += count;
}

NpyWriter::NpyWriter(int fileDescriptor, std::string fileName, const SignalInfo& signal)
    : PlainWriter(fileDescriptor, std::move(fileName), signal) {
  const std::string header = Header();
  Put(header.data(), header.size());
}

void NpyWriter::Write(const float* samples, int count) {
  Put(samples, static_cast<std::size_t>(count) * sizeof(float));
  total += count;
}

void NpyWriter::Close() {
  // Only now is the length known; the header has kept room for any.
  const std::string header = Header();
  PutAt(0, header.data(), header.size());
}

std::string NpyWriter::Header() const {
  constexpr std::size_t Size = 128;
  std::string header("\x93NUMPY\x01\x00", 8);
  header += static_cast<char>(Size - 10);
  header += '\0';
  header += fmt::format("{{'descr': '<f4', 'fortran_order': False, 'shape': ({},), }}", total);
  header.resize(Size - 1, ' ');
  return header + '\n';
}

}  // namespace wavechain
