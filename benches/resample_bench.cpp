// Rational resamplers: a block of outputs by each kernel, and a whole signal through slot 4.

#include <benchmark/benchmark.h>

#include <string>

#include "benches/as_written.h"
#include "benches/host.h"
#include "benches/signals.h"
#include "benches/suites.h"
#include "dsp/polyphase.h"
#include "dsp/source_fill.h"

namespace wavefilters::bench {
namespace {

constexpr int SignalLength = 20 * 22050;

struct Rates {
  int up;
  int down;
  int halfLen;  // in high-rate samples

  int Margin() const { return halfLen / up; }
  int CoefCount() const { return 2 * Margin() * up + 1; }
  std::string Name() const {
    return "resample/" + std::to_string(up) + ":" + std::to_string(down) + "_" +
           std::to_string(halfLen) + "/";
  }
};

constexpr Rates Cases[] = {{2, 1, 60},   {1, 2, 60},   {3, 2, 60},       {2, 1, 120},
                           {1, 2, 120},  {3, 2, 120},  {2, 1, 2048},     {1, 2, 2048},
                           {3, 2, 2048}, {1, 1, 2048}, {160, 147, 2048}, {147, 160, 2048}};

// One full buffer of inputs and all that is made of it.
struct Block {
  explicit Block(const Rates& rates)
      : coef(Noise(static_cast<std::size_t>(rates.CoefCount()))),
        in(Noise(BlockBufferSize)),
        inputs(BlockBufferSize - 2 * rates.Margin()),
        outputs((inputs * rates.up + rates.down - 1) / rates.down),
        out(static_cast<std::size_t>(outputs)) {}

  std::vector<float> coef;
  std::vector<float> in;
  int inputs;
  int outputs;
  std::vector<float> out;
};

void RunAsWritten(benchmark::State& state, Rates rates) {
  Block block(rates);
  std::int64_t made = 0;
  for (auto _ : state) {
    ResampleAsWritten loop{block.coef.data(), rates.CoefCount(), 2 * rates.Margin(), rates.up,
                           rates.down};
    int consumed = 0;
    int produced = 0;
    loop.Apply(block.in.data(), block.out.data(), block.inputs, block.outputs, consumed, produced);
    made += produced;
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(made);
}

void RunKernel(benchmark::State& state, Rates rates, InstructionSet set) {
  Block block(rates);
  PolyphaseBank bank(set);
  bank.Store(block.coef.data(), rates.CoefCount(), rates.up, rates.down);
  const std::int64_t first = std::int64_t{2} * rates.Margin() * rates.up;
  for (auto _ : state) {
    bank.Run(block.in.data(), BlockBufferSize, first, block.out.data(), block.outputs);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * block.outputs);
}

void RunSlots(benchmark::State& state, Rates rates) {
  const auto signal = Noise(65536);
  std::int64_t made = 0;
  for (auto _ : state) {
    const auto filter = MakeFilter("ResampleI");
    Connect(*filter.Get(),
            {double(rates.down), double(rates.up), 0.0, 0.0, 0.0, double(rates.halfLen)},
            {NewSource(signal, SignalLength)});
    made += PullAll(*filter.Get());
  }
  state.SetItemsProcessed(made);
}

}  // namespace

void RegisterResampler() {
  for (const Rates& rates : Cases) {
    benchmark::RegisterBenchmark((rates.Name() + "as_written").c_str(), RunAsWritten, rates);
    for (const Variant& variant : Variants) {
      if (variant.set <= WidestInstructionSet()) {
        benchmark::RegisterBenchmark((rates.Name() + variant.name).c_str(), RunKernel, rates,
                                     variant.set);
      }
    }
    benchmark::RegisterBenchmark((rates.Name() + "slots").c_str(), RunSlots, rates);
  }
}

}  // namespace wavefilters::bench
