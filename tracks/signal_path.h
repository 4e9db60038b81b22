#ifndef WAVEFILTERS_TRACKS_SIGNAL_PATH_H
#define WAVEFILTERS_TRACKS_SIGNAL_PATH_H

#include <string>

#include "frame/interfaces.h"

namespace wavefilters {

/// The signal's file name as its descriptor tells it: a path of at most 511 bytes.
std::string SignalPath(IWaveDescriptorC* descriptor);

/// The path cut before its last ".", whole if it has none. The whole path is searched: a
/// name without extension in a folder whose name holds a dot is cut inside the folder's
/// name ("a.b/take3" gives "a").
std::string StemOf(std::string path);

}  // namespace wavefilters

#endif
