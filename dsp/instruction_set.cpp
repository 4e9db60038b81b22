#include "dsp/instruction_set.h"

#if defined(__x86_64__)
#include <cpuid.h>

#include <atomic>
#endif

namespace wavefilters {

#if defined(__x86_64__)

namespace {

// Which register files the operating system saves when it switches threads.
unsigned SavedRegisters() {
  unsigned low = 0;
  unsigned high = 0;
  __asm__("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
  return low;
}

constexpr bool Has(unsigned value, unsigned bits) { return (value & bits) == bits; }

// A leaf that the processor lacks leaves its word as it was.
ProcessorWords AskProcessor() {
  ProcessorWords words;
  unsigned a = 0;
  unsigned b = 0;
  unsigned c = 0;
  unsigned d = 0;
  __get_cpuid(1, &a, &b, &words.leaf1, &d);
  __get_cpuid_count(7, 0, &a, &words.leaf7, &c, &d);
  // Without this, asking for the saved registers is an illegal instruction.
  if (Has(words.leaf1, bit_OSXSAVE)) {
    words.saved = SavedRegisters();
  }
  return words;
}

}  // namespace

InstructionSet WidestOf(const ProcessorWords& words) {
  constexpr unsigned SavesAvx = 0x06;
  constexpr unsigned SavesAvx512 = 0xe6;
  if (!Has(words.leaf7, bit_AVX2) || !Has(words.saved, SavesAvx)) {
    return InstructionSet::Baseline;
  }
  return Has(words.leaf7, bit_AVX512F) && Has(words.saved, SavesAvx512) ? InstructionSet::Avx512
                                                                        : InstructionSet::Avx2;
}

InstructionSet WidestInstructionSet() {
  // In a virtual machine each question to the processor goes to its host and takes microseconds,
  // as long as a short filter takes for thousands of samples: it is asked once. Threads that
  // come first together ask it each, and hear the same.
  constexpr int NotAsked = -1;
  static constinit std::atomic<int> answer{NotAsked};
  int known = answer.load(std::memory_order_relaxed);
  if (known == NotAsked) {
    known = static_cast<int>(WidestOf(AskProcessor()));
    answer.store(known, std::memory_order_relaxed);
  }
  return static_cast<InstructionSet>(known);
}

#else

InstructionSet WidestOf(const ProcessorWords& /*words*/) { return InstructionSet::Baseline; }

InstructionSet WidestInstructionSet() { return InstructionSet::Baseline; }

#endif

}  // namespace wavefilters
