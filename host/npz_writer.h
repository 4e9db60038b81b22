#ifndef WAVEFILTERS_HOST_NPZ_WRITER_H
#define WAVEFILTERS_HOST_NPZ_WRITER_H

#include <string>
#include <vector>

#include "host/file.h"
#include "host/table_writer.h"

struct archive;

namespace wavechain {

/// Several NumPy arrays in one file: 32-bit floats under the name of each column, truth values
/// under the name of its validity, the rate as "rate_hz", and the comment, where it is a record of
/// how the table was made, as "record.json". All arrays have one length; what is missing is not
/// a number.
class NpzWriter : public TableWriter {
 public:
  NpzWriter(int descriptor, std::string name, Table described);
  void Write(std::span<const ColumnBlock> blocks, int rows) override;
  void Close() override;

 private:
  // What an array holds, kept in a temporary file until its length is known.
  struct Member {
    std::string name;
    const char* type = "";
    int bytes = 0;  // of an element
    File data = {};
  };

  void AddMember(const std::string& member, const char* type, int bytes);
  void Append(const Member& member, const void* bytes, std::size_t count) const;
  void Store(archive* zip, const Member& member) const;
  void StoreText(archive* zip, const std::string& member, const std::string& text) const;
  void Begin(archive* zip, const std::string& member, std::int64_t size) const;
  void Continue(archive* zip, const void* bytes, std::size_t count) const;

  std::vector<Member> members;
  std::vector<float> values;
  std::vector<unsigned char> valid;
};

}  // namespace wavechain

#endif
