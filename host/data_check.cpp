#include "host/data_check.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>
#include <locale>
#include <sstream>
#include <string_view>
#include <utility>
#include <vector>

#include "host/failure.h"

namespace wavechain {
namespace {

constexpr double RecordPeriod_ms = 6.866;

// One line of text at a time, and the numbers on it by the standard stream, which is how
// filters understand them.
class Lines {
 public:
  explicit Lines(const std::string& filePath) : path(filePath), file(filePath) {
    if (!file.is_open()) {
      Fail(ExitStatus::Input, "{}: cannot be opened: {}", path, SystemText(errno));
    }
    // Streams take memory that runs out, and files that cannot be read on, for an end.
    file.exceptions(std::ios::badbit);
    line.exceptions(std::ios::badbit);
    line.imbue(std::locale::classic());
  }

  bool Next() {
    try {
      if (!std::getline(file, text)) {
        return false;
      }
    } catch (const std::ios_base::failure& error) {
      Fail(ExitStatus::Input, "{}: cannot be read: {}", path, error.code().message());
    }
    ++number;
    line.clear();
    line.str(text);
    return true;
  }

  // The next number; where there is none, why not.
  bool Read(double& value) { return static_cast<bool>(line >> value); }
  bool ReadSingle(float& value) { return static_cast<bool>(line >> value); }

  // Why the line has not what is wanted of it; nothing where no more than blank lines follow,
  // since a file may well end with one.
  std::optional<DataFault> Fault(std::string_view wanted, int found) {
    const std::int64_t here = number;
    if (IsBlank()) {
      while (Next()) {
        if (!IsBlank()) {
          return DataFault{here, fmt::format("{} wanted, the line is blank", wanted)};
        }
      }
      return std::nullopt;
    }
    const std::string word = Odd();
    const std::string what = word.empty()
                                 ? fmt::format("there {} {}", found == 1 ? "is" : "are", found)
                                 : fmt::format("'{}' is no number", word);
    return DataFault{here, fmt::format("{} wanted, {}", wanted, what)};
  }

  // The line's next word as a fault, if there is one.
  std::optional<DataFault> OddFault(std::string_view why) {
    const std::string word = Odd();
    return word.empty() ? std::nullopt
                        : std::optional(DataFault{number, fmt::format("'{}' {}", word, why)});
  }

 private:
  bool IsBlank() const { return text.find_first_not_of(" \t\r\v\f") == std::string::npos; }

  // What a failed read stopped at on the rest of the line.
  std::string Odd() {
    line.clear();
    std::string word;
    line >> word;
    constexpr std::size_t Longest = 24;
    return OneLine(word.size() > Longest ? word.substr(0, Longest) + "..." : word);
  }

  const std::string& path;
  std::ifstream file;
  std::string text;
  std::istringstream line;
  std::int64_t number = 0;
};

// The instants of the events that will be heard, as far as they are known.
class HeardEvents {
 public:
  void Add(double instant_ms, bool heard) {
    lastHeard = heard;
    if (heard) {
      instants.push_back(instant_ms);
    }
  }
  // The last one turns out to be dropped.
  void DropLast() {
    if (std::exchange(lastHeard, false)) {
      instants.pop_back();
    }
  }
  std::vector<double> Take() { return std::move(instants); }

 private:
  std::vector<double> instants;
  bool lastHeard = false;
};

// Differences sum up to a position, which stays near the largest of them; positions sum up to
// their number times their mean.
class RunawayCheck {
 public:
  explicit RunawayCheck(std::size_t columns) : sums(columns), largest(columns) {}

  void Add(const std::vector<double>& record) {
    for (std::size_t i = 0; i < record.size(); ++i) {
      // What stands for a missing value would hide everything else.
      if (std::abs(record[i]) < 500000.0) {
        sums[i] += record[i];
        largest[i] = std::max(largest[i], std::abs(record[i]));
      }
    }
    ++records;
  }

  bool RunsAway() const {
    constexpr std::int64_t FewestRecords = 20;
    std::size_t used = 0;
    std::size_t away = 0;
    for (std::size_t i = 0; i < sums.size(); ++i) {
      used += largest[i] > 0.0 ? 1 : 0;
      away += std::abs(sums[i]) > 8.0 * largest[i] ? 1 : 0;
    }
    return records >= FewestRecords && used > 0 && 2 * away > used;
  }

 private:
  std::vector<double> sums;
  std::vector<double> largest;
  std::int64_t records = 0;
};

double SampleIndex(double time_ms, double interval_ms) {
  const double index = std::trunc(time_ms / interval_ms);
  return std::isnan(index) ? 0.0 : index;
}

int NeededNumbers(EventKind kind) {
  switch (kind) {
    case EventKind::Glottal:
      return 4;
    case EventKind::Frication:
    case EventKind::Impulse:
      break;
  }
  return 2;
}

std::string_view NeededWords(EventKind kind) {
  return kind == EventKind::Glottal ? "an instant, an amplitude, a frequency and a bandwidth"
                                    : "an instant and an amplitude";
}

}  // namespace

std::optional<std::string> WhyUnreadable(const std::string& path) {
  std::error_code error;
  const auto status = std::filesystem::status(path, error);
  if (status.type() == std::filesystem::file_type::not_found) {
    return "there is no such file";
  }
  if (error) {
    return error.message();
  }
  if (status.type() != std::filesystem::file_type::regular) {
    return status.type() == std::filesystem::file_type::directory ? "it is a folder"
                                                                  : "it is no regular file";
  }
  if (::access(path.c_str(), R_OK) != 0) {
    return SystemText(errno);
  }
  if (std::filesystem::file_size(path, error) == 0 && !error) {
    return "it is empty";
  }
  return std::nullopt;
}

std::optional<DataFault> ReadRecords(const std::string& path, int numbers,
                                     const std::function<bool(const std::vector<double>&)>& next) {
  Lines lines(path);
  const auto wanted = static_cast<std::size_t>(numbers);
  std::vector<double> record;
  while (lines.Next()) {
    record.clear();
    double value = 0.0;
    while (record.size() < wanted && lines.Read(value)) {
      record.push_back(value);
    }
    if (record.size() < wanted) {
      return lines.Fault(fmt::format("{} numbers", numbers), static_cast<int>(record.size()));
    }
    if (!next(record)) {
      break;
    }
  }
  return std::nullopt;
}

PelletReport CheckPellets(const std::string& path, int numbers) {
  PelletReport report;
  RunawayCheck check(static_cast<std::size_t>(numbers));
  report.fault = ReadRecords(path, numbers, [&](const std::vector<double>& record) {
    check.Add(record);
    ++report.records;
    return true;
  });
  if (report.records == 0 && !report.fault) {
    report.fault = DataFault{1, "all its lines are blank"};
  }
  // Record k is held from (k - 1.5) to (k - 0.5) periods.
  report.duration_ms = std::max((static_cast<double>(report.records) - 0.5) * RecordPeriod_ms, 0.0);
  report.looksLikePositions = check.RunsAway();
  return report;
}

PalateReport CheckPalate(const std::string& path) {
  constexpr std::int64_t MostPoints = 4096;
  constexpr std::int64_t MostSearched = 2048;
  PalateReport report;
  Lines lines(path);
  while (report.points < MostPoints && lines.Next()) {
    double x = 0.0;
    double y = 0.0;
    const bool hasX = lines.Read(x);
    if (!hasX || !lines.Read(y)) {
      report.fault = lines.Fault("an x and a y", hasX ? 1 : 0);
      break;
    }
    ++report.points;
  }
  // The last point that was read is never looked at.
  report.searched = std::clamp<std::int64_t>(report.points - 1, 0, MostSearched);
  return report;
}

TrackReport CheckTrack(const std::string& path) {
  constexpr std::int64_t HeaderBytes = 1024;
  constexpr double Interval_ms = 1.145081873353945;
  TrackReport report;
  std::error_code error;
  const auto size = std::filesystem::file_size(path, error);
  if (!error) {
    const auto counted = std::min<std::uintmax_t>(size, std::numeric_limits<std::int32_t>::max());
    report.samples =
        std::max<std::int64_t>(static_cast<std::int64_t>(counted) - HeaderBytes, 0) / 2;
  }
  report.duration_ms = static_cast<double>(report.samples) * Interval_ms;
  return report;
}

EventReport CheckEvents(const std::string& path, EventKind kind, double interval_ms,
                        std::int64_t length) {
  constexpr int MostRatios = 256;
  EventReport report;
  Lines lines(path);
  const double halfWindow = std::trunc(5.0 / interval_ms);
  std::optional<double> before;
  HeardEvents heard;
  while (lines.Next()) {
    double values[4] = {};
    int found = 0;
    while (found < NeededNumbers(kind) && lines.Read(values[found])) {
      ++found;
    }
    if (found < NeededNumbers(kind)) {
      report.fault = lines.Fault(NeededWords(kind), found);
      break;
    }
    ++report.events;
    const double index = SampleIndex(values[0], interval_ms);
    if (index < 0.0) {
      ++report.beforeStart;
    } else if (kind == EventKind::Frication && index < halfWindow) {
      ++report.tooCloseToStart;
    }
    const bool isBehind = index >= static_cast<double>(length);
    report.beyondEnd += isBehind ? 1 : 0;
    if (kind == EventKind::Glottal && before && index <= *before) {
      ++report.notIncreasing;
      heard.DropLast();
    }
    const double least = kind == EventKind::Frication ? halfWindow : 0.0;
    heard.Add(values[0], index >= least && !isBehind);
    before = index;
    if (kind != EventKind::Impulse && !report.ignoredRatios) {
      float ratio = 0.0F;
      int ratios = 0;
      while (ratios < MostRatios && lines.ReadSingle(ratio)) {
        ++ratios;
      }
      if (ratios < MostRatios) {
        report.ignoredRatios = lines.OddFault("is no log-area ratio");
      }
    }
  }
  report.heard_ms = heard.Take();
  return report;
}

}  // namespace wavechain
