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

  /// The signal as it could be written.
  std::string Text() const;
};

/// Understands a signal; its file name is relative to the place's folder. A bar within quotes or
/// behind a backslash separates nothing; a file name that holds one stands in quotes. Fails (usage)
/// where there is no file name, or "-", and where a filter is not understood.
SignalText ParseSignal(std::string_view text, const Place& in = {});

/// Understands "FILTER | FILTER ..." with the same rules for bars. Fails (usage) where a filter is
/// not understood.
std::vector<FilterCall> ParseFilters(std::string_view text, const Place& in = {});

/// Understands what the call gives for the host's own arguments rate, quality, with and
/// channel. Fails (usage) on values that they do not take, and where they contradict the
/// filter's parameters; `written` is what the call was made of.
void UnderstandHostArguments(FilterCall& call, const FilterText& written);

}  // namespace wavechain

#endif
