#ifndef WAVEFILTERS_HOST_CHECK_REPORT_H
#define WAVEFILTERS_HOST_CHECK_REPORT_H

#include <string>
#include <vector>

#include "host/audio_input.h"
#include "host/chain.h"

namespace wavechain {

/// A signal and the filters that it goes through, as `wavechain check` reports on them. What it
/// refers to must outlive it.
struct CheckedSignal {
  const AudioInput* recording = nullptr;  // null for silence
  SignalInfo info = {};
  const std::vector<ChainStep>& steps;
};

/// A block of lines for the recording and for each filter.
std::string CheckText(const CheckedSignal& signal);

/// One object, with null where there is nothing to tell.
std::string CheckJson(const CheckedSignal& signal);

/// A graph in Graphviz's language, from the recordings to what the chain delivers.
std::string CheckDot(const CheckedSignal& signal);

}  // namespace wavechain

#endif
