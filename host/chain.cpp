#include "host/chain.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <system_error>

#include "host/console_out.h"
#include "host/failure.h"
#include "host/host_arguments.h"
#include "host/make.h"
#include "host/number_stream.h"
#include "host/second_signal.h"
#include "host/text.h"

namespace wavechain {
namespace {

using wavefilters::IWaveDescriptorC;
using wavefilters::IWaveFilterC;
using wavefilters::IWaveSourceC;
using wavefilters::Ref;

double RateOf(const SignalInfo& signal) { return 1000.0 / signal.interval_ms; }

// The interval of a whole rate is not exact, nor is what a resampler makes of it.
std::string RateText(const SignalInfo& signal) { return fmt::format("{:.10g} Hz", RateOf(signal)); }

// What depends on the rate can only be checked once it is known what feeds the filter.
void CheckAgainstRate(const FilterCall& call, const std::string& label, const SignalInfo& fed) {
  const double rate = RateOf(fed);
  for (std::size_t i = 0; i < call.values.size(); ++i) {
    const Parameter& parameter = call.kind->parameters[i];
    // A little beyond half is what rounding makes of exactly half.
    if (parameter.belowHalfRate && call.values[i] > 0.5 * rate * (1.0 + 1e-12)) {
      Fail(ExitStatus::Usage, "{}: {}={} is above half the sampling rate ({} of {} Hz)", label,
           parameter.name, NumberText(call.values[i]), NumberText(0.5 * rate), NumberText(rate));
    }
  }
}

RateRatio RatioFor(const FilterCall& call, const std::string& label, const SignalInfo& fed) {
  const Conversion& wanted = *call.conversion;
  if (!wanted.rate) {
    return {static_cast<std::int64_t>(call.values[1]), static_cast<std::int64_t>(call.values[0])};
  }
  const std::optional<RateRatio> ratio = RatioOf(*wanted.rate * fed.interval_ms * 0.001);
  if (!ratio) {
    Fail(ExitStatus::Usage,
         "{}: {} and rate={} have no ratio of whole numbers that a resampler "
         "takes",
         label, RateText(fed), NumberText(*wanted.rate));
  }
  return *ratio;
}

FilterCall StageCall(const FilterCall& call, const ResamplerStage& stage) {
  FilterCall made = {.kind = call.kind, .values = stage.Parameters()};
  made.handed = static_cast<int>(made.values.size());
  return made;
}

// What the filter says that it makes of its feed.
SignalInfo Announced(IWaveFilterC& filter, const BridgeSource& feed, const std::string& label) {
  IWaveDescriptorC* handedOn = nullptr;
  filter.GetDescriptor(&handedOn);
  const auto descriptor = Ref<IWaveDescriptorC>::Adopt(handedOn);
  if (!descriptor) {
    Fail(ExitStatus::Usage, "{}: hands out no descriptor", label);
  }
  SignalInfo delivered = feed.Read(*descriptor.Get());
  if (!(std::isfinite(delivered.interval_ms) && delivered.interval_ms > 0.0)) {
    Fail(ExitStatus::Usage, "{}: announces a sampling interval of {} ms", label,
         NumberText(delivered.interval_ms));
  }
  return delivered;
}

// A recording's name; a generated signal has none.
std::string FirstName(const SignalInfo& signal) {
  if (signal.name == "-") {
    return "standard input";
  }
  return signal.name.empty() ? "the signal" : signal.name;
}

// Which of the files a filter has opened, which knows it by a temporary name.
std::string GivenName(const std::string& opened, const std::vector<std::string>& files) {
  const auto isIt = [&opened](const std::string& file) {
    std::error_code error;
    return std::filesystem::equivalent(file, opened, error);
  };
  const auto found = std::ranges::find_if(files, isIt);
  return found == files.end() ? opened : *found;
}

}  // namespace

Chain::Chain(const FilterLibrary& filterLibrary, Ref<HostSource> source,
             const std::vector<FilterCall>& calls, ChainSettings chainSettings, Log& chainLog)
    : library(filterLibrary), log(chainLog), settings(std::move(chainSettings)) {
  const SignalInfo recorded = source->Info();
  tail = {Ref<IWaveFilterC>::Adopt(source.Detach()), recorded, {}};
  for (std::size_t i = 0; i < calls.size(); ++i) {
    const std::size_t first = steps.size();
    Append(calls[i], fmt::format("{}filter {} ({})", settings.place, i + 1, calls[i].kind->name));
    for (std::size_t k = first; k < steps.size(); ++k) {
      steps[k].number = i + 1;
      steps[k].stage = calls[i].conversion ? k - first + 1 : 0;
    }
  }
  Bridge();
}

Chain::~Chain() {
  if (!bridges.empty()) {
    bridges.back()->Dispose();
  }
}

void Chain::Append(const FilterCall& call, const std::string& label) {
  if (call.conversion) {
    AppendStages(call, label);
  } else {
    AppendFilter(call, label);
  }
}

void Chain::AppendStages(const FilterCall& call, const std::string& label) {
  const SignalInfo fed = Amended(tail.delivered, tail.settings);
  const ResamplerQuality& quality = *call.conversion->quality;
  const RateRatio ratio = RatioFor(call, label, fed);
  const std::vector<ResamplerStage> stages = PlanStages(ratio, quality);
  if (stages.empty()) {
    Fail(ExitStatus::Usage,
         "{}: {} times {} / {} takes a kernel that is too long: at quality={} no prime factor may "
         "exceed {}; choose a rate nearby",
         label, RateText(fed), ratio.up, ratio.down, quality.name, quality.largestFactor);
  }
  log.Report(fmt::format("{}: {} times {} / {}, quality {}, {}", label, RateText(fed), ratio.up,
                         ratio.down, quality.name,
                         Counted(static_cast<long long>(stages.size()), "stage")));
  for (std::size_t i = 0; i < stages.size(); ++i) {
    const FilterCall stage = StageCall(call, stages[i]);
    const std::string name = fmt::format("{}, stage {}", label, i + 1);
    log.Report(fmt::format("{}: {}", name, stage.Text()));
    AppendFilter(stage, name);
  }
}

void Chain::AppendFilter(const FilterCall& call, const std::string& label) {
  labels.push_back(label);
  const SignalInfo fed = Amended(tail.delivered, tail.settings);
  CheckAgainstRate(call, label, fed);

  const Ref<IWaveFilterC> filter = library.Create(*call.kind);
  steps.push_back({.call = call});
  if (!call.kind->dataFiles.empty()) {
    const auto first = static_cast<std::ptrdiff_t>(log.Kept().size());
    data.push_back(std::make_unique<FilterData>(call, label, fed, settings.data, log));
    steps.back().notes.assign(log.Kept().begin() + first, log.Kept().end());
    const BridgeSettings wanted = data.back()->Feed();
    tail.settings.name = wanted.name;
    tail.settings.silence = wanted.silence;
  }
  BridgeSource& feed = Bridge();
  BridgeSource* second = OpenSecond(call, label);

  std::vector<double> values = call.values;
  filter->Set_param_list(values.data(), call.handed);
  if (!log.Quiet()) {
    const auto console = Make<ConsoleOut>(log, label + ": ");
    filter->Set_console_out(console.Get());
  }
  if (call.kind->takesStream) {
    streams.push_back(Make<NumberStream>());
    filter->Set_num_stream(streams.back().Get());
  }
  IWaveSourceC* sources[] = {Ref<BridgeSource>::Share(&feed).Detach(),
                             Ref<BridgeSource>::Share(second).Detach()};
  filter->Set_src_list(sources, second == nullptr ? 1 : 2);

  tail = {Ref<IWaveFilterC>::Share(filter.Get()), Announced(*filter.Get(), feed, label), {}};
  if (second != nullptr) {
    tail.delivered.length = std::max(tail.delivered.length, second->Info().length);
    tail.settings.sources = {&feed, second};
  }
  const SignalInfo announced = tail.delivered;
  SettleEnd(call, fed);
  SettleGaps(call);
  NoteStep(call, announced);
}

// Null for filters of one source.
BridgeSource* Chain::OpenSecond(const FilterCall& call, const std::string& label) {
  if (!call.second) {
    return nullptr;
  }
  ChainSettings own = settings;
  own.data.recording = call.second->path;
  own.place = label + ": with: ";
  seconds.push_back(std::make_unique<SecondSignal>(library, *call.second, std::move(own), log));
  SecondSignal& second = *seconds.back();
  const SignalInfo& fed = End().Info();
  const SignalInfo& other = second.End().Info();
  // Far below what would move the two apart by a sample in any recording.
  constexpr double Tolerance = 1e-11;
  if (!(std::abs(fed.interval_ms - other.interval_ms) <= Tolerance * fed.interval_ms)) {
    Fail(ExitStatus::Usage,
         "{}: {} comes at {}, {} at {}; both must have one rate, as by with=\"{} | "
         "ResampleBlackman rate={:.10g}\"",
         label, FirstName(fed), RateText(fed), second.Name(), RateText(other), second.Name(),
         RateOf(fed));
  }
  return &second.End();
}

// What the host did to the filter's feed is undone behind it.
void Chain::SettleEnd(const FilterCall& call, const SignalInfo& fed) {
  tail.delivered.name = fed.name;
  if (call.kind->deliveredLength != nullptr) {
    tail.delivered.length =
        call.kind->deliveredLength(call.values, fed.length).value_or(tail.delivered.length);
  }
  if (call.kind->neverEnds) {
    tail.settings.length = tail.delivered.length;
  } else if (call.kind->trackDriven && !settings.data.libraryTail) {
    tail.settings.length = fed.length;
  }
  if (call.kind->outputScale != nullptr) {
    const OutputScale scale = call.kind->outputScale(call.values);
    log.Report(fmt::format("unit   {}: {}, full scale {} (the library says {}, {})", labels.back(),
                           scale.unit, NumberText(scale.fullScale),
                           tail.delivered.units.empty() ? "nothing" : tail.delivered.units,
                           NumberText(tail.delivered.fullScale)));
    tail.delivered.units = scale.unit;
    tail.delivered.fullScale = scale.fullScale;
  }
}

void Chain::NoteStep(const FilterCall& call, const SignalInfo& announced) {
  ChainStep& step = steps.back();
  step.delivered = Amended(tail.delivered, tail.settings);
  step.libraryUnits = announced.units;
  step.libraryFullScale = announced.fullScale;
  if (gaps) {
    step.missing = gaps->Samples(step.delivered.length);
  }
  if (call.second) {
    step.second = seconds.back().get();
  }
}

void Chain::SettleGaps(const FilterCall& call) {
  if (call.second) {
    const std::optional<Gaps>& other = seconds.back()->Missing();
    gaps = gaps && other ? gaps->United(*other) : gaps ? gaps : other;
  } else if (!call.kind->dataFiles.empty()) {
    if (std::optional<Gaps> own = data.back()->Missing()) {
      gaps = std::move(own);
    }
  } else if (gaps && call.kind->gapsBehind != nullptr) {
    gaps = call.kind->gapsBehind(call.values, *gaps);
  }
}

// Ends the chain with a bridge, as its tail is by now.
BridgeSource& Chain::Bridge() {
  bridges.push_back(Make<BridgeSource>(std::move(tail.upstream), tail.delivered, tail.settings));
  return *bridges.back().Get();
}

int Chain::Pull(float* samples, int count) {
  int came = 0;
  bridges.back()->TransmitNow(samples, count, came);
  RequireFlow();
  if (AtEnd()) {
    for (const auto& files : data) {
      files->RequireUnchanged();
    }
  }
  return came;
}

std::vector<EventInstants> Chain::Events() const {
  std::vector<EventInstants> events;
  for (const auto& files : data) {
    if (files->Events()) {
      events.push_back(*files->Events());
    }
  }
  return events;
}

void Chain::RequireFlow() const {
  for (std::size_t i = 1; i < bridges.size(); ++i) {
    if (bridges[i]->Stalled()) {
      Fail(ExitStatus::Input, "{}: delivers nothing and does not end", labels[i - 1]);
    }
  }
  for (const auto& stream : streams) {
    if (stream->Broken()) {
      Fail(ExitStatus::Input,
           "{}: could not be read on, because of its disk or for want of memory; run again",
           GivenName(stream->Opened(), Files()));
    }
  }
  for (const auto& second : seconds) {
    second->RequireFlow();
  }
}

std::vector<std::string> Chain::Files() const {
  std::vector<std::string> files;
  for (const auto& own : data) {
    files.insert(files.end(), own->Files().begin(), own->Files().end());
  }
  for (const auto& second : seconds) {
    const std::vector<std::string> more = second->Files();
    files.insert(files.end(), more.begin(), more.end());
  }
  return files;
}

void Chain::WarnOfInputs() const {
  for (const auto& second : seconds) {
    second->WarnOfInput(log);
  }
}

}  // namespace wavechain
