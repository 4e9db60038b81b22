#include "frame/siso_filter.h"

#include <gtest/gtest.h>

#include "frame/lifetime.h"
#include "frame/ref.h"

namespace wavefilters {
namespace {

// Notes what it was asked and answers with fixed values.
class Source : public IWaveFilterC {
 public:
  void GetDescriptor(IWaveDescriptorC** out) override { *out = nullptr; }
  int TransmitNow(float* buffer, int count, int& produced) override {
    askedBuffer = buffer;
    askedCount = count;
    produced = 3;
    return 4711;
  }
  void Dispose() override {}
  bool EndOfSrc() override { return atEnd; }
  void EnableInPlace(bool) override {}
  int Set_src_list(IWaveSourceC**, int) override { return 0; }
  void Set_param_list(double*, int) override {}
  void Set_console_out(IConsoleOutC*) override {}
  void Set_num_stream(INumStreamC*) override {}
  int SrcSet() override { return 0; }
  void Init(IWaveDescriptorC*) override {}
  void Init(double) override {}

  float* askedBuffer = nullptr;
  int askedCount = 0;
  bool atEnd = false;

 protected:
  ~Source() = default;
};

// The base as it is, with a source; there is no descriptor to initialise from.
class Bare : public SISOFilter {
 public:
  int SrcSet() override { return 0; }

 protected:
  ~Bare() = default;
};

TEST(SISOFilter, PassesPullsAndTheirResultThrough) {
  Embedded<Source> source;
  source.AddRef();
  const auto filter = Ref<Bare>::Share(new Heap<Bare>);
  IWaveSourceC* sources[] = {&source};
  filter->Set_src_list(sources, 1);
  float buffer[5] = {};
  int produced = -1;
  EXPECT_EQ(filter->TransmitNow(buffer, 5, produced), 4711);
  EXPECT_EQ(source.askedBuffer, buffer);
  EXPECT_EQ(source.askedCount, 5);
  EXPECT_EQ(produced, 3);
}

TEST(SISOFilter, HasEndedWhereItsSourceHas) {
  Embedded<Source> source;
  source.AddRef();
  const auto filter = Ref<Bare>::Share(new Heap<Bare>);
  EXPECT_TRUE(filter->EndOfSrc());
  IWaveSourceC* sources[] = {&source};
  filter->Set_src_list(sources, 1);
  EXPECT_FALSE(filter->EndOfSrc());
  source.atEnd = true;
  EXPECT_TRUE(filter->EndOfSrc());
}

TEST(SISOFilter, IgnoresParametersAndTheInterval) {
  const auto filter = Ref<Bare>::Share(new Heap<Bare>);
  double values[] = {1.0};
  filter->Set_param_list(values, 1);
  filter->Set_param_list(nullptr, 5);
  filter->Init(0.1);
  EXPECT_TRUE(filter->EndOfSrc());
}

}  // namespace
}  // namespace wavefilters
