#ifndef WAVEFILTERS_HOST_PLOT_RECORD_H
#define WAVEFILTERS_HOST_PLOT_RECORD_H

#include <string>
#include <vector>

#include "host/audio_input.h"
#include "host/filter_library.h"
#include "host/plot.h"
#include "host/plot_picture.h"
#include "host/provenance.h"
#include "host/signal_descriptor.h"

namespace wavechain {

/// What a picture reads, as a run would: which recording, and what may be wrong with it.
RunRequest AsRunRequest(const PlotRequest& request);

/// A chain that is drawn, with the unit of what it delivers. Its parameters are written as they
/// were given, since the picture's words show them so.
TrackRecord DrawnChain(const std::string& name, const std::vector<FilterCall>& calls,
                       const SignalInfo& delivered = {});

/// The text that a picture carries inside: how it was made; nothing where the request does not
/// want it. `file` is null where there is no recording; `drawn` has the chain of -f first, if there
/// is one, then the tracks; `files` are those that the filters read.
std::string PictureRecordText(const PlotRequest& request, const PictureTarget& target,
                              const FilterLibrary& library, const AudioInput* file,
                              const std::vector<TrackRecord>& drawn,
                              const std::vector<std::string>& files);

}  // namespace wavechain

#endif
