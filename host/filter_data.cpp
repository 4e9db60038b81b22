#include "host/filter_data.h"

#include <fmt/format.h>

#include <cerrno>
#include <filesystem>
#include <utility>

#include "host/data_check.h"
#include "host/data_report.h"
#include "host/failure.h"
#include "host/pellet_gaps.h"

namespace wavechain {
namespace {

// The library renders no record and no event that begins in a signal's last 1024 samples.
constexpr std::int64_t UnrenderedTail = 1024;

std::optional<EventKind> EventKindOf(DataKind kind) {
  switch (kind) {
    case DataKind::GlottalEvents:
      return EventKind::Glottal;
    case DataKind::FricationEvents:
      return EventKind::Frication;
    case DataKind::ImpulseEvents:
      return EventKind::Impulse;
    case DataKind::RecordedTrack:
    case DataKind::Pellets:
    case DataKind::Palate:
      break;
  }
  return std::nullopt;
}

std::string_view EventWord(EventKind kind) {
  switch (kind) {
    case EventKind::Glottal:
      return "pulse";
    case EventKind::Frication:
      return "burst";
    case EventKind::Impulse:
      break;
  }
  return "impulse";
}

bool IsExtension(const DataFile& file) { return file.name.starts_with('.'); }

}  // namespace

FilterData::FilterData(const FilterCall& filterCall, std::string label, const SignalInfo& fed,
                       const DataOptions& dataOptions, Log& log)
    : call(filterCall), who(std::move(label)), options(dataOptions), signal(fed) {
  for (const DataFile& file : call.kind->dataFiles) {
    Prepare(file, fed, log);
  }
  // The filter would do without a file that it cannot open, and not say so.
  if (!HasRoomForFiles(seen.size())) {
    Fail(ExitStatus::Input, "{}: its data files cannot be opened: {}", who, SystemText(errno));
  }
}

void FilterData::RequireUnchanged() const {
  for (const Seen& file : seen) {
    if (StateOf(file.path) != file.state) {
      Fail(ExitStatus::Input, "{}: {}: changed while it was being read; run again", who, file.path);
    }
  }
}

BridgeSettings FilterData::Feed() const {
  BridgeSettings settings;
  settings.name = folder.SignalName();
  if (call.kind->trackDriven && !options.libraryTail) {
    settings.silence = UnrenderedTail;
  }
  return settings;
}

std::optional<Gaps> FilterData::Missing() const {
  if (call.kind->outputScale == nullptr) {
    return std::nullopt;
  }
  Gaps gaps;
  if (!call.kind->trackDriven) {
    return gaps;  // a recorded track is as long as its data
  }
  if (silenced) {
    gaps.Add({0, signal.length});
    return gaps;
  }
  return PelletGaps(pellets, call, palatePoints, signal.interval_ms, signal.length,
                    signal.length + Feed().silence);
}

void FilterData::Prepare(const DataFile& file, const SignalInfo& fed, Log& log) {
  const std::string path = Path(file);
  files.push_back(path);
  if (const auto why = WhyUnreadable(path)) {
    DoWithout(file, path, *why, log);
    return;
  }
  seen.push_back({path, StateOf(path)});
  if (const auto why = ReportOnData(file, call, path, fed, log)) {
    DoWithout(file, path, *why, log);
    return;
  }
  GiveName(file, path);
  if (file.kind == DataKind::Pellets) {
    pellets = path;
  } else if (file.kind == DataKind::Palate) {
    palatePoints = CheckPalate(path).searched;
  } else if (const std::optional<EventKind> kind = EventKindOf(file.kind)) {
    const std::int64_t rendered = fed.length - (options.libraryTail ? UnrenderedTail : 0);
    events = EventInstants{std::string(EventWord(*kind)),
                           CheckEvents(path, *kind, fed.interval_ms, rendered).heard_ms};
  }
}

std::string FilterData::Path(const DataFile& file) const {
  const auto given = call.hostValues.find(file.argument);
  if (given != call.hostValues.end()) {
    return given->second;
  }
  if (options.recording.empty()) {
    Fail(ExitStatus::Usage,
         "{}: its data file would lie beside the recording, but there is no recording's name; add "
         "{}=FILE",
         who, file.argument);
  }
  std::filesystem::path path = options.recording;
  return IsExtension(file) ? path.replace_extension(file.name) : path.replace_filename(file.name);
}

void FilterData::GiveName(const DataFile& file, const std::string& path) {
  if (IsExtension(file)) {
    folder.LinkByExtension(file.name, path);
  } else {
    folder.LinkBehindName(file.name, path);
  }
}

void FilterData::DoWithout(const DataFile& file, const std::string& path, const std::string& why,
                           Log& log) {
  if (!options.allowMissing) {
    Fail(ExitStatus::Input,
         "{}: {}: {}; name the file by {}=FILE, or run without it by --allow-missing", who, path,
         why, file.argument);
  }
  constexpr double PalateMode = 8;
  if (file.kind == DataKind::Palate && call.values[0] != PalateMode) {
    // The library wants to open a palate for every measure, though it needs one for this only.
    folder.EmptyBehindName(file.name);
    log.Warn(fmt::format("warning: {}: {}: {}; the measure does without it", who, path, why));
    return;
  }
  silenced = true;
  log.Warn(fmt::format("warning: {}: {}: {}; the filter adds nothing", who, path, why));
}

}  // namespace wavechain
