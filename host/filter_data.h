#ifndef WAVEFILTERS_HOST_FILTER_DATA_H
#define WAVEFILTERS_HOST_FILTER_DATA_H

#include <optional>
#include <string>
#include <vector>

#include "host/bridge_source.h"
#include "host/file.h"
#include "host/filter_arguments.h"
#include "host/gaps.h"
#include "host/log.h"
#include "host/signal_folder.h"

namespace wavechain {

/// How data files are found, and what may be missing.
struct DataOptions {
  std::string recording;      // path of the recording; empty where it has none
  bool allowMissing = false;  // a filter whose file is missing runs all the same
  bool libraryTail = false;   // the end of the signal stays as the library leaves it
};

/// When the events of a filter's file will be heard.
struct EventInstants {
  std::string word;  // for one of them: "pulse"
  std::vector<double> instants_ms;
};

/// The data files of one filter of a chain, which reads them in silence: here they are found,
/// looked through beforehand, reported on, and given the names that the filter will look for.
/// It must outlive the filter's attachment.
class FilterData {
 public:
  /// For the filter that is called `label` in messages, fed with `fed`. Fails (usage) where
  /// nothing says where a file is, and (input) where one is missing or empty, unless that is
  /// allowed.
  FilterData(const FilterCall& filterCall, std::string label, const SignalInfo& fed,
             const DataOptions& dataOptions, Log& log);

  /// What the filter's feed is to do: bear the name under which the files are found, and go
  /// on in silence, because the filter renders nothing that begins in the last samples.
  BridgeSettings Feed() const;
  /// Which samples of the filter's output have no data behind them, for filters that render a
  /// track; nothing for the others.
  std::optional<Gaps> Missing() const;
  /// All data files, found or not.
  const std::vector<std::string>& Files() const { return files; }
  /// Fails (input) where a data file is no longer what it was when it was looked through.
  void RequireUnchanged() const;
  /// The events that the filter will render; nothing for filters that take none.
  const std::optional<EventInstants>& Events() const { return events; }

 private:
  void Prepare(const DataFile& file, const SignalInfo& fed, Log& log);
  std::string Path(const DataFile& file) const;
  void GiveName(const DataFile& file, const std::string& path);
  /// What may be done without, is; otherwise fails.
  void DoWithout(const DataFile& file, const std::string& path, const std::string& why, Log& log);

  const FilterCall& call;
  std::string who;  // "filter 2 (BeamPel)"
  const DataOptions& options;
  struct Seen {
    std::string path;
    std::optional<FileState> state;
  };

  std::vector<std::string> files;
  std::vector<Seen> seen;  // the files that are there
  SignalInfo signal;       // that the filter is fed
  std::string pellets;     // their file
  std::optional<EventInstants> events;
  std::int64_t palatePoints = 0;  // that are searched
  bool silenced = false;          // without its data the filter renders nothing
  SignalFolder folder;
};

}  // namespace wavechain

#endif
