#ifndef WAVEFILTERS_HOST_VERSION_H
#define WAVEFILTERS_HOST_VERSION_H

#include <string>

namespace wavechain {

/// What --version prints: the program's version, and that of the library which it would load,
/// with its file; or why there is none.
std::string VersionText();

}  // namespace wavechain

#endif
