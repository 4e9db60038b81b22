#ifndef WAVEFILTERS_HOST_WAV_SIZE_H
#define WAVEFILTERS_HOST_WAV_SIZE_H

#include <cstdint>
#include <optional>

namespace wavechain {

/// Where a WAV file's header says that it holds no audio though audio follows: programs that
/// write into a pipe cannot go back to fill in the size, and some leave 0 there. The place is
/// that of the size's four bytes; nothing for all other files, among them truly empty ones,
/// which end behind the header or go on with further chunks.
std::optional<std::int64_t> UnfilledDataSize(int descriptor);

/// Whether the file is a WAV that is longer than its header could say, as a pipe may make it:
/// libsndfile would stop at 4 GiB.
bool IsBeyondWav(int descriptor);

}  // namespace wavechain

#endif
