#include "host/output_options.h"

#include <CLI/App.hpp>
#include <string_view>
#include <vector>

#include "host/audio_format.h"
#include "host/text.h"
#include "host/track_run.h"

namespace wavechain {
namespace {

template <class Entry>
std::string Choices(std::span<const Entry> table) {
  std::vector<std::string_view> names;
  for (const Entry& entry : table) {
    names.push_back(entry.name);
  }
  return Joined(names);
}

}  // namespace

void AddTrackOption(CLI::App& command, RunRequest& request) {
  command
      .add_option_function<std::string>(
          "--track",
          [&request](const std::string& text) { request.tracks.push_back(ParseTrack(text)); },
          "a chain of its own into a column of its own, once for each column of a .csv, .npz or "
          ".ssff file; in place of -f")
      ->trigger_on_parse()
      ->type_name("NAME=\"FILTER | FILTER\"");
}

CLI::Option* AddOutputOptions(CLI::App& command, RunRequest& request) {
  command.add_option("--encoding", request.encoding,
                     "how samples are stored: " + Choices(Encodings()) +
                         "; float32 by default (pcm24 in FLAC). Integers are scaled by the "
                         "signal's full scale");
  CLI::Option* format =
      command.add_option("--format", request.format,
                         "kind of file to write, whatever the extension: " + Choices(Containers()));
  command.add_option("--seed", request.seed, "of the noise that FricSyn draws; 1 by default");
  command.add_flag("--no-validity", request.noValidity,
                   "leave out the column of .csv and .ssff files that tells which samples of a "
                   "track have data behind them");
  return format;
}

}  // namespace wavechain
