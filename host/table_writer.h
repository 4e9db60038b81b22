#ifndef WAVEFILTERS_HOST_TABLE_WRITER_H
#define WAVEFILTERS_HOST_TABLE_WRITER_H

#include <cstddef>
#include <string>

#include "host/signal_writer.h"

namespace wavechain {

/// Common part of the formats that are written byte after byte, without a library's help.
class PlainWriter : public SignalWriter {
 public:
  double Rate() const override { return 1000.0 / interval_ms; }

 protected:
  PlainWriter(int fileDescriptor, std::string fileName, const SignalInfo& signal)
      : interval_ms(signal.interval_ms), descriptor(fileDescriptor), name(std::move(fileName)) {}
  /// Fails (output) where the bytes cannot all be written.
  void Put(const void* bytes, std::size_t count) const;
  void PutAt(long offset, const void* bytes, std::size_t count) const;

  double interval_ms;
  std::int64_t total = 0;

 private:
  [[noreturn]] void Refuse(int error) const;

  int descriptor;
  std::string name;
};

/// A table of comma-separated values: time in seconds and value, with a line of names that
/// tells the unit, as in "time_s,value_mm/s". Numbers are the shortest that read back as the
/// same number.
class CsvWriter : public PlainWriter {
 public:
  CsvWriter(int descriptor, std::string name, const SignalInfo& signal);
  void Write(const float* samples, int count) override;
  void Close() override {}

 private:
  std::string text;
};

/// A NumPy array of 32-bit floats with one axis (format version 1.0, little-endian).
class NpyWriter : public PlainWriter {
 public:
  NpyWriter(int descriptor, std::string name, const SignalInfo& signal);
  void Write(const float* samples, int count) override;
  void Close() override;

 private:
  std::string Header() const;
};

}  // namespace wavechain

#endif
