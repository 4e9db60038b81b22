#ifndef WAVEFILTERS_DSP_INSTRUCTION_SET_H
#define WAVEFILTERS_DSP_INSTRUCTION_SET_H

namespace wavefilters {

/// The instruction sets that kernels are built for, each including those before it. All give
/// the same bits: wider ones do the same operations on more outputs at a time.
enum class InstructionSet { Baseline, Avx2, Avx512 };

/// The widest one that processor and operating system allow. Asked of the processor at the first
/// call: the compiler's own query would bring an initialiser that runs when the library loads.
InstructionSet WidestInstructionSet();

}  // namespace wavefilters

#endif
