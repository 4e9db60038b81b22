// Libraries that do the same work, from Debian's packages, beside this one: the same block or the
// same signal, in the same run.

#include <benchmark/benchmark.h>
#include <liquid/liquid.h>

#include <algorithm>
#include <memory>
#include <string>

#include "benches/host.h"
#include "benches/peers.h"
#include "benches/signals.h"
#include "benches/suites.h"

namespace wavefilters::bench {
namespace {

constexpr int Block = 4096;
constexpr int SignalLength = 20 * 22050;
constexpr int Ratios[][2] = {{2, 1}, {1, 2}, {3, 2}};

void RunLiquid(benchmark::State& state, int halfLen) {
  const int taps = 2 * halfLen + 1;
  auto coef = Noise(static_cast<std::size_t>(taps));
  auto in = Noise(Block);
  std::vector<float> out(Block);
  const std::unique_ptr<firfilt_rrrf_s, int (*)(firfilt_rrrf)> filter(
      firfilt_rrrf_create(coef.data(), static_cast<unsigned>(taps)), firfilt_rrrf_destroy);
  for (auto _ : state) {
    firfilt_rrrf_execute_block(filter.get(), in.data(), Block, out.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * Block);
}

void RunPeer(benchmark::State& state, const Peer& peer, int up, int down) {
  const Converter convert = peer.make(up, down);
  const auto in = Noise(Block);
  std::vector<float> out(Block * 3);
  const int room = static_cast<int>(out.size());
  std::int64_t made = 0;
  for (auto _ : state) {
    made += convert(in.data(), Block, out.data(), room);
  }
  state.SetItemsProcessed(made);
}

Ref<IWaveFilterC> MakeResampler(int up, int down, const Kernel& kernel, IWaveSourceC* source) {
  const int faster = std::max(up, down);
  auto filter = MakeFilter("ResampleI");
  Connect(*filter.Get(),
          {double(down), double(up), 0.0, 0.0, 0.0, double(kernel.reach * faster),
           kernel.cutoff / faster},
          {source});
  return filter;
}

void RunOurs(benchmark::State& state, int up, int down, const Kernel& kernel) {
  const auto signal = Noise(65536);
  std::int64_t made = 0;
  for (auto _ : state) {
    const auto filter = MakeResampler(up, down, kernel, NewSource(signal, SignalLength));
    made += PullAll(*filter.Get());
  }
  state.SetItemsProcessed(made);
}

constexpr int ResponseLength = 1024;

std::vector<float> Impulse() {
  std::vector<float> impulse(ResponseLength);
  impulse[ResponseLength / 2] = 1.0F;
  return impulse;
}

void Note(benchmark::State& state, const Quality& quality) {
  state.counters["edge"] = quality.edge;
  state.counters["images_dB"] = quality.images_dB;
}

// Not for its time: what the converters do to a band stands beside their speed.
void NotePeerQuality(benchmark::State& state, const Peer& peer) {
  const auto impulse = Impulse();
  std::vector<float> response(4 * impulse.size());
  for (auto _ : state) {
    const int room = static_cast<int>(response.size());
    const int made = peer.make(2, 1)(impulse.data(), ResponseLength, response.data(), room);
    response.resize(static_cast<std::size_t>(made));
    Note(state, QualityOf(response));
  }
}

void NoteOurQuality(benchmark::State& state, const Kernel& kernel) {
  const auto impulse = Impulse();
  std::vector<float> response(2 * impulse.size());
  for (auto _ : state) {
    const auto filter = MakeResampler(2, 1, kernel, NewSource(impulse, ResponseLength));
    int made = 0;
    filter->TransmitNow(response.data(), static_cast<int>(response.size()), made);
    Note(state, QualityOf(response));
  }
}

}  // namespace

void RegisterPeers() {
  benchmark::RegisterBenchmark("fir/128/liquid", RunLiquid, 128);
  for (const Peer& peer : Peers) {
    for (const auto& [up, down] : Ratios) {
      const std::string name =
          std::string("peer/") + peer.name + "_" + std::to_string(up) + ":" + std::to_string(down);
      benchmark::RegisterBenchmark((name + "/peer").c_str(), RunPeer, peer, up, down);
      for (const Kernel& kernel : peer.matches) {
        benchmark::RegisterBenchmark((name + "/" + kernel.name).c_str(), RunOurs, up, down, kernel);
      }
    }
    const std::string name = std::string("quality/") + peer.name;
    benchmark::RegisterBenchmark((name + "/peer").c_str(), NotePeerQuality, peer)->Iterations(1);
    for (const Kernel& kernel : peer.matches) {
      benchmark::RegisterBenchmark((name + "/" + kernel.name).c_str(), NoteOurQuality, kernel)
          ->Iterations(1);
    }
  }
}

}  // namespace wavefilters::bench
