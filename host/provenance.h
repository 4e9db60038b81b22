#ifndef WAVEFILTERS_HOST_PROVENANCE_H
#define WAVEFILTERS_HOST_PROVENANCE_H

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

namespace wavechain {

/// A file that a run has read, under the name that it was given by.
struct FileRecord {
  std::string name;
  std::optional<std::string> sha256;  // nothing where it could not be read
};

/// One of several chains that went over one recording.
struct TrackRecord {
  std::string name;
  std::vector<std::string> filters;
  std::string unit;
  double fullScale = 0.0;
};

/// What a picture shows, beside its signals.
struct PictureRecord {
  bool response = false;
  bool phase = false;
  std::optional<double> from_s = {};
  std::optional<double> to_s = {};
  std::optional<double> highest_Hz = {};
  double window_ms = 0.0;
  double dynamics_dB = 0.0;
  std::optional<std::string> size = {};
};

/// How an output was made: everything that it takes to make it again, and nothing of the time and
/// the place.
struct Provenance {
  std::string program;  // its version
  FileRecord library;   // its file's own name, without folders
  std::optional<std::string> givenLibrary;
  std::optional<FileRecord> input;  // nothing for silence and for responses
  std::optional<int> channel;
  std::optional<std::string> type;  // of raw samples
  std::optional<double> silence_s;
  std::optional<double> rate;
  std::vector<std::string> filters;
  std::vector<TrackRecord> tracks;  // in place of the filters; in pictures beside them
  std::vector<FileRecord> files;    // data files and second signals
  unsigned seed = 1;
  int block = 0;
  bool allowTruncated = false;
  bool allowMissing = false;
  bool libraryTail = false;
  bool noValidity = false;
  std::string format;
  std::optional<std::string> encoding;
  std::string unit;
  double fullScale = 0.0;
  std::optional<PictureRecord> picture;

  nlohmann::ordered_json Json() const;
  /// What Json() gave. Fails (input) where it is none; `file` is named in messages.
  static Provenance FromJson(const nlohmann::ordered_json& json, const std::string& file);
};

/// The text of a comment: words for a reader first, then the record in one line of ASCII.
std::string CommentOf(const std::string& words, const Provenance& record);

/// The record in one line of ASCII: the same for two records that say the same.
std::string RecordLine(const nlohmann::ordered_json& record);

/// The record for people, line by line; control characters of its texts as escapes.
std::string ProvenanceText(const Provenance& record);

/// Reads the record that a file carries: in its comment or metadata, in a .json file beside it, or
/// as that file itself. Fails (input) where the file is not there, or carries none.
nlohmann::ordered_json ReadRecord(const std::string& path);

/// The same as RecordLine() gives it; nothing where the file is not there, or carries none.
std::optional<std::string> RecordLineOf(const std::string& path);

/// Whether the file is a record of its own, as it stands beside an output.
bool IsRecord(const std::string& path);

/// The file beside an output that holds its record where the output has no room.
std::string RecordPath(const std::string& output);

}  // namespace wavechain

#endif
