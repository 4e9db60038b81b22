#ifndef WAVEFILTERS_NUMSTREAM_NUM_STREAM_H
#define WAVEFILTERS_NUMSTREAM_NUM_STREAM_H

#include <cstdint>
#include <ext/stdio_filebuf.h>
#include <istream>
#include <string>

#include "frame/interfaces.h"
#include "numstream/number_line.h"

namespace wavefilters {

/// How a NumStream reads its file; settled when it is made.
enum class StreamMode {
  Text,    ///< lines, and the numbers on them
  Binary,  ///< measured bytes
};

/// The library's own reader of numbers, on the standard streams.
///
/// Numbers are read in the classic locale, whatever locale the host has set: the decimal
/// point is a point, and nothing groups digits. Their format is that of formatted input;
/// hexadecimal numbers, "inf" and "nan" are not part of it. What a failed read leaves in
/// its argument is what formatted input leaves there: 0 for a word, the type's largest
/// number for one that is too large, the old value at the end of the line.
///
/// Only regular files open, also through symbolic links. A directory, a FIFO or a device
/// counts as a file that could not be opened, so nothing blocks, even where one takes a file's
/// place while it is being opened.
///
/// In text mode the binary operations do nothing and return 0, and the other way round.
class NumStream : public INumStreamC {
 public:
  bool Open(char* name) override;
  bool GetSingle(float& value) override;
  bool GetDouble(double& value) override;
  /// Ends the current line first: numbers not yet read are dropped. A blank line is a line,
  /// and so is a last one without a newline.
  bool GetLine() override;
  void Close() override;
  bool Open(std::string name) override;
  bool OpenFromString(std::string text) override;
  /// A file of 2 GiB or more is measured as 2^31 - 1 bytes.
  int BytesRemain() override;
  void SkipBytes(int count) override;
  /// Returns the number of bytes that were to be read: the smaller of `count` and what
  /// remains, also where the file holds fewer and where `count` is negative. Nothing is
  /// written to `buffer` beyond the bytes that came.
  int ReadBytes(char* buffer, int count) override;

 protected:
  explicit NumStream(StreamMode chosen);
  /// Closes the file.
  ~NumStream() = default;

 private:
  // A standard file buffer that can be given a file that is open already.
  using Contents = __gnu_cxx::stdio_filebuf<char>;

  bool IsOpenBinary() const { return mode == StreamMode::Binary && contents.is_open(); }
  void Take(int descriptor);
  void Measure();
  bool ReadLine();

  const StreamMode mode;
  Contents contents;
  std::istream file{&contents};
  std::string nextLine;  // what the file is read into
  NumberLine currentLine;
  bool hasLine = false;
  std::int32_t bytesRemaining = 0;
};

}  // namespace wavefilters

#endif
