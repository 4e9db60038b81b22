#ifndef WAVEFILTERS_HOST_INPUT_REPORT_H
#define WAVEFILTERS_HOST_INPUT_REPORT_H

#include <cstdint>
#include <string>

#include "host/audio_input.h"
#include "host/log.h"

namespace wavechain {

/// "48000 samples, 1.000 s".
std::string LengthText(std::int64_t samples, double interval_ms);

/// The line about a recording that is read.
void ReportInput(const AudioInput& input, Log& log);

/// Warns where there are samples in a file that are infinite or not a number; `more` is added.
void WarnOfOddSamples(const std::string& name, std::int64_t nonFinite, Log& log,
                      const std::string& more = "");

}  // namespace wavechain

#endif
