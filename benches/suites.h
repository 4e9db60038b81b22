#ifndef WAVEFILTERS_BENCHES_SUITES_H
#define WAVEFILTERS_BENCHES_SUITES_H

#include "dsp/instruction_set.h"

namespace wavefilters::bench {

// What is measured, by subject. Each function registers its benchmarks under names as in
// "fir/128/avx512": subject, case, and which way of doing it. Ways of one case count the same
// items, so that the ratio of their rates is the ratio of their speeds.

struct Variant {
  const char* name;
  InstructionSet set;
};
inline constexpr Variant Variants[] = {{"sse2", InstructionSet::Baseline},
                                       {"avx2", InstructionSet::Avx2},
                                       {"avx512", InstructionSet::Avx512}};

void RegisterPeak();
void RegisterFir();
void RegisterResampler();
void RegisterVoice();
void RegisterTracks();
void RegisterFilters();
void RegisterProcesses();
#ifdef WAVEFILTERS_PEERS
void RegisterPeers();
#else
inline void RegisterPeers() {}
#endif

}  // namespace wavefilters::bench

#endif
