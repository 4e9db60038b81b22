#ifndef WAVEFILTERS_HOST_RUN_INPUT_H
#define WAVEFILTERS_HOST_RUN_INPUT_H

#include <memory>
#include <string>

#include "host/audio_input.h"
#include "host/recording_source.h"
#include "host/run.h"

namespace wavechain {

/// Fails (usage) where the request's --silence, --rate and -t do not go together.
void CheckInput(const RunRequest& request);

/// What feeds the chain: a recording, or silence in its place.
class RunInput {
 public:
  /// Opens the recording. Fails as AudioInput and ChooseRawLayout do.
  explicit RunInput(const RunRequest& request);
  /// The same recording once more, from its start on, also where it came through a pipe.
  RunInput(const RunRequest& request, const RunInput& first);

  HostSource* Source() const { return source.Get(); }
  std::int64_t NonFinite() const { return recording ? recording->NonFinite() : 0; }
  /// The recording's name for messages, or "silence".
  std::string Name() const { return file ? file->Name() : "silence"; }
  double Seconds() const {
    return 0.001 * source->Info().interval_ms * static_cast<double>(source->Info().length);
  }
  /// Fails (input) where the recording gave out early.
  void RequireIntact() const;
  /// Null for silence.
  const AudioInput* File() const { return file.get(); }

 private:
  void Open(const RunRequest& request, const std::string& path);

  std::unique_ptr<AudioInput> file;
  wavefilters::Ref<RecordingSource> recording;
  wavefilters::Ref<HostSource> source;
};

}  // namespace wavechain

#endif
