#include "host/input_options.h"

#include "host/failure.h"
#include "host/raw_format.h"
#include "host/text.h"

namespace wavechain {
namespace {

int ChannelNumber(const std::string& text) {
  const std::optional<double> number = ParseNumber(text);
  if (!number || *number < 1.0 || *number > 1e6 || *number != static_cast<int>(*number)) {
    Fail(ExitStatus::Usage, "--channel {}: takes a whole number from 1", text);
  }
  return static_cast<int>(*number);
}

std::string TypeNames() {
  std::vector<std::string_view> names;
  for (const RawType& type : RawTypes()) {
    names.push_back(type.name);
  }
  return Joined(names);
}

}  // namespace

CLI::Option* AddInputOptions(CLI::App& command, RunRequest& request) {
  command
      .add_option_function<std::string>(
          "--channel",
          [&request](const std::string& text) { request.channel = ChannelNumber(text); },
          "channel to read, from 1 (files of several)")
      ->type_name("NUMBER");
  CLI::Option* silence =
      command.add_option("--silence", request.silence_s,
                         "seconds of silence as input, in place of a recording (with --rate)");
  command.add_option("--rate", request.rate, "sampling rate of the silence or of raw samples, Hz");
  command.add_option("-t,--type", request.type,
                     "IN is raw samples without a header, little-endian, one channel: " +
                         TypeNames() + " (with --rate). So is OUT then, where it is -");
  command.add_flag("--allow-missing", request.allowMissing,
                   "run filters whose data files are missing or empty: they add nothing");
  command.add_flag("--allow-truncated", request.allowTruncated,
                   "take what is there of a recording that was cut short");
  command.add_flag("--library-tail", request.libraryTail,
                   "leave the last 1024 samples as the library does, which renders nothing that "
                   "begins in them");
  command.add_option("--library", request.library,
                     "filter library to load instead of the usual one");
  return silence;
}

}  // namespace wavechain
