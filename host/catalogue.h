#ifndef WAVEFILTERS_HOST_CATALOGUE_H
#define WAVEFILTERS_HOST_CATALOGUE_H

#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string_view>

#include "host/gaps.h"

namespace wavechain {

/// A word that may stand for a parameter's value.
struct NamedValue {
  std::string_view name;
  double value;
};

/// One number of a filter's parameter list.
struct Parameter {
  std::string_view name;
  std::string_view unit;  // empty for a plain number
  std::string_view help;
  /// The library's default; where there is neither this nor `computed`, a value must be given.
  std::optional<double> preset = std::nullopt;
  /// A default that follows from the parameters before it, and the same in words.
  double (*computed)(std::span<const double> before) = nullptr;
  std::string_view computedText = {};
  double minimum = -std::numeric_limits<double>::infinity();
  double maximum = std::numeric_limits<double>::infinity();
  bool whole = false;
  /// At most half the sampling rate of what the filter is fed.
  bool belowHalfRate = false;
  /// Why values outside the range are refused, where it is not plain.
  std::string_view reason = {};
  std::span<const NamedValue> names = {};

  bool Required() const { return !preset && computed == nullptr; }
};

/// What the text of a host's own argument is.
enum class HostValue { Number, Word, File, Signal };

/// An argument that the host itself acts on, written as NAME=TEXT among the parameters.
struct HostArgument {
  std::string_view name;
  std::string_view value;  // what stands behind the "=", as in FILE
  std::string_view help;
  HostValue holds = HostValue::Word;
  bool required = false;
  /// Takes the place of all parameters.
  bool settlesParameters = false;
};

/// What the lines or bytes of a data file are.
enum class DataKind {
  RecordedTrack,
  Pellets,
  Palate,
  GlottalEvents,
  FricationEvents,
  ImpulseEvents
};

/// A file that the filter reads beside the recording.
struct DataFile {
  std::string_view name;  // an extension such as ".xyd", or a whole name
  std::string_view content;
  DataKind kind;
  /// The host's argument that names another file.
  std::string_view argument;
};

/// What a filter's output is counted in.
struct OutputScale {
  std::string_view unit;
  /// What integers are scaled by; large enough for what occurs.
  double fullScale;
};

/// One of the kinds of filter: what a user and the host need to know about it.
struct FilterKind {
  std::string_view name;
  std::string_view entryPoint;
  std::string_view purpose;
  /// What else a user should know, or empty.
  std::string_view note = {};
  int sources = 1;
  std::span<const Parameter> parameters = {};
  std::span<const HostArgument> hostArguments = {};
  std::span<const DataFile> dataFiles = {};
  /// Its output follows its data file in step with the signal, and it renders nothing that
  /// begins in the signal's last 1024 samples.
  bool trackDriven = false;
  /// Left to itself it would look for its file under a name made twice over: it is given a
  /// number stream.
  bool takesStream = false;
  /// The output's unit by the parameters' values; null where it is the signal's own. The
  /// library's own label may be another one.
  OutputScale (*outputScale)(std::span<const double> values) = nullptr;
  /// How many samples it makes of `fed`, where it delivers more than it announces; nothing where
  /// what it announces holds. Null for the other filters.
  std::optional<std::int64_t> (*deliveredLength)(std::span<const double> values,
                                                 std::int64_t fed) = nullptr;
  /// What becomes of a track's gaps; null where they stay as they are.
  std::optional<Gaps> (*gapsBehind)(std::span<const double> values, const Gaps& before) = nullptr;
  /// By design its EndOfSrc never becomes true: the host stops at the announced length.
  bool neverEnds = false;
  /// Linear, and the same at all times: it has a frequency response.
  bool linear = false;
};

/// All thirteen kinds: the one table behind help, lists, parser and checks.
std::span<const FilterKind> Catalogue();

/// The kind of that name, or null.
const FilterKind* FindFilter(std::string_view name);

}  // namespace wavechain

#endif
