#include "host/chain.h"

#include <cmath>

#include "host/console_out.h"
#include "host/failure.h"
#include "host/make.h"
#include "host/number_stream.h"
#include "host/text.h"

namespace wavechain {
namespace {

using wavefilters::IWaveDescriptorC;
using wavefilters::IWaveFilterC;
using wavefilters::IWaveSourceC;
using wavefilters::Ref;

// What depends on the rate can only be checked once it is known what feeds the filter.
void CheckAgainstRate(const FilterCall& call, std::size_t place, const SignalInfo& fed) {
  const double rate = 1000.0 / fed.interval_ms;
  for (std::size_t i = 0; i < call.values.size(); ++i) {
    const Parameter& parameter = call.kind->parameters[i];
    // A little beyond half is what rounding makes of exactly half.
    if (parameter.belowHalfRate && call.values[i] > 0.5 * rate * (1.0 + 1e-12)) {
      Fail(ExitStatus::Usage, "filter {} ({}): {}={} is above half the sampling rate ({} of {} Hz)",
           place, call.kind->name, parameter.name, NumberText(call.values[i]),
           NumberText(0.5 * rate), NumberText(rate));
    }
  }
}

}  // namespace

Chain::Chain(const FilterLibrary& library, Ref<HostSource> source,
             const std::vector<FilterCall>& calls, const DataOptions& options, Log& log) {
  const SignalInfo recorded = source->Info();
  tail = {Ref<IWaveFilterC>::Adopt(source.Detach()), recorded, {}};
  for (const FilterCall& call : calls) {
    Append(library, call, options, log);
  }
  Bridge();
}

Chain::~Chain() {
  if (!bridges.empty()) {
    bridges.back()->Dispose();
  }
}

void Chain::Append(const FilterLibrary& library, const FilterCall& call, const DataOptions& options,
                   Log& log) {
  kinds.push_back(call.kind);
  const std::size_t place = kinds.size();
  const SignalInfo fed = Amended(tail.delivered, tail.settings);
  CheckAgainstRate(call, place, fed);

  const Ref<IWaveFilterC> filter = library.Create(*call.kind);
  if (!call.kind->dataFiles.empty()) {
    data.push_back(std::make_unique<FilterData>(call, place, fed, options, log));
    const BridgeSettings wanted = data.back()->Feed();
    tail.settings.name = wanted.name;
    tail.settings.silence = wanted.silence;
  }
  BridgeSource& feed = Bridge();

  std::vector<double> values = call.values;
  filter->Set_param_list(values.data(), call.handed);
  if (!log.Quiet()) {
    const auto console =
        Make<ConsoleOut>(log, fmt::format("filter {} ({}): ", place, call.kind->name));
    filter->Set_console_out(console.Get());
  }
  if (call.kind->takesStream) {
    const auto stream = Make<NumberStream>();
    filter->Set_num_stream(stream.Get());
  }
  IWaveSourceC* sources[] = {Ref<BridgeSource>::Share(&feed).Detach()};
  filter->Set_src_list(sources, 1);

  IWaveDescriptorC* handedOn = nullptr;
  filter->GetDescriptor(&handedOn);
  const auto descriptor = Ref<IWaveDescriptorC>::Adopt(handedOn);
  if (!descriptor) {
    Fail(ExitStatus::Usage, "filter {} ({}): hands out no descriptor", place, call.kind->name);
  }
  tail = {Ref<IWaveFilterC>::Share(filter.Get()), feed.Read(*descriptor.Get()), {}};
  if (!(std::isfinite(tail.delivered.interval_ms) && tail.delivered.interval_ms > 0.0)) {
    Fail(ExitStatus::Usage, "filter {} ({}): announces a sampling interval of {} ms", place,
         call.kind->name, NumberText(tail.delivered.interval_ms));
  }
  SettleEnd(call, fed, options, log);
}

// What the host did to the filter's feed is undone behind it.
void Chain::SettleEnd(const FilterCall& call, const SignalInfo& fed, const DataOptions& options,
                      Log& log) {
  tail.delivered.name = fed.name;
  if (call.kind->neverEnds) {
    tail.settings.length = tail.delivered.length;
  } else if (call.kind->trackDriven && !options.libraryTail) {
    tail.settings.length = fed.length;
  }
  if (call.kind->outputScale != nullptr) {
    const OutputScale scale = call.kind->outputScale(call.values);
    log.Report(fmt::format("unit   filter {} ({}): {}, full scale {} (the library says {}, {})",
                           kinds.size(), call.kind->name, scale.unit, NumberText(scale.fullScale),
                           tail.delivered.units.empty() ? "nothing" : tail.delivered.units,
                           NumberText(tail.delivered.fullScale)));
    tail.delivered.units = scale.unit;
    tail.delivered.fullScale = scale.fullScale;
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
  for (std::size_t i = 1; i < bridges.size(); ++i) {
    if (bridges[i]->Stalled()) {
      Fail(ExitStatus::Input, "filter {} ({}): delivers nothing and does not end", i,
           kinds[i - 1]->name);
    }
  }
  return came;
}

}  // namespace wavechain
