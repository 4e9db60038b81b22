#ifndef WAVEFILTERS_HOST_CATALOGUE_TEXT_H
#define WAVEFILTERS_HOST_CATALOGUE_TEXT_H

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "host/catalogue.h"

namespace wavechain {

/// The catalogue for people and for programs. `available` says whether the library that was
/// loaded makes filters of that kind.

std::vector<std::string_view> FilterNames();

/// Unit, whole or real, and range: "samples, whole, 1 to 2048".
std::string RangeText(const Parameter& parameter);

/// The words that may stand for values: "0=none, 1=bend"; empty where there are none.
std::string NamesText(const Parameter& parameter);

/// The default as text: a number, a rule, or "none".
std::string DefaultText(const Parameter& parameter);

/// What `wavechain info` prints.
std::string InfoText(const FilterKind& kind, bool available);

/// One line of what `wavechain list` prints.
std::string ListLine(const FilterKind& kind, bool available);

/// All filters with their parameters and units, for the end of a help page.
std::string HelpText();

/// What --json prints for a filter. Limits that there are none of are null.
nlohmann::ordered_json InfoJson(const FilterKind& kind, bool available);

}  // namespace wavechain

#endif
