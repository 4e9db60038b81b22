#include "host/chain.h"

#include <cmath>

#include "host/console_out.h"
#include "host/failure.h"
#include "host/make.h"
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

BridgeSettings SettingsBehind(const FilterKind& kind, const SignalInfo& delivered) {
  BridgeSettings settings;
  if (kind.neverEnds) {
    settings.length = delivered.length;
  }
  return settings;
}

}  // namespace

Chain::Chain(const FilterLibrary& library, Ref<HostSource> source,
             const std::vector<FilterCall>& calls, Log& log) {
  Bridge(source.Get(), source->Info(), {});
  for (const FilterCall& call : calls) {
    Append(library, call, log);
  }
}

Chain::~Chain() { bridges.back()->Dispose(); }

void Chain::Append(const FilterLibrary& library, const FilterCall& call, Log& log) {
  kinds.push_back(call.kind);
  const std::size_t place = kinds.size();
  BridgeSource& feed = *bridges.back().Get();
  CheckAgainstRate(call, place, feed.Info());

  const Ref<IWaveFilterC> filter = library.Create(*call.kind);
  std::vector<double> values = call.values;
  filter->Set_param_list(values.data(), call.handed);
  if (!log.Quiet()) {
    const auto console =
        Make<ConsoleOut>(log, fmt::format("filter {} ({}): ", place, call.kind->name));
    filter->Set_console_out(console.Get());
  }
  IWaveSourceC* sources[] = {Ref<BridgeSource>::Share(&feed).Detach()};
  filter->Set_src_list(sources, 1);

  IWaveDescriptorC* handedOn = nullptr;
  filter->GetDescriptor(&handedOn);
  const auto descriptor = Ref<IWaveDescriptorC>::Adopt(handedOn);
  if (!descriptor) {
    Fail(ExitStatus::Usage, "filter {} ({}): hands out no descriptor", place, call.kind->name);
  }
  const SignalInfo delivered = feed.Read(*descriptor.Get());
  if (!(std::isfinite(delivered.interval_ms) && delivered.interval_ms > 0.0)) {
    Fail(ExitStatus::Usage, "filter {} ({}): announces a sampling interval of {} ms", place,
         call.kind->name, NumberText(delivered.interval_ms));
  }
  Bridge(filter.Get(), delivered, SettingsBehind(*call.kind, delivered));
}

void Chain::Bridge(IWaveFilterC* upstream, const SignalInfo& delivered,
                   const BridgeSettings& settings) {
  bridges.push_back(Make<BridgeSource>(Ref<IWaveFilterC>::Share(upstream), delivered, settings));
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
