#ifndef WAVEFILTERS_NUMSTREAM_NUMBER_LINE_H
#define WAVEFILTERS_NUMSTREAM_NUMBER_LINE_H

#include <cstddef>
#include <sstream>
#include <string>

namespace wavefilters {

/// A line of text and the numbers on it, read one after the other as formatted input in the
/// classic locale reads them.
///
/// Tokens in plain decimal form, which is nearly all of them, are converted directly, several
/// times as fast; every other one goes through the standard stream, which defines the format.
/// What a read leaves in its argument, and what it leaves of the line, is the stream's in every
/// case: 0 for a word, the type's largest number for one that is too large, the old value
/// at the end of the line. After a read that failed, every further one fails.
class NumberLine {
 public:
  NumberLine();

  /// Starts with a line; its storage is taken over, and the old line's handed back in `line`.
  void Take(std::string& line);

  /// Reads the next number; T is float or double.
  template <class T>
  bool Read(T& value);

 private:
  template <class T>
  bool ReadByStream(T& value);

  std::string text;
  std::size_t at = 0;  // what has been read of the text
  bool failed = false;
  std::istringstream stream;
};

extern template bool NumberLine::Read(float& value);
extern template bool NumberLine::Read(double& value);

}  // namespace wavefilters

#endif
