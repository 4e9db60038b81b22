#include "host/second_signal.h"

#include "host/input_report.h"
#include "host/make.h"

namespace wavechain {
namespace {

AudioInput Opened(const SignalText& text, bool allowTruncated, Log& log) {
  AudioInput input(text.path, text.channel, allowTruncated, "channel=");
  ReportInput(input, log);
  return input;
}

}  // namespace

SecondSignal::SecondSignal(const FilterLibrary& library, const SignalText& text,
                           ChainSettings settings, Log& log)
    : input(Opened(text, settings.allowTruncated, log)),
      source(Make<RecordingSource>(input)),
      chain(library, wavefilters::Ref<HostSource>::Share(source.Get()), text.filters,
            std::move(settings), log) {}

void SecondSignal::RequireFlow() const {
  input.RequireIntact();
  chain.RequireFlow();
}

std::vector<std::string> SecondSignal::Files() const {
  std::vector<std::string> files = chain.Files();
  files.insert(files.begin(), input.Path());
  return files;
}

void SecondSignal::WarnOfInput(Log& log) const {
  WarnOfOddSamples(input.Name(), source->NonFinite(), log);
  chain.WarnOfInputs();
}

}  // namespace wavechain
