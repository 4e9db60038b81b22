// Which kernels run on which machine, by the words of its manual: AVX2 and AVX-512F are bits 5 and
// 16 of EBX of leaf 7; bits 1, 2 and 5 to 7 of XCR0 stand for the registers that they need.

#include "dsp/instruction_set.h"

#include <gtest/gtest.h>

namespace wavefilters {
namespace {

constexpr unsigned Avx2Bit = 1U << 5;
constexpr unsigned Avx512Bit = 1U << 16;
constexpr unsigned Sse = 1U << 1;
constexpr unsigned Avx = 1U << 2;
constexpr unsigned Masks = 1U << 5;
constexpr unsigned UpperHalves = 1U << 6;
constexpr unsigned UpperRegisters = 1U << 7;
constexpr unsigned All = Sse | Avx | Masks | UpperHalves | UpperRegisters;

InstructionSet Of(unsigned leaf7, unsigned saved) { return WidestOf({0, leaf7, saved}); }

TEST(InstructionSets, AreTheBaselineWhereNothingIsSaid) {
  EXPECT_EQ(WidestOf({}), InstructionSet::Baseline);
}

#if defined(__x86_64__)

TEST(InstructionSets, TakeTheProcessorAndTheRegistersThatAreSaved) {
  EXPECT_EQ(Of(Avx2Bit, Sse | Avx), InstructionSet::Avx2);
  EXPECT_EQ(Of(Avx2Bit | Avx512Bit, All), InstructionSet::Avx512);
  EXPECT_EQ(Of(Avx2Bit, All), InstructionSet::Avx2);
}

TEST(InstructionSets, StepDownWhereTheSystemSavesNoRegisters) {
  EXPECT_EQ(Of(Avx2Bit | Avx512Bit, Sse), InstructionSet::Baseline);
  EXPECT_EQ(Of(Avx2Bit | Avx512Bit, Avx), InstructionSet::Baseline);
  EXPECT_EQ(Of(0, All), InstructionSet::Baseline);
  for (const unsigned missing : {Masks, UpperHalves, UpperRegisters}) {
    EXPECT_EQ(Of(Avx2Bit | Avx512Bit, All & ~missing), InstructionSet::Avx2);
  }
}

#endif

}  // namespace
}  // namespace wavefilters
