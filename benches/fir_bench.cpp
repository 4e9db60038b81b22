// FIR filters: a block of outputs by each kernel, and a whole signal through slot 4 of the library.

#include <benchmark/benchmark.h>

#include <string>

#include "benches/as_written.h"
#include "benches/host.h"
#include "benches/peak.h"
#include "benches/signals.h"
#include "benches/suites.h"
#include "dsp/convolve.h"

namespace wavefilters::bench {
namespace {

constexpr int Outputs = 4096;  // of one block: what the longest filter makes of a full buffer
constexpr int SignalLength = 20 * 22050;

void RunKernel(benchmark::State& state, int halfLen, ConvolveFunction convolve) {
  const int taps = 2 * halfLen + 1;
  const auto coef = Noise(static_cast<std::size_t>(taps));
  const auto in = Noise(static_cast<std::size_t>(Outputs + taps - 1));
  std::vector<float> out(Outputs);
  for (auto _ : state) {
    convolve(in.data(), coef.data(), taps, out.data(), Outputs);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * Outputs);
}

// A filter is made, designed and run to the end, each time.
void RunSlots(benchmark::State& state, int halfLen) {
  const auto signal = Noise(65536);
  std::int64_t made = 0;
  for (auto _ : state) {
    const auto filter = MakeFilter("FIRFilterI");
    Connect(*filter.Get(), {double(halfLen)}, {NewSource(signal, SignalLength)});
    made += PullAll(*filter.Get());
  }
  state.SetItemsProcessed(made);
}

}  // namespace

void RegisterPeak() {
  for (const Variant& variant : Variants) {
    if (variant.set <= WidestInstructionSet() && MultiplyAndAdd(variant.set) > 0) {
      benchmark::RegisterBenchmark((std::string("peak/macs/") + variant.name).c_str(),
                                   [set = variant.set](benchmark::State& state) {
                                     std::int64_t done = 0;
                                     for (auto _ : state) {
                                       done += MultiplyAndAdd(set);
                                     }
                                     state.SetItemsProcessed(done);
                                   });
    }
  }
}

void RegisterFir() {
  for (const int halfLen : {8, 32, 128, 512, 2048}) {
    const std::string name = "fir/" + std::to_string(halfLen) + "/";
    benchmark::RegisterBenchmark((name + "as_written").c_str(), RunKernel, halfLen,
                                 ConvolveAsWritten);
    for (const Variant& variant : Variants) {
      if (variant.set <= WidestInstructionSet()) {
        benchmark::RegisterBenchmark((name + variant.name).c_str(), RunKernel, halfLen,
                                     ConvolveFor(variant.set));
      }
    }
    benchmark::RegisterBenchmark((name + "slots").c_str(), RunSlots, halfLen);
  }
}

}  // namespace wavefilters::bench
