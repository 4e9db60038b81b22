// The place of every virtual operation in its table, as the compiler numbers it. In the Itanium C++
// ABI a pointer to a virtual member holds 1 + its offset in the table, in bytes.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <type_traits>

#include "dsp/fir_notch.h"
#include "dsp/non_causal_p.h"
#include "dsp/resample_blackman.h"
#include "frame/factory.h"
#include "frame/sine_filter.h"
#include "frame/square_filter.h"
#include "numstream/num_stream.h"
#include "tracks/add_track.h"

namespace wavefilters {
namespace {

struct MemberPointer {
  std::ptrdiff_t function;
  std::ptrdiff_t adjustment;
};

// 1 + 8 x slot, or something else where the operation is not virtual.
template <class Member>
std::ptrdiff_t ValueOf(Member member) {
  static_assert(sizeof member == sizeof(MemberPointer));
  MemberPointer words{};
  std::memcpy(&words, &member, sizeof words);
  EXPECT_EQ(words.adjustment, 0) << "an object has one interface, at its own address";
  return words.function;
}

#define EXPECT_SLOT(slot, ...) EXPECT_EQ(ValueOf(__VA_ARGS__), 1 + 8 * (slot)) << #__VA_ARGS__

// Overloads are told apart by their arguments.
template <class Class, class Result, class Argument>
auto Taking(Result (Class::*member)(Argument)) {
  return member;
}

TEST(Slots, OfUnknown) {
  EXPECT_SLOT(0, &IUnknown::QueryInterface);
  EXPECT_SLOT(1, &IUnknown::AddRef);
  EXPECT_SLOT(2, &IUnknown::Release);
  EXPECT_SLOT(0, &TUnknown::QueryInterface);
  EXPECT_SLOT(1, &TUnknown::AddRef);
  EXPECT_SLOT(2, &TUnknown::Release);
}

TEST(Slots, OfTheSource) {
  EXPECT_SLOT(3, &IWaveSourceC::GetDescriptor);
  EXPECT_SLOT(4, &IWaveSourceC::TransmitNow);
  EXPECT_SLOT(5, &IWaveSourceC::Dispose);
  EXPECT_SLOT(6, &IWaveSourceC::EndOfSrc);
}

template <class Filter>
void ExpectFilterSlots() {
  EXPECT_SLOT(0, &Filter::QueryInterface);
  EXPECT_SLOT(1, &Filter::AddRef);
  EXPECT_SLOT(2, &Filter::Release);
  EXPECT_SLOT(3, &Filter::GetDescriptor);
  EXPECT_SLOT(4, &Filter::TransmitNow);
  EXPECT_SLOT(5, &Filter::Dispose);
  EXPECT_SLOT(6, &Filter::EndOfSrc);
  EXPECT_SLOT(7, &Filter::EnableInPlace);
  EXPECT_SLOT(8, &Filter::Set_src_list);
  EXPECT_SLOT(9, &Filter::Set_param_list);
  EXPECT_SLOT(10, &Filter::Set_console_out);
  EXPECT_SLOT(11, &Filter::Set_num_stream);
  EXPECT_SLOT(12, &Filter::SrcSet);
}

TEST(Slots, OfTheFilter) {
  ExpectFilterSlots<IWaveFilterC>();
  ExpectFilterSlots<SISOFilter>();
  ExpectFilterSlots<InPlace>();
  ExpectFilterSlots<NonCausalP>();
  ExpectFilterSlots<FIRNotch>();
  ExpectFilterSlots<ResampleBlackman>();
  ExpectFilterSlots<AddTrack>();
}

TEST(Slots, OfTheTwoInits) {
  EXPECT_SLOT(13, Taking<IWaveFilterC, void, IWaveDescriptorC*>(&IWaveFilterC::Init));
  EXPECT_SLOT(14, Taking<IWaveFilterC, void, double>(&IWaveFilterC::Init));
  EXPECT_SLOT(13, Taking<SISOFilter, void, IWaveDescriptorC*>(&SISOFilter::Init));
  EXPECT_SLOT(14, Taking<SISOFilter, void, double>(&SISOFilter::Init));
  EXPECT_SLOT(14, Taking<FIRFilter, void, double>(&FIRFilter::Init));
  EXPECT_SLOT(14, Taking<SineFilter, void, double>(&SineFilter::Init));
  EXPECT_SLOT(14, Taking<SquareFilter, void, double>(&SquareFilter::Init));
}

TEST(Slots, ThatFamiliesOfFiltersAdd) {
  EXPECT_SLOT(15, &InPlace::Apply);
  EXPECT_SLOT(15, &SineFilter::Apply);
  EXPECT_SLOT(15, &SquareFilter::Apply);
  EXPECT_SLOT(15, &NonCausal::Apply);
  EXPECT_SLOT(15, &FIRFilter::Apply);
  EXPECT_SLOT(16, &FIRFilter::CalcCoef);
  EXPECT_SLOT(16, &FIRNotch::CalcCoef);
  EXPECT_SLOT(15, &Resample::CalcCoef);
  EXPECT_SLOT(16, &Resample::Apply);
  EXPECT_SLOT(15, &ResampleBlackman::CalcCoef);
  EXPECT_SLOT(15, &AddTrack::Get_mem);
  EXPECT_SLOT(16, &AddTrack::Apply);
}

TEST(Slots, OfTheDescriptor) {
  EXPECT_SLOT(3, &IWaveDescriptorC::GetLength);
  EXPECT_SLOT(4, &IWaveDescriptorC::SetLength);
  EXPECT_SLOT(5, &IWaveDescriptorC::GetPeriod);
  EXPECT_SLOT(6, &IWaveDescriptorC::SetPeriod);
  EXPECT_SLOT(10, &IWaveDescriptorC::SetRange);
  EXPECT_SLOT(16, &IWaveDescriptorC::SetUnits);
  EXPECT_SLOT(17, &IWaveDescriptorC::GetName);
}

TEST(Slots, OfTheConsole) {
  EXPECT_SLOT(3, &IConsoleOutC::PutStr);
  EXPECT_SLOT(5, &IConsoleOutC::NewLine);
  EXPECT_SLOT(7, &IConsoleOutC::PutNum);
  EXPECT_SLOT(8, &IConsoleOutC::GetTime);
}

template <class Stream>
void ExpectStreamSlots() {
  EXPECT_SLOT(2, &Stream::Release);
  EXPECT_SLOT(3, Taking<Stream, bool, char*>(&Stream::Open));
  EXPECT_SLOT(4, &Stream::GetSingle);
  EXPECT_SLOT(5, &Stream::GetDouble);
  EXPECT_SLOT(6, &Stream::GetLine);
  EXPECT_SLOT(7, &Stream::Close);
  EXPECT_SLOT(8, Taking<Stream, bool, std::string>(&Stream::Open));
  EXPECT_SLOT(9, &Stream::OpenFromString);
  EXPECT_SLOT(10, &Stream::BytesRemain);
  EXPECT_SLOT(11, &Stream::SkipBytes);
  EXPECT_SLOT(12, &Stream::ReadBytes);
}

TEST(Slots, OfTheNumberStream) {
  ExpectStreamSlots<INumStreamC>();
  ExpectStreamSlots<NumStream>();
}

TEST(Slots, OfTheFactory) {
  EXPECT_SLOT(3, &IFilterFactory::SetStr);
  EXPECT_SLOT(4, &IFilterFactory::GetFilter);
  EXPECT_SLOT(5, &IFilterFactory::GetDialog);
  EXPECT_SLOT(6, &IFilterFactory::GetNamed);
  EXPECT_SLOT(4, &FactoryOf<SineFilter>::GetFilter);
}

// A class whose objects end in Release alone: no virtual destructor, which would take slots, none
// that others may call, and open to overriding.
template <class Class>
constexpr bool EndsInReleaseAlone = !std::has_virtual_destructor_v<Class> &&
                                    !std::is_destructible_v<Class> && !std::is_final_v<Class>;

static_assert(EndsInReleaseAlone<IUnknown> && EndsInReleaseAlone<TUnknown>);
static_assert(EndsInReleaseAlone<IWaveSourceC> && EndsInReleaseAlone<IWaveFilterC>);
static_assert(EndsInReleaseAlone<IWaveDescriptorC> && EndsInReleaseAlone<IConsoleOutC>);
static_assert(EndsInReleaseAlone<INumStreamC> && EndsInReleaseAlone<NumStream>);
static_assert(EndsInReleaseAlone<IFilterFactory> && EndsInReleaseAlone<FactoryOf<SineFilter>>);
static_assert(EndsInReleaseAlone<SISOFilter> && EndsInReleaseAlone<InPlace>);
static_assert(EndsInReleaseAlone<SineFilter> && EndsInReleaseAlone<SquareFilter>);
static_assert(EndsInReleaseAlone<NonCausal> && EndsInReleaseAlone<NonCausalP>);
static_assert(EndsInReleaseAlone<FIRFilter> && EndsInReleaseAlone<FIRNotch>);
static_assert(EndsInReleaseAlone<Resample> && EndsInReleaseAlone<ResampleBlackman>);
static_assert(EndsInReleaseAlone<AddTrack>);

static_assert(sizeof(Heap<FactoryOf<SineFilter>>) == 16, "a factory is its table and its count");

static_assert(sizeof(_GUID::Data1) == 8 && sizeof(_GUID::Data2) == 2);
static_assert(sizeof(_GUID::Data3) == 2 && sizeof(_GUID::Data4) == 8);

}  // namespace
}  // namespace wavefilters
