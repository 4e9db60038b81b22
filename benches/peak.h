#ifndef WAVEFILTERS_BENCHES_PEAK_H
#define WAVEFILTERS_BENCHES_PEAK_H

#include <cstdint>

#include "dsp/instruction_set.h"

namespace wavefilters::bench {

/// Multiplies and adds from registers to registers, as two roundings, and nothing else: what no
/// kernel can be faster than. Returns how many of them it did, 0 on a machine that it was not
/// written for.
std::int64_t MultiplyAndAdd(InstructionSet set);

}  // namespace wavefilters::bench

#endif
