#ifndef WAVEFILTERS_DSP_INSTRUCTION_SET_H
#define WAVEFILTERS_DSP_INSTRUCTION_SET_H

namespace wavefilters {

/// The instruction sets that kernels are built for, each including those before it. All give
/// the same bits: wider ones do the same operations on more outputs at a time.
enum class InstructionSet { Baseline, Avx2, Avx512 };

/// What processor and operating system say of themselves, as x86-64 words it: the instruction set
/// extensions in ECX of leaf 1 and in EBX of leaf 7 of cpuid, and the registers that are saved when
/// threads are switched (XCR0). Words that nobody has are 0.
struct ProcessorWords {
  unsigned leaf1 = 0;
  unsigned leaf7 = 0;
  unsigned saved = 0;
};

/// The widest instruction set that these allow.
InstructionSet WidestOf(const ProcessorWords& words);

/// The widest one that processor and operating system allow. Asked of the processor at the first
/// call: the compiler's own query would bring an initialiser that runs when the library loads.
InstructionSet WidestInstructionSet();

}  // namespace wavefilters

#endif
