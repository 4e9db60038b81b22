#ifndef WAVEFILTERS_HOST_HOST_ARGUMENTS_H
#define WAVEFILTERS_HOST_HOST_ARGUMENTS_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/filter_arguments.h"

namespace wavechain {

/// A signal as written in an argument, "FILE" or "FILE | FILTER | FILTER ...": a recording and
/// the filters that it is to go through.
struct SignalText {
  std::string path;
  std::optional<int> channel = std::nullopt;  // from 1
  std::vector<FilterCall> filters = {};
};

/// Understands a signal. A bar within quotes or behind a backslash separates nothing; a file
/// name that holds one stands in quotes. Fails (usage) where there is no file name, or "-",
/// and where a filter is not understood.
SignalText ParseSignal(std::string_view text);

/// Understands what the call gives for the host's own arguments rate, quality, with and
/// channel. Fails (usage) on values that they do not take, and where they contradict the
/// filter's parameters; `text` is named in failures.
void UnderstandHostArguments(FilterCall& call, std::string_view text);

}  // namespace wavechain

#endif
