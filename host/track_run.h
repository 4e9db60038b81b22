#ifndef WAVEFILTERS_HOST_TRACK_RUN_H
#define WAVEFILTERS_HOST_TRACK_RUN_H

#include <string>
#include <vector>

#include "host/audio_format.h"
#include "host/run.h"

namespace wavechain {

/// Understands NAME=CHAIN. Fails (usage) on a name that is no word of letters, digits, "_", "-"
/// and ".".
TrackText ParseTrack(const std::string& text);

/// Understands the chains of the request's tracks. Fails (usage) where they are wrong, where two
/// tracks have one name, and where there is a chain beside them.
std::vector<std::vector<FilterCall>> ReadTracks(const RunRequest& request);

/// Fails (usage) where the format holds no table.
void RequireTable(const OutputFormat& format);

/// Pulls the recording through several chains, each as if it were run alone, into one table. Fails
/// as Run does, and (usage) where tracks differ in rate, and where the format holds no table.
RunResult RunTracks(const RunRequest& request, const std::vector<std::vector<FilterCall>>& calls,
                    const FilterLibrary& library, Log& log);

}  // namespace wavechain

#endif
