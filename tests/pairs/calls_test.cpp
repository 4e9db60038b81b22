#include <gtest/gtest.h>

#include <iterator>
#include <limits>
#include <list>
#include <new>

#include "pairs/twin.h"
#include "support/guarded_buffer.h"

namespace {

using support::CallLog;
using support::Calls;
using support::ConsoleMock;
using support::Filter;
using support::Samples;
using support::SourceMock;

constexpr support::Kind Kinds[] = {support::SumSources, support::EchoCancel};

TEST(PairCalls, ReachBothSourcesAndBothConsoleReferencesInOrder) {
  for (const support::Kind& kind : Kinds) {
    CallLog log;
    SourceMock one("one", log, support::Noise(50));
    SourceMock two("two", log, support::Noise(50));
    SourceMock three("three", log);
    SourceMock four("four", log);
    SourceMock five("five", log);
    ConsoleMock console("console", log);
    ConsoleMock other("other", log);
    {
      Filter filter = support::MakeFilter(kind);
      filter.Set_console_out(&console);
      EXPECT_EQ(log.Take(), (Calls{"console.AddRef()", "console.AddRef()"}));
      filter.Set_src_list({&one, &two, &three, &four});
      EXPECT_EQ(log.Take(), (Calls{"one.GetDescriptor()", "one.descriptor.GetPeriod()",
                                   "one.descriptor.Release()", "three.Release()", "four.Release()",
                                   "two.GetDescriptor()", "two.descriptor.GetPeriod()",
                                   "two.descriptor.Release()"}));
      filter.Set_console_out(&other);
      EXPECT_EQ(log.Take(), (Calls{"console.Release()", "other.AddRef()", "console.Release()",
                                   "other.AddRef()"}));
      filter.Set_console_out(&other);
      EXPECT_EQ(log.Take(),
                (Calls{"other.Release()", "other.AddRef()", "other.Release()", "other.AddRef()"}));
      filter.EnableInPlace(true);
      EXPECT_EQ(log.Take(), Calls{"one.EnableInPlace(true)"});
      filter.GetDescriptor(one);
      EXPECT_EQ(log.Take(), (Calls{"one.GetDescriptor()", "one.descriptor.Release()"}));
      filter.Set_src_list({&three, &four});
      EXPECT_EQ(log.Take(), (Calls{"one.Dispose()", "one.Release()", "three.GetDescriptor()",
                                   "three.descriptor.GetPeriod()", "three.descriptor.Release()",
                                   "two.Dispose()", "two.Release()", "four.GetDescriptor()",
                                   "four.descriptor.GetPeriod()", "four.descriptor.Release()"}));
      filter.Dispose();
      EXPECT_EQ(log.Take(), (Calls{"three.Dispose()", "three.Release()"}));
      filter.Set_src_list(five);
      EXPECT_EQ(log.Take(),
                (Calls{"five.GetDescriptor()", "five.descriptor.GetPeriod()",
                       "five.descriptor.Release()", "four.Dispose()", "four.Release()"}));
      filter.Set_src_list({&one, &two});
      log.Take();
    }
    EXPECT_EQ(log.Take(), (Calls{"two.Dispose()", "two.Release()", "other.Release()",
                                 "one.Dispose()", "one.Release()", "other.Release()"}));
  }
}

TEST(PairCalls, TakeTheConsoleBackFromBothWithNull) {
  CallLog log;
  ConsoleMock console("console", log);
  Filter filter = support::MakeFilter(support::SumSources);
  filter.Set_console_out(&console);
  log.Take();
  filter.Set_console_out(nullptr);
  EXPECT_EQ(log.Take(), (Calls{"console.Release()", "console.Release()"}));
  filter.Set_console_out(nullptr);
  EXPECT_EQ(log.Take(), Calls{});
}

TEST(PairCalls, AnEmptyListDisposesOfBothSourcesAndIsNotRead) {
  for (const support::Kind& kind : Kinds) {
    for (const int count : {0, -1, std::numeric_limits<int>::min()}) {
      CallLog log;
      SourceMock one("one", log, support::Noise(50));
      SourceMock two("two", log, support::Noise(50));
      Filter filter = support::MakeFilter(kind);
      filter.Set_src_list({&one, &two});
      log.Take();
      filter.Slots().Set_src_list(filter.Object(), nullptr, count);
      EXPECT_EQ(log.Take(),
                (Calls{"one.Dispose()", "one.Release()", "two.Dispose()", "two.Release()"}));
      EXPECT_FALSE(filter.EndOfSrc());  // as it was: the padding is still to come
      filter.Slots().Set_src_list(filter.Object(), nullptr, count);
      EXPECT_EQ(log.Take(), Calls{});
    }
  }
}

// A host's source should not throw; where it does, no reference of the list is lost.
TEST(PairCalls, KeepOrReleaseEverySourceWhereOneOfThemThrows) {
  for (const support::Kind& kind : Kinds) {
    for (const int thrower : {0, 1}) {
      CallLog log;
      std::list<SourceMock> sources;
      for (const char* name : {"one", "two", "three", "four"}) {
        sources.emplace_back(name, log, support::Noise(50));
      }
      std::next(sources.begin(), thrower)->before = [](const std::string& operation) {
        if (operation == "GetDescriptor") throw std::bad_alloc();
      };
      {
        Filter filter = support::MakeFilter(kind);
        SourceMock old("old", log);
        filter.Set_src_list({&old, &old});
        log.Take();
        std::vector<SourceMock*> list;
        for (SourceMock& source : sources) list.push_back(&source);
        EXPECT_THROW(filter.Set_src_list(list), std::bad_alloc);
        EXPECT_EQ(sources.front().References(), 1);
        EXPECT_EQ(sources.back().References(), 0);
        EXPECT_EQ(old.References(), thrower == 0 ? 1 : 0);
        filter.Set_src_list({});
        EXPECT_EQ(old.References(), 0);
      }
      for (const SourceMock& source : sources) EXPECT_EQ(source.References(), 0);
    }
  }
}

TEST(PairCalls, OneSourceAfterTwoLeavesWhatThePartnerStillHasInTheMix) {
  pairs::Mixer twin;
  twin.Attach({&twin.NewSource(support::Constant(1000, 1.0F)),
               &twin.NewSource(support::Constant(1000, 2.0F))});
  // The first source delivers less than the second, whose samples wait.
  twin.sources.front().Deliver(support::InBlocksOf({60}));
  EXPECT_EQ(twin.Pull(100), support::Constant(60, 3.0F));
  twin.Attach({&twin.NewSource(support::Constant(500, 10.0F))});
  EXPECT_EQ(twin.Pull(100), support::Constant(40, 12.0F));
  EXPECT_EQ(twin.Pull(100), support::Constant(100, 10.0F));
}

TEST(PairCalls, PeekAtThePartnerWithTheWholeRequestAndPullItEvenForNothing) {
  CallLog log;
  SourceMock one("one", log, support::Noise(100));
  SourceMock two("two", log, support::Noise(1000));
  Filter filter = support::MakeFilter(support::EchoCancel);
  filter.Set_param_list({10.0});
  filter.Set_src_list({&one, &two});
  one.deliver = support::InBlocksOf({0});
  two.deliver = support::InBlocksOf({3});
  log.Take();
  EXPECT_EQ(filter.Pull(50), Samples{});
  EXPECT_EQ(log.Take(),
            (Calls{"one.EndOfSrc()", "one.TransmitNow(50)", "one.EndOfSrc()",    // the front fills
                   "two.EndOfSrc()", "two.TransmitNow(60)", "two.EndOfSrc()",    // the peek
                   "two.EndOfSrc()", "two.TransmitNow(7)", "two.EndOfSrc()"}));  // the pull of 0
  // A request below 0 still asks for the margin that it leaves.
  EXPECT_EQ(filter.Pull(-2), Samples{});
  EXPECT_EQ(log.Take(), (Calls{"two.EndOfSrc()", "two.TransmitNow(2)", "two.EndOfSrc()"}));
}

void Reverse(void*, float* in, float* out, int n) {
  for (int i = 0; i < n; ++i) out[i] = -in[i];
}
int disposed;
void CountDispose(void*) { ++disposed; }
int initialised;
void CountInitFrom(void*, void*) { ++initialised; }

TEST(PairSlots, OfTheFrontAreReachedByItsOwnOperations) {
  CallLog log;
  SourceMock one("one", log, support::Ramp(100));
  SourceMock two("two", log, support::Ramp(100, 1000.0F));
  Filter filter = support::MakeFilter(support::SumSources);
  filter.Exchange(13, CountInitFrom);
  initialised = 0;
  filter.Set_src_list({&one, &two});
  EXPECT_EQ(initialised, 1);  // the partner has a table of its own
  filter.Exchange(15, Reverse);
  EXPECT_EQ(filter.Pull(3), (Samples{999.0F, 999.0F, 999.0F}));
  filter.Exchange(5, CountDispose);
  disposed = 0;
  filter.Slots().Set_src_list(filter.Object(), nullptr, 0);
  EXPECT_EQ(disposed, 1);
}

TEST(PairSlots, ApplyOfTheFrontCopies) {
  for (const support::Kind& kind : Kinds) {
    Filter filter = support::MakeFilter(kind);
    filter.Set_param_list({5.0, 7.0});
    Samples in = support::Noise(100);
    support::GuardedBuffer out(100);
    filter.Call<BlockApply>(15, in.data(), out.data(), 100);
    EXPECT_TRUE(support::SameBits(out.First(100), in));
    out.CheckAfter(100);
  }
}

TEST(PairSlots, AreThoseOfOneInterface) {
  for (const support::Kind& kind : Kinds) {
    Filter filter = support::MakeFilter(kind);
    void* same = nullptr;
    EXPECT_EQ(filter.Slots().QueryInterface(filter.Object(), &WaveFilterId, &same), 0U);
    EXPECT_EQ(same, filter.Object());
    EXPECT_EQ(filter.Slots().Release(filter.Object()), 1U);
  }
}

}  // namespace
