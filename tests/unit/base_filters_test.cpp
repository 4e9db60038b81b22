// What bases do by themselves, which every filter of the library replaces.

#include <gtest/gtest.h>

#include <numeric>

#include "dsp/non_causal_p.h"
#include "frame/lifetime.h"
#include "frame/ref.h"
#include "tracks/add_track.h"

namespace wavefilters {
namespace {

// Gives 1, 2, 3 and so on, without end.
class Counting : public IWaveSourceC {
 public:
  unsigned long QueryInterface(const _GUID& /*iid*/, void** /*out*/) override { return 0; }
  unsigned long AddRef() override { return 1; }
  unsigned long Release() override { return 1; }
  void GetDescriptor(IWaveDescriptorC** out) override { *out = nullptr; }
  int TransmitNow(float* buffer, int count, int& produced) override {
    std::iota(buffer, buffer + count, static_cast<float>(given + 1));
    given += count;
    produced = count;
    return 0;
  }
  void Dispose() override {}
  bool EndOfSrc() override { return false; }

  int given = 0;
};

// Bases as they are; there is no descriptor to initialise from.
class BareTrack : public AddTrack {
 public:
  using AddTrack::GetDouble;
  using AddTrack::GetLine;
  using AddTrack::GetSingle;
  int SrcSet() override { return 0; }

 protected:
  ~BareTrack() = default;
};

class BarePair : public NonCausalP {
 public:
  int SrcSet() override { return 0; }

 protected:
  ~BarePair() = default;
};

TEST(AddTrack, KeepsNothingBackAndLeavesTheSamples) {
  Counting source;
  const auto filter = Ref<BareTrack>::Share(new Heap<BareTrack>);
  IWaveSourceC* sources[] = {&source};
  filter->Set_src_list(sources, 1);
  EXPECT_EQ(filter->Get_mem(), 0);
  float buffer[5] = {};
  for (const int first : {1, 6}) {
    int produced = -1;
    filter->TransmitNow(buffer, 5, produced);
    EXPECT_EQ(produced, 5);
    for (int i = 0; i < 5; ++i) EXPECT_EQ(buffer[i], static_cast<float>(first + i));
  }
  EXPECT_EQ(source.given, 10);
}

TEST(AddTrack, ReadsNothingWithoutAStream) {
  const auto filter = Ref<BareTrack>::Share(new Heap<BareTrack>);
  float single = -77.0F;
  double number = -77.0;
  EXPECT_FALSE(filter->GetLine());
  EXPECT_FALSE(filter->GetSingle(single));
  EXPECT_FALSE(filter->GetDouble(number));
  EXPECT_EQ(single, -77.0F);
  EXPECT_EQ(number, -77.0);
}

TEST(NonCausalP, TakesNoParametersWithoutAPartner) {
  const auto filter = Ref<BarePair>::Share(new Heap<BarePair>);
  double values[] = {1.0, 2.0};
  filter->Set_param_list(values, 2);
  filter->Set_param_list(nullptr, 5);
  filter->Set_console_out(nullptr);
  EXPECT_TRUE(filter->EndOfSrc());
  int produced = -1;
  float buffer[3] = {7.0F, 7.0F, 7.0F};
  filter->TransmitNow(buffer, 3, produced);
  EXPECT_EQ(produced, 3);
  for (const float sample : buffer) EXPECT_EQ(sample, 0.0F);
}

}  // namespace
}  // namespace wavefilters
