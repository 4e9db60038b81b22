#ifndef WAVEFILTERS_HOST_RUN_RECORD_H
#define WAVEFILTERS_HOST_RUN_RECORD_H

#include <memory>
#include <string>
#include <vector>

#include "host/audio_format.h"
#include "host/audio_input.h"
#include "host/chain.h"
#include "host/output_file.h"
#include "host/provenance.h"
#include "host/run.h"

namespace wavechain {

/// The record of a run, without its chain. Reads recording and library once to their ends, for
/// their hashes. `file` is null for silence.
Provenance RecordOf(const RunRequest& request, const OutputFormat& format,
                    const FilterLibrary& library, const AudioInput* file);
/// The same without what is written.
Provenance RecordOfInput(const RunRequest& request, const FilterLibrary& library,
                         const AudioInput* file);
/// Adds files that were read, each once, with their hashes.
void RecordFiles(const std::vector<std::string>& paths, Provenance& record);
/// Adds the filters of a chain, and hashes what it reads.
void RecordChain(const std::vector<FilterCall>& calls, const Chain& chain, Provenance& record);
/// The same for one of several chains.
void RecordTrack(const std::string& name, const std::vector<FilterCall>& calls, const Chain& chain,
                 Provenance& record);

/// Where a run's record goes: into the output's comment where the format has one that is long
/// enough, otherwise into a file beside the output.
class RecordKeeper {
 public:
  /// `words` lead the comment. Fails (output) where a file beside the output is needed and would
  /// replace one, unless the request says so.
  RecordKeeper(const RunRequest& request, const OutputFormat& format, const Provenance& record,
               const std::string& words);
  /// Without a record there are only the words.
  explicit RecordKeeper(std::string words) : comment(std::move(words)) {}

  /// What goes into the output's comment.
  const std::string& Comment() const { return comment; }
  /// Makes output and file beside it appear, both or neither; reports where there is no place for a
  /// record at all, since the output is standard output. Fails (output) where that is not possible.
  void CommitWith(OutputFile& output, const OutputFormat& format, Log& log);

 private:
  void MakeWay(const std::string& name) const;

  std::string comment;
  bool lost = false;
  bool makesWay = false;  // what an earlier run left gives way, as far as it may be replaced
  bool replaces = false;
  std::unique_ptr<OutputFile> beside;
};

}  // namespace wavechain

#endif
