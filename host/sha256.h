#ifndef WAVEFILTERS_HOST_SHA256_H
#define WAVEFILTERS_HOST_SHA256_H

#include <optional>
#include <string>

namespace wavechain {

/// SHA-256 of an open file from its first byte to its last, as 64 hexadecimal digits; where it is
/// read on from stays as it was. Nothing where it cannot be read.
std::optional<std::string> Sha256(int descriptor);

/// The same of the file of that path.
std::optional<std::string> Sha256(const std::string& path);

}  // namespace wavechain

#endif
