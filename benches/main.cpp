#include <benchmark/benchmark.h>

#include "benches/suites.h"

int main(int argc, char** argv) {
  using namespace wavefilters::bench;
  benchmark::AddCustomContext("compiler", WAVEFILTERS_COMPILER);
  benchmark::AddCustomContext("flags", WAVEFILTERS_FLAGS);
  for (const Variant& variant : Variants) {
    if (variant.set > wavefilters::WidestInstructionSet()) {
      benchmark::AddCustomContext(std::string("lacks ") + variant.name, "not compared");
    }
  }
  RegisterPeak();
  RegisterFir();
  RegisterResampler();
  RegisterVoice();
  RegisterTracks();
  RegisterFilters();
  RegisterProcesses();
  RegisterPeers();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
    return 1;
  }
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
