#include <gtest/gtest.h>

#include <limits>

#include "resample/settings.h"

namespace {

using support::CallLog;
using support::Calls;
using support::Description;
using support::Filter;
using support::Samples;
using support::SourceMock;
using support::operator+;

constexpr int Highest = std::numeric_limits<int>::max();
constexpr int Lowest = std::numeric_limits<int>::min();

TEST(ResamplerDescriptor, IsAmendedInThisOrder) {
  CallLog log;
  SourceMock source("source", log);
  source.description.length = 1000;
  source.description.interval_ms = 0.125;
  Filter filter = support::MakeFilter(support::Resample);
  filter.Set_param_list({3.0, 2.0});
  filter.Set_src_list(source);
  EXPECT_EQ(log.Take(), (Calls{"source.GetDescriptor()", "source.descriptor.GetPeriod()",
                               "source.descriptor.Release()"}));
  const Description output = filter.GetDescriptor(source);
  EXPECT_EQ(log.Take(),
            (Calls{"source.GetDescriptor()", "source.descriptor.GetPeriod()",
                   "source.descriptor.SetPeriod(0.1875)", "source.descriptor.GetLength()",
                   "source.descriptor.SetLength(666)", "source.descriptor.Release()"}));
  EXPECT_EQ(output.length, 666);
}

TEST(ResamplerDescriptor, MultipliesBeforeItDivides) {
  EXPECT_EQ(resample::Described({147.0, 160.0}, 100, 0.1).interval_ms, 147.0 * 0.1 / 160.0);
  EXPECT_EQ(resample::Described({3.0, 7.0}, 100, 0.3).interval_ms, 3.0 * 0.3 / 7.0);
  EXPECT_EQ(resample::Described({3.0, 2.0}, 5, 1.0).length, 3);
  EXPECT_EQ(resample::Described({3.0, 2.0}, -5, 1.0).length, -3);
}

TEST(ResamplerDescriptor, FormsLongLengthsIn64BitsAndLimitsThem) {
  EXPECT_EQ(resample::Described({147.0, 160.0}, 172800000, 1.0).length, 188081632);
  EXPECT_EQ(resample::Described({1.0, 2.0}, Highest, 1.0).length, Highest);
  EXPECT_EQ(resample::Described({1.0, 2.0}, Lowest, 1.0).length, Lowest);
  EXPECT_EQ(resample::Described({1e300, 1e300}, Highest, 1.0).length, Highest);
  EXPECT_EQ(resample::Described({1.0, 1e300}, Highest, 1.0).length, Highest);
}

TEST(ResamplerCalls, AskForTheEndTwiceAtTheFillAndOnceMoreAtTheEnd) {
  CallLog log;
  SourceMock source("source", log, support::Noise(5));
  Filter filter = support::MakeFilter(support::Resample);
  filter.Set_param_list({1.0, 1.0, 0.0, 0.0, 0.0, 2.0});
  filter.Set_src_list(source);
  log.Take();
  filter.Pull(1);  // one output needs two samples of look-ahead
  EXPECT_EQ(log.Take(), (Calls{"source.EndOfSrc()", "source.TransmitNow(3)", "source.EndOfSrc()"}));
  filter.Pull(0);
  EXPECT_EQ(log.Take(), (Calls{"source.EndOfSrc()", "source.EndOfSrc()"}));
  filter.Pull(-3);
  EXPECT_EQ(log.Take(), (Calls{"source.EndOfSrc()", "source.EndOfSrc()"}));
  filter.Pull(3);
  EXPECT_EQ(log.Take(), (Calls{"source.EndOfSrc()", "source.TransmitNow(3)", "source.EndOfSrc()"}));
  EXPECT_FALSE(filter.EndOfSrc());
  EXPECT_EQ(filter.Pull(3).size(), 1U);
  EXPECT_EQ(log.Take(), (Calls{"source.EndOfSrc()", "source.EndOfSrc()", "source.EndOfSrc()"}));
  EXPECT_TRUE(filter.EndOfSrc());
  EXPECT_EQ(log.Take(), Calls{});  // its own end is kept, not asked for
}

TEST(ResamplerCalls, ReachTheHostInTheOrderOfTheBase) {
  CallLog log;
  SourceMock one("one", log, support::Noise(50));
  SourceMock two("two", log);
  SourceMock three("three", log);
  support::ConsoleMock console("console", log);
  {
    Filter filter = support::MakeFilter(support::Resample);
    filter.Set_console_out(&console);
    filter.Set_src_list({&one, &two, &three});
    EXPECT_EQ(log.Take(),
              (Calls{"console.AddRef()", "two.Release()", "three.Release()", "one.GetDescriptor()",
                     "one.descriptor.GetPeriod()", "one.descriptor.Release()"}));
    filter.EnableInPlace(true);
    EXPECT_EQ(log.Take(), Calls{"one.EnableInPlace(true)"});
    filter.PullAll();
    log.Take();
    filter.Set_src_list(two);
    EXPECT_EQ(log.Take(), (Calls{"one.Dispose()", "one.Release()", "two.GetDescriptor()",
                                 "two.descriptor.GetPeriod()", "two.descriptor.Release()"}));
  }
  EXPECT_EQ(log.Take(), (Calls{"two.Dispose()", "two.Release()", "console.Release()"}));
}

TEST(ResamplerEnd, AFilterWithoutASourceGivesZerosForAsLongAsItIsAsked) {
  Filter filter = support::MakeFilter(support::Resample);
  for (const int n : {100, 5000, 8192, 1}) {
    EXPECT_TRUE(support::SameBits(filter.Pull(n), support::Constant(n)));
    EXPECT_TRUE(filter.EndOfSrc());
  }
}

TEST(ResamplerEnd, AfterDisposeTheRestAndThePaddingCome) {
  resample::Pair pair;
  pair.Set_param_list({2.0, 3.0, 0.0, 0.0, 0.0, 40.0});
  pair.Attach(support::Noise(1000));
  pair.Pull(50);
  pair.filter.Dispose();
  pair.model.Dispose();
  pair.PullToEnd({7, 5});
  EXPECT_TRUE(pair.filter.EndOfSrc());
  for (const int n : {300, 1, 0, 300}) pair.Pull(n);  // zeros, the last of which may wait
}

TEST(ResamplerParameters, SetInMidStreamTakeEffectAtTheNextAttachment) {
  resample::Pair pair;
  pair.Set_param_list({2.0, 3.0, 0.0, 0.0, 0.0, 40.0});
  pair.Attach(support::Noise(2000));
  pair.Pull(50);
  for (const double half : {2048.0, 0.0, 7.0}) {
    for (const double factor : {1.0, 13.0, 1e300}) {
      pair.Set_param_list({factor, factor / 2, 5.0, -7.0, 0.3, half, 0.1, 0.1});
      pair.Pull(50);
      pair.Pull(50);
    }
  }
  pair.Set_param_list({4.0, 2.0});
  pair.PullToEnd({200});
  pair.Attach(support::Noise(300));
  pair.PullToEnd({200});
}

int initialised;
double initialised_ms;
int designed;
int asked[2];
int attached;
void CountInit(void*, double interval_ms) { initialised_ms = interval_ms; }
void CountInitFrom(void*, void*) { ++initialised; }
void CountSrcSet(void*) { ++attached; }
void CountCalcCoef(void*, float* coef, int* count) {
  ++designed;
  coef[0] = 2.0F;
  *count = 1;
}
void RecordApply(void*, float* in, float* out, int nIn, int nOut, int* consumed, int* produced) {
  asked[0] = nIn;
  asked[1] = nOut;
  out[0] = in[0] + 100.0F;
  *consumed = 2;
  *produced = 1;
}

TEST(ResamplerSlots, AreReachedByItsOwnOperations) {
  CallLog log;
  SourceMock source("source", log, support::Ramp(500));
  SourceMock another("another", log, support::Ramp(500));
  Filter filter = support::MakeFilter(support::Resample);
  filter.Set_param_list({1.0, 1.0, 0.0, 0.0, 0.0, 0.0});
  filter.Exchange(14, CountInit);
  filter.Exchange(15, CountCalcCoef);
  source.description.interval_ms = 0.25;
  designed = 0;
  filter.Set_src_list(source);
  EXPECT_EQ(initialised_ms, 0.25);
  EXPECT_EQ(designed, 1);
  EXPECT_EQ(filter.Pull(3), (Samples{2.0F, 4.0F, 6.0F}));

  filter.Exchange(16, RecordApply);
  EXPECT_EQ(filter.Pull(10), (Samples{104.0F}));
  EXPECT_EQ(asked[0], 10);
  EXPECT_EQ(asked[1], 10);
  EXPECT_EQ(filter.Pull(9), (Samples{106.0F}));  // two were consumed, eight were left
  EXPECT_EQ(asked[0], 9);

  filter.Exchange(13, CountInitFrom);
  initialised = 0;
  filter.SrcSet();
  EXPECT_EQ(initialised, 1);
  EXPECT_EQ(designed, 2);

  filter.Exchange(12, CountSrcSet);
  attached = 0;
  filter.Set_src_list(another);
  EXPECT_EQ(attached, 1);
}

TEST(ResamplerSlots, InitChangesNothing) {
  CallLog log;
  const Samples signal = support::Noise(300);
  SourceMock source("source", log, signal);
  support::DescriptorMock descriptor("descriptor", log, {});
  Filter filter = support::MakeFilter(support::Resample);
  filter.Set_param_list({2.0, 1.0});
  filter.Set_src_list(source);
  const Samples out = filter.Pull(20);
  SourceMock same("same", log, signal);
  Filter whole = support::MakeFilter(support::Resample);
  whole.Set_param_list({2.0, 1.0});
  whole.Set_src_list(same);
  log.Take();
  filter.Init(0.7);
  EXPECT_EQ(log.Take(), Calls{});
  filter.InitFrom(descriptor);
  EXPECT_EQ(log.Take(), (Calls{"descriptor.GetPeriod()", "descriptor.Release()"}));
  EXPECT_TRUE(support::SameBits(out + filter.PullAll(), whole.PullAll()));
}

}  // namespace
