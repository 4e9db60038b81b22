#ifndef WAVEFILTERS_HOST_FILTER_ARGUMENTS_H
#define WAVEFILTERS_HOST_FILTER_ARGUMENTS_H

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/catalogue.h"
#include "host/resampling.h"

namespace wavechain {

struct SignalText;

/// Where something is written that does not stand on the command line itself.
struct Place {
  /// "smooth.toml:3:1", which messages begin with; empty for the command line.
  std::string text = {};
  /// What names of files are relative to; empty for the folder that the program runs in.
  std::string folder = {};
};

/// One word behind a filter's name: a value, and its name where "NAME=" stood before it.
struct Argument {
  std::optional<std::string> name = std::nullopt;
  std::string value = {};
  /// Where it is written, unless on the command line.
  std::string place = {};
};

/// A filter as written on the command line or in a chain file, taken apart but not yet
/// understood.
struct FilterText {
  std::string name = {};
  std::vector<Argument> arguments = {};
  /// What messages begin with: "-f 'FIRNotch 200'" or "smooth.toml:3:1".
  std::string place = {};
  /// As in Place.
  std::string folder = {};

  /// The argument of that name, or null.
  const Argument* Find(std::string_view argument) const;
};

/// A filter of a known kind with everything that it is to be given.
struct FilterCall {
  const FilterKind* kind = nullptr;
  /// One value for each parameter; what was not given has its default.
  std::vector<double> values;
  /// How many of them the filter is handed: up to the last one that was given, so that the
  /// others keep what the library itself starts from.
  int handed = 0;
  /// What was given for the host's own arguments, by name.
  std::map<std::string, std::string, std::less<>> hostValues = {};
  /// What they mean: a change of rate whose kernels the host chooses, and the signal that is
  /// the filter's second source.
  std::optional<Conversion> conversion = std::nullopt;
  std::shared_ptr<const SignalText> second = nullptr;

  /// The call with every parameter by name, as it could be written; without those that the
  /// host chooses.
  std::string Text() const;
};

/// Splits "FIRNotch 200 frequency=2500" at its blanks. 'Single' and "double" quotes keep
/// blanks in a value; a backslash keeps the quote, blank or backslash behind it.
/// Fails (usage) on an unclosed quote and where there is no name.
FilterText SplitFilter(std::string_view text, const Place& in = {});

/// Finds the kind and settles its values. A value without a name goes to the first parameter
/// that has none yet. Fails (usage) with the nearest name for an unknown one, on a value that
/// is missing, given twice, no number, not whole where it must be, or out of range.
FilterCall ResolveFilter(const FilterText& written);

/// The same for a kind that is known already.
FilterCall ResolveFilter(const FilterKind& kind, const FilterText& written);

/// Splits and resolves.
FilterCall ParseFilter(std::string_view text, const Place& in = {});

/// The path, put behind the folder unless it is absolute or empty.
std::string InFolder(const std::string& folder, const std::string& path);

}  // namespace wavechain

#endif
