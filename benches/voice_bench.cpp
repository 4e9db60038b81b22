// Glottal pulses: one in a block and several, by slot 16 of the library, the reading of their
// parameters included.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <string>

#include "benches/as_written.h"
#include "benches/host.h"
#include "benches/signals.h"
#include "benches/suites.h"
#include "tracks/add_track.h"

namespace wavefilters::bench {
namespace {

constexpr double Interval_ms = 0.1;
constexpr int FirstInstant = 600;  // a full rise fits before it

struct Pulses {
  int count;
  int order;
  int period;

  // Up to where the pulse after the last one is not yet due.
  int BlockLength() const { return FirstInstant + count * period + 1024; }
  std::vector<std::vector<double>> Lines() const {
    const auto ratios = Noise(static_cast<std::size_t>(order));
    std::vector<std::vector<double>> lines;
    for (int i = 0; i <= count; ++i) {
      lines.push_back({(FirstInstant + i * period + 0.5) * Interval_ms, 1000.0, 0.12, 0.06});
      lines.back().insert(lines.back().end(), ratios.begin(), ratios.end());
    }
    return lines;
  }
  std::string Name() const {
    return "glottal/" + std::to_string(count) + "_" + std::to_string(order) + "_" +
           std::to_string(period) + "/";
  }
};

void RunAsWritten(benchmark::State& state, Pulses pulses) {
  auto* made = new Heap<ListedNumbers>(pulses.Lines());
  const auto events = Ref<INumStreamC>::Share(made);
  std::vector<float> out(static_cast<std::size_t>(pulses.BlockLength()));
  for (auto _ : state) {
    std::fill(out.begin(), out.end(), 0.0F);
    GlottalAsWritten glottal{Interval_ms, 0.0, events.Get()};
    events->Open(nullptr);
    events->GetLine();
    events->GetDouble(glottal.next_ms);
    glottal.Apply(out.data(), pulses.BlockLength());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * pulses.count);
}

void RunSlots(benchmark::State& state, Pulses pulses) {
  auto* made = new Heap<ListedNumbers>(pulses.Lines());
  const auto events = Ref<INumStreamC>::Share(made);
  const auto filter = MakeFilter("GlotSynI");
  filter->Set_num_stream(events.Get());
  auto& track = static_cast<AddTrack&>(*filter.Get());
  std::vector<float> out(static_cast<std::size_t>(pulses.BlockLength()));
  double interval_ms = Interval_ms;
  for (auto _ : state) {
    std::fill(out.begin(), out.end(), 0.0F);
    filter->Init(interval_ms);
    track.Apply(out.data(), pulses.BlockLength(), 0);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * pulses.count);
}

}  // namespace

void RegisterVoice() {
  std::vector<Pulses> cases = {{1, 20, 80}, {1, 20, 400}};
  for (const int order : {12, 20, 32, 64}) {
    cases.push_back({3, order, 80});
    cases.push_back({8, order, 80});
  }
  for (const Pulses& pulses : cases) {
    benchmark::RegisterBenchmark((pulses.Name() + "as_written").c_str(), RunAsWritten, pulses);
    benchmark::RegisterBenchmark((pulses.Name() + "slots").c_str(), RunSlots, pulses);
  }
}

}  // namespace wavefilters::bench
