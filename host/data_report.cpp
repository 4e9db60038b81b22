#include "host/data_report.h"

#include <fmt/format.h>

#include "host/data_check.h"
#include "host/failure.h"
#include "host/text.h"

namespace wavechain {
namespace {

constexpr int NumbersOfRecord = 16;

// One file's lines of report, and its warnings.
class Reporter {
 public:
  Reporter(const std::string& filePath, const SignalInfo& described, Log& reportLog)
      : path(filePath), name(OneLine(filePath)), signal(described), log(reportLog) {}

  std::optional<std::string> Pellets(const FilterCall& call) {
    const bool oneColumn = call.kind->name == "BeamPel";
    const int numbers = oneColumn ? static_cast<int>(call.values[0]) : NumbersOfRecord;
    const PelletReport report = CheckPellets(path, numbers);
    if (report.records == 0) {
      return Why(*report.fault);
    }
    Holds(Counted(report.records, "record"), report.duration_ms);
    if (report.fault) {
      Warn(fmt::format("{}; the data end there", Why(*report.fault)));
    }
    if (report.looksLikePositions) {
      Warn(
          "its numbers look like positions, but the filter adds them up: it wants differences, "
          "each record minus the one before");
    }
    return std::nullopt;
  }

  std::optional<std::string> Palate() {
    const PalateReport report = CheckPalate(path);
    if (report.points == 0) {
      return report.fault ? Why(*report.fault) : "it holds no point";
    }
    log.Report(fmt::format("data   {}: {}, {} of them searched", name,
                           Counted(report.points, "point"), report.searched));
    if (report.fault) {
      Warn(fmt::format("{}; the contour ends there", Why(*report.fault)));
    }
    if (report.searched == 0) {
      Warn("with a single point none is searched: the distance is 1000 everywhere");
    }
    return std::nullopt;
  }

  std::optional<std::string> Track() {
    const TrackReport report = CheckTrack(path);
    if (report.samples == 0) {
      return "it holds no sample behind its header of 1024 bytes";
    }
    Holds(Counted(report.samples, "sample"), report.duration_ms);
    return std::nullopt;
  }

  std::optional<std::string> Events(EventKind kind) {
    const EventReport report = CheckEvents(path, kind, signal.interval_ms, signal.length);
    if (report.events == 0) {
      return report.fault ? Why(*report.fault) : "it holds no event";
    }
    log.Report(fmt::format("data   {}: {}", name, Counted(report.events, "event")));
    if (report.fault) {
      Warn(fmt::format("{}; the events end there", Why(*report.fault)));
    }
    if (report.ignoredRatios) {
      Warn(fmt::format("{}; the line's ratios end there", Why(*report.ignoredRatios)));
    }
    Dropped(report.beforeStart, "before the start of the signal");
    Dropped(report.tooCloseToStart, "less than 5 ms behind the start of the signal");
    Dropped(report.notIncreasing, "not before the next one");
    Dropped(report.beyondEnd, "behind the end of the signal");
    return std::nullopt;
  }

 private:
  static std::string Why(const DataFault& fault) {
    return fmt::format("line {}: {}", fault.line, fault.reason);
  }

  void Holds(const std::string& what, double duration_ms) {
    log.Report(fmt::format("data   {}: {}, {:.3f} s (the signal has {:.3f} s)", name, what,
                           0.001 * duration_ms,
                           0.001 * signal.interval_ms * static_cast<double>(signal.length)));
  }

  void Warn(const std::string& what) { log.Warn(fmt::format("warning: {}: {}", name, what)); }

  void Dropped(std::int64_t count, const char* why) {
    if (count > 0) {
      Warn(fmt::format("{} will be dropped: {}", Counted(count, "event"), why));
    }
  }

  const std::string& path;
  std::string name;  // as messages show it
  const SignalInfo& signal;
  Log& log;
};

}  // namespace

std::optional<std::string> ReportOnData(const DataFile& file, const FilterCall& call,
                                        const std::string& path, const SignalInfo& signal,
                                        Log& log) {
  Reporter reporter(path, signal, log);
  switch (file.kind) {
    case DataKind::RecordedTrack:
      return reporter.Track();
    case DataKind::Pellets:
      return reporter.Pellets(call);
    case DataKind::Palate:
      return reporter.Palate();
    case DataKind::GlottalEvents:
      return reporter.Events(EventKind::Glottal);
    case DataKind::FricationEvents:
      return reporter.Events(EventKind::Frication);
    case DataKind::ImpulseEvents:
      return reporter.Events(EventKind::Impulse);
  }
  return std::nullopt;
}

}  // namespace wavechain
