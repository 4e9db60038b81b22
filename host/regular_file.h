#ifndef WAVEFILTERS_HOST_REGULAR_FILE_H
#define WAVEFILTERS_HOST_REGULAR_FILE_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "host/file.h"

namespace wavechain {

/// Opens a file for reading; not open where it cannot be, or where it is a folder, a pipe or a
/// device, none of which is waited for.
File OpenRegularFile(const std::string& path);

/// Up to `count` bytes from `at` on: fewer where the file ends or cannot be read on. Moves the
/// place at which the file is read on.
std::string ReadPart(int descriptor, std::int64_t at, std::size_t count);

}  // namespace wavechain

#endif
