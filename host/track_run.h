#ifndef WAVEFILTERS_HOST_TRACK_RUN_H
#define WAVEFILTERS_HOST_TRACK_RUN_H

#include <string>

#include "host/run.h"

namespace wavechain {

/// Understands NAME=CHAIN. Fails (usage) on a name that is no word of letters, digits, "_", "-"
/// and ".".
TrackText ParseTrack(const std::string& text);

/// Pulls the recording through several chains, each as if it were run alone, into one table. Fails
/// as Run does, and (usage) where two tracks have one name or another rate, and where the format
/// holds no table.
void RunTracks(const RunRequest& request);

}  // namespace wavechain

#endif
