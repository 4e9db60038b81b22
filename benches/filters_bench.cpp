// Every filter through its slots: 20 s of signal at 22.05 kHz with usual parameters, and two of
// them over the size of the pulls.

#include <benchmark/benchmark.h>

#include <string>

#include "benches/data_files.h"
#include "benches/host.h"
#include "benches/signals.h"
#include "benches/suites.h"

namespace wavefilters::bench {
namespace {

constexpr int SignalLength = 20 * 22050;
constexpr double Interval_ms = 1000.0 / 22050.0;

struct Setting {
  const char* entryPoint;
  std::vector<double> parameters;
  int sources = 1;
};

// The track filter has no end of its own: it is pulled for as long as the input is.
std::int64_t PullLength(IWaveSourceC& filter, int pull) {
  std::vector<float> out(static_cast<std::size_t>(pull));
  std::int64_t all = 0;
  for (int produced = 1; produced > 0 && all < SignalLength; all += produced) {
    filter.TransmitNow(out.data(), pull, produced);
  }
  return all;
}

void Run(benchmark::State& state, const Setting& setting, int pull) {
  const auto signal = Noise(65536);
  const std::string name = Data().Recording();
  const bool endless = std::string(setting.entryPoint) == "SetTrackI";
  std::int64_t made = 0;
  for (auto _ : state) {
    const auto filter = MakeFilter(setting.entryPoint);
    std::vector<IWaveSourceC*> sources;
    for (int i = 0; i < setting.sources; ++i) {
      sources.push_back(NewSource(signal, SignalLength, Interval_ms, name));
    }
    Connect(*filter.Get(), setting.parameters, sources);
    made += endless ? PullLength(*filter.Get(), pull) : PullAll(*filter.Get(), pull);
  }
  state.SetItemsProcessed(made);
}

}  // namespace

void RegisterFilters() {
  const Setting all[] = {{"SetTrackI", {}},        {"BeamPelI", {6}},
                         {"BeamDataI", {8}},       {"GlotSynI", {}},
                         {"FricSynI", {}},         {"PulseSynI", {}},
                         {"FIRFilterI", {128}},    {"FIRNotchI", {200}},
                         {"ResampleI", {1, 2}},    {"SumSourcesI", {0.5, 0.5}, 2},
                         {"EchoCancelI", {64}, 2}, {"SineGenI", {}},
                         {"SquareGenI", {}}};
  for (const Setting& setting : all) {
    const std::string name = std::string("filter/") + setting.entryPoint + "/slots";
    benchmark::RegisterBenchmark(name.c_str(), Run, setting, UsualPull);
  }
  for (const int pull : {64, 256, 1024, 4096}) {
    const std::string end = "/" + std::to_string(pull);
    benchmark::RegisterBenchmark(("pull/FIRFilter_128" + end).c_str(), Run,
                                 Setting{"FIRFilterI", {128}}, pull);
    benchmark::RegisterBenchmark(("pull/Resample_2:1_60" + end).c_str(), Run,
                                 Setting{"ResampleI", {1, 2}}, pull);
    benchmark::RegisterBenchmark(("pull/Resample_160:147_2048" + end).c_str(), Run,
                                 Setting{"ResampleI", {147, 160, 0, 0, 0, 2048}}, pull);
  }
}

}  // namespace wavefilters::bench
