#ifndef WAVEFILTERS_HOST_DATA_CHECK_H
#define WAVEFILTERS_HOST_DATA_CHECK_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace wavechain {

// Filters read data files in silence: a missing file gives zeros, an unreadable line ends the
// data. Here the same files are read beforehand, by the same rules, to say what will happen.

/// Where and why a text file cannot be read on.
struct DataFault {
  std::int64_t line = 0;  // from 1; 0 for the file as a whole
  std::string reason;
};

/// Why the path is no file that a filter can read (missing, a folder, no permission, empty);
/// nothing where it is one.
std::optional<std::string> WhyUnreadable(const std::string& path);

/// Pellet positions: a line of numbers every 6.866 ms, coded as differences.
struct PelletReport {
  std::int64_t records = 0;  // lines that a filter reads before the fault or the end
  double duration_ms = 0.0;  // up to the middle between the last record and a next one
  std::optional<DataFault> fault;
  /// The numbers look like positions: their running sums, which is what filters render, run
  /// away. Such a file gives nonsense.
  bool looksLikePositions = false;
};

/// Hands on the records of a pellet file, of so many numbers each, up to the first line that has
/// fewer, or until `next` returns false. Returns what is wrong with that line.
std::optional<DataFault> ReadRecords(const std::string& path, int numbers,
                                     const std::function<bool(const std::vector<double>&)>& next);

/// `numbers`: how many each line must have for the filter that will read them.
PelletReport CheckPellets(const std::string& path, int numbers);

/// A palate's contour: an x and a y on each line.
struct PalateReport {
  std::int64_t points = 0;    // stored by the filter, 4096 at most
  std::int64_t searched = 0;  // of them, those in which the nearest point is looked for
  std::optional<DataFault> fault;
};
PalateReport CheckPalate(const std::string& path);

/// A recorded track: 1024 bytes, then 16-bit samples.
struct TrackReport {
  std::int64_t samples = 0;
  double duration_ms = 0.0;
};
TrackReport CheckTrack(const std::string& path);

/// The three kinds of event files: what a line must hold, and what becomes of odd instants.
enum class EventKind { Glottal, Frication, Impulse };

struct EventReport {
  std::int64_t events = 0;  // that a filter reads before the fault or the end
  std::optional<DataFault> fault;
  // Of these events, those that will not be heard, and why.
  std::int64_t beforeStart = 0;      // instants below 0
  std::int64_t tooCloseToStart = 0;  // bursts whose window would begin before the signal
  std::int64_t notIncreasing = 0;    // pulses whose period, to the next instant, is not above 0
  std::int64_t beyondEnd = 0;        // at or behind the signal's end
  /// Lines on which something after the needed numbers is no number: ratios from there on do
  /// not count. The first such line.
  std::optional<DataFault> ignoredRatios;
  /// The instants (ms) of the others, which will be heard.
  std::vector<double> heard_ms;
};

/// For a signal of `length` samples `interval_ms` apart.
EventReport CheckEvents(const std::string& path, EventKind kind, double interval_ms,
                        std::int64_t length);

}  // namespace wavechain

#endif
