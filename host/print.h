#ifndef WAVEFILTERS_HOST_PRINT_H
#define WAVEFILTERS_HOST_PRINT_H

#include <string>

namespace wavechain {

/// Writes the text to standard output, which is checked like any other: a full disk must not
/// look like success. Fails (output) where it cannot all be written.
void Print(const std::string& text);
/// Prints a text that a standard stream put together; throws std::bad_alloc where memory ran out
/// for it, which such a stream keeps to itself.
void PrintStreamed(const std::string& text);

}  // namespace wavechain

#endif
