#include "host/run_input.h"

#include <cmath>

#include "host/failure.h"
#include "host/make.h"
#include "host/raw_format.h"
#include "host/silent_source.h"
#include "host/text.h"

namespace wavechain {

void CheckInput(const RunRequest& request) {
  if (request.silence_s && !request.rate) {
    Fail(ExitStatus::Usage, "--silence has no rate of its own; add --rate, as in --rate 16000");
  }
  if (request.rate && !request.silence_s && !request.type) {
    Fail(ExitStatus::Usage,
         "--rate goes with --silence or with -t; a recording's rate is changed by -f "
         "\"ResampleBlackman rate={}\"",
         NumberText(*request.rate));
  }
  if (request.silence_s && request.type) {
    Fail(ExitStatus::Usage, "-t and --silence exclude each other: silence has no samples to read");
  }
  if (request.silence_s && !(*request.silence_s >= 0.0 && *request.silence_s <= 1e6)) {
    Fail(ExitStatus::Usage, "--silence {}: seconds are 0 to 1000000",
         NumberText(*request.silence_s));
  }
  if (request.rate && !(*request.rate >= 1.0 && *request.rate <= 1e6)) {
    Fail(ExitStatus::Usage, "--rate {}: a sampling rate is 1 to 1000000 Hz",
         NumberText(*request.rate));
  }
}

RunInput::RunInput(const RunRequest& request) { Open(request, request.input); }

RunInput::RunInput(const RunRequest& request, const RunInput& first) {
  // Opened by its descriptor a file is read from its start, whatever has become of its name.
  Open(request, first.file ? fmt::format("/proc/self/fd/{}", first.file->Descriptor()) : "");
}

void RunInput::Open(const RunRequest& request, const std::string& path) {
  if (request.silence_s) {
    const double samples = std::round(*request.silence_s * *request.rate);
    source = wavefilters::Ref<HostSource>::Adopt(
        Make<SilentSource>(static_cast<std::int64_t>(samples), *request.rate).Detach());
    return;
  }
  file = std::make_unique<AudioInput>(path, request.channel, request.allowTruncated, "--channel ",
                                      ChooseRawLayout(request.type, request.rate));
  recording = Make<RecordingSource>(*file);
  source = wavefilters::Ref<HostSource>::Share(recording.Get());
}

void RunInput::RequireIntact() const {
  if (file) {
    file->RequireIntact();
  }
}

}  // namespace wavechain
