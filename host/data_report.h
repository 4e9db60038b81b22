#ifndef WAVEFILTERS_HOST_DATA_REPORT_H
#define WAVEFILTERS_HOST_DATA_REPORT_H

#include <optional>
#include <string>

#include "host/filter_arguments.h"
#include "host/log.h"
#include "host/signal_descriptor.h"

namespace wavechain {

/// Looks a data file through as the filter will read it and says in the log how much it holds
/// beside the signal, and warns of what the filter would pass over in silence: the first line
/// that cannot be read, events that will not be heard, positions taken for differences.
/// Returns why the file holds nothing at all, if that is so.
std::optional<std::string> ReportOnData(const DataFile& file, const FilterCall& call,
                                        const std::string& path, const SignalInfo& signal,
                                        Log& log);

}  // namespace wavechain

#endif
