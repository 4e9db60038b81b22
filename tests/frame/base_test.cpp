// What every single-input filter does with its source, its console and a number stream, call for
// call.

#include <gtest/gtest.h>

#include <stdexcept>

#include "support/filter.h"

namespace {

using namespace support;

class SingleInput : public testing::TestWithParam<Kind> {
 protected:
  SingleInput() {
    if (std::string(GetParam().entry) == FIRNotch.entry ||
        std::string(GetParam().entry) == FIRFilter.entry) {
      filter.Set_param_list({2.0});
    }
  }

  CallLog log;
  SourceMock first{"first", log, Ramp(40)};
  SourceMock second{"second", log, Ramp(40)};
  SourceMock third{"third", log, Ramp(40)};
  ConsoleMock console{"console", log};
  ConsoleMock otherConsole{"other", log};
  Filter filter = MakeFilter(GetParam());
};

INSTANTIATE_TEST_SUITE_P(Kinds, SingleInput,
                         testing::Values(SineGen, SquareGen, FIRFilter, FIRNotch), KindName);

TEST_P(SingleInput, ReadsTheIntervalWhenItGetsASource) {
  filter.Set_src_list(first);
  EXPECT_EQ(log.Take(), (Calls{"first.GetDescriptor()", "first.descriptor.GetPeriod()",
                               "first.descriptor.Release()"}));
  EXPECT_EQ(first.References(), 1);
}

TEST_P(SingleInput, KeepsTheFirstOfThreeSourcesAndReleasesTheOthersInOrder) {
  filter.Set_src_list({&first, &second, &third});
  EXPECT_EQ(log.Take(), (Calls{"second.Release()", "third.Release()", "first.GetDescriptor()",
                               "first.descriptor.GetPeriod()", "first.descriptor.Release()"}));
  EXPECT_EQ(first.References(), 1);
  EXPECT_EQ(second.References(), 0);
  EXPECT_EQ(third.References(), 0);
}

TEST_P(SingleInput, DisposesOfItsSourceBeforeItTakesANewOne) {
  filter.Set_src_list(first);
  log.Take();
  filter.Set_src_list({&second, &third});
  EXPECT_EQ(log.Take(), (Calls{"first.Dispose()", "first.Release()", "third.Release()",
                               "second.GetDescriptor()", "second.descriptor.GetPeriod()",
                               "second.descriptor.Release()"}));
}

TEST_P(SingleInput, TakesTheSameSourceAgain) {
  filter.Set_src_list(first);
  log.Take();
  filter.Set_src_list(first);
  EXPECT_EQ(log.Take(), (Calls{"first.Dispose()", "first.Release()", "first.GetDescriptor()",
                               "first.descriptor.GetPeriod()", "first.descriptor.Release()"}));
}

TEST_P(SingleInput, AnEmptyListOnlyDisposesOfTheSource) {
  for (const int count : {0, -1, -2147483647 - 1}) {
    filter.Set_src_list(first);
    log.Take();
    filter.Slots().Set_src_list(filter.Object(), nullptr, count);
    EXPECT_EQ(log.Take(), (Calls{"first.Dispose()", "first.Release()"})) << count;
    filter.Slots().Set_src_list(filter.Object(), nullptr, count);
    EXPECT_EQ(log.Take(), Calls{}) << count;
  }
}

TEST_P(SingleInput, DisposeForgetsTheSourceAndKeepsTheConsole) {
  filter.Set_console_out(&console);
  filter.Set_src_list(first);
  log.Take();
  filter.Dispose();
  EXPECT_EQ(log.Take(), (Calls{"first.Dispose()", "first.Release()"}));
  EXPECT_EQ(console.References(), 2);
  filter.Dispose();
  EXPECT_EQ(log.Take(), Calls{});
}

TEST_P(SingleInput, HandsOutTheDescriptorOfItsSourceAsItIs) {
  first.description.interval_ms = 0.0625;
  filter.Set_src_list(first);
  log.Take();
  void* descriptor = nullptr;
  filter.Slots().GetDescriptor(filter.Object(), &descriptor);
  EXPECT_EQ(log.Take(), Calls{"first.GetDescriptor()"});
  ASSERT_EQ(first.descriptors.size(), 2U);
  EXPECT_EQ(first.descriptors.back().References(), 1) << "the caller owns the one reference";
  SlotsOf<DescriptorSlots>(descriptor).Release(descriptor);
  EXPECT_EQ(log.Take(), Calls{"first.descriptor.Release()"});
}

TEST_P(SingleInput, LeavesADescriptorThatItsSourceSharesWithOneReferenceLess) {
  DescriptorMock shared("shared", log, first.description);
  shared.Hold();
  first.shared = &shared;
  filter.Set_src_list(first);
  EXPECT_EQ(log.Take(), (Calls{"first.GetDescriptor()", "shared.GetPeriod()", "shared.Release()"}));
  EXPECT_EQ(shared.References(), 1);
  shared.Release();
}

TEST_P(SingleInput, PassesTheInPlaceHintOn) {
  filter.EnableInPlace(true);
  EXPECT_EQ(log.Take(), Calls{});
  filter.Set_src_list(first);
  log.Take();
  filter.EnableInPlace(true);
  filter.EnableInPlace(false);
  EXPECT_EQ(log.Take(), (Calls{"first.EnableInPlace(true)", "first.EnableInPlace(false)"}));
  filter.Dispose();
  log.Take();
  filter.EnableInPlace(true);
  EXPECT_EQ(log.Take(), Calls{});
}

TEST_P(SingleInput, TakesAReferenceToItsConsole) {
  filter.Set_console_out(&console);
  EXPECT_EQ(log.Take(), Calls{"console.AddRef()"});
  filter.Set_console_out(&otherConsole);
  EXPECT_EQ(log.Take(), (Calls{"console.Release()", "other.AddRef()"}));
  filter.Set_console_out(nullptr);
  EXPECT_EQ(log.Take(), Calls{"other.Release()"});
  filter.Set_console_out(nullptr);
  EXPECT_EQ(log.Take(), Calls{});
}

TEST_P(SingleInput, ReleasesTheSameConsoleBeforeItAddsTheNewReference) {
  filter.Set_console_out(&console);
  log.Take();
  filter.Set_console_out(&console);
  EXPECT_EQ(log.Take(), (Calls{"console.Release()", "console.AddRef()"}));
  EXPECT_EQ(console.References(), 2);
}

TEST_P(SingleInput, GivesANumberStreamBackAtOnce) {
  NumStreamMock stream("stream", log);
  filter.Set_num_stream(&stream);
  EXPECT_EQ(log.Take(), (Calls{"stream.AddRef()", "stream.Release()"}));
  EXPECT_EQ(stream.References(), 1);
  filter.Set_num_stream(nullptr);
  EXPECT_EQ(log.Take(), Calls{});
}

TEST_P(SingleInput, InitFromADescriptorReadsItsIntervalAlone) {
  DescriptorMock descriptor("descriptor", log, Description{});
  filter.InitFrom(descriptor);
  EXPECT_EQ(log.Take(), (Calls{"descriptor.GetPeriod()", "descriptor.Release()"}));
}

TEST_P(SingleInput, SrcSetAsksForTheDescriptorAgain) {
  filter.Set_src_list(first);
  log.Take();
  filter.SrcSet();
  EXPECT_EQ(log.Take(), (Calls{"first.GetDescriptor()", "first.descriptor.GetPeriod()",
                               "first.descriptor.Release()"}));
}

TEST_P(SingleInput, TheLastReleaseDropsTheSourceThenTheConsole) {
  filter.Set_console_out(&console);
  filter.Set_src_list(first);
  log.Take();
  EXPECT_EQ(filter.Slots().AddRef(filter.Object()), 2U);
  EXPECT_EQ(filter.Slots().Release(filter.Object()), 1U);
  EXPECT_EQ(log.Take(), Calls{});
  EXPECT_EQ(filter.Release(), 0U);
  EXPECT_EQ(log.Take(), (Calls{"first.Dispose()", "first.Release()", "console.Release()"}));
}

TEST_P(SingleInput, TheLastReleaseWithoutASourceDropsTheConsoleAlone) {
  filter.Set_console_out(&console);
  filter.Set_src_list(first);
  filter.Dispose();
  log.Take();
  EXPECT_EQ(filter.Release(), 0U);
  EXPECT_EQ(log.Take(), Calls{"console.Release()"});
}

TEST_P(SingleInput, CallsNoConsoleAfterItWasTakenAway) {
  console.step_s = 1.0;
  filter.Set_console_out(&console);
  filter.Set_console_out(nullptr);
  filter.Set_src_list(first);
  log.Take();
  filter.PullAll({7});
  EXPECT_EQ(log.Take("console"), Calls{});
}

TEST_P(SingleInput, SetsTheIntervalAndTheSourceThroughItsOwnSlots) {
  static Calls reached;
  static FilterSlots original;
  reached.clear();
  original = filter.Slots();
  filter.Exchange(
      5, +[](void* self) {
        reached.push_back("Dispose");
        original.Dispose(self);
      });
  filter.Exchange(
      12, +[](void* self) {
        reached.push_back("SrcSet");
        original.SrcSet(self);
      });
  filter.Exchange(
      13, +[](void* self, void* descriptor) {
        reached.push_back("Init(descriptor)");
        original.InitFrom(self, descriptor);
      });
  filter.Exchange(
      14, +[](void* self, double interval_ms) {
        reached.push_back("Init(" + Text(interval_ms) + ")");
        original.Init(self, interval_ms);
      });
  filter.Set_src_list(first);
  EXPECT_EQ(reached, (Calls{"Dispose", "SrcSet", "Init(descriptor)", "Init(0.1)"}));
  reached.clear();
  filter.Set_src_list({});
  EXPECT_EQ(reached, Calls{"Dispose"});
}

TEST_P(SingleInput, SetSrcListReturnsWhatSrcSetReturns) {
  filter.Exchange(
      12, +[](void*) { return 4711; });
  void* sources[] = {first.Give()};
  EXPECT_EQ(filter.Slots().Set_src_list(filter.Object(), sources, 1), 4711);
}

TEST_P(SingleInput, AnExceptionOfItsSourcePassesAndTheStreamGoesOn) {
  filter.Set_src_list(first);
  first.before = [](const std::string& operation) {
    if (operation == "TransmitNow") {
      throw std::runtime_error("no samples today");
    }
  };
  float buffer[10];
  int produced = 0;
  EXPECT_THROW(filter.Slots().TransmitNow(filter.Object(), buffer, 10, &produced),
               std::runtime_error);
  first.before = nullptr;
  EXPECT_EQ(filter.PullAll({9}).size(), 40U);
}

TEST_P(SingleInput, AnExceptionOfItsSourceInSetSrcListLeavesItReleasable) {
  first.before = [](const std::string& operation) {
    if (operation == "GetDescriptor") {
      throw std::bad_alloc();
    }
  };
  EXPECT_THROW(filter.Set_src_list(first), std::bad_alloc);
  first.before = nullptr;
  log.Take();
  filter.Set_src_list(second);
  EXPECT_EQ(log.Take(), (Calls{"first.Dispose()", "first.Release()", "second.GetDescriptor()",
                               "second.descriptor.GetPeriod()", "second.descriptor.Release()"}));
  EXPECT_EQ(filter.PullAll({9}).size(), 40U);
}

TEST_P(SingleInput, TakesASourceThatSaysNothingAsOneThatDeliveredNothing) {
  filter.Set_src_list(first);
  first.silent = true;
  float buffer[10];
  int produced = 3;
  filter.Slots().TransmitNow(filter.Object(), buffer, 10, &produced);
  EXPECT_EQ(produced, 0);
  first.silent = false;
  EXPECT_EQ(filter.PullAll({9}).size(), 40U);
}

TEST_P(SingleInput, FeedsAnotherFilterAsItsSource) {
  CallLog headLog;
  SourceMock head("head", headLog, Ramp(100));
  Filter inner = MakeFilter(GetParam());
  Filter outer = MakeFilter(FIRFilter);
  inner.Set_param_list({3.0});
  outer.Set_param_list({5.0});
  inner.Set_src_list(head);
  inner.Slots().AddRef(inner.Object());  // the reference that the outer filter takes over
  void* sources[] = {inner.Object()};
  outer.Slots().Set_src_list(outer.Object(), sources, 1);
  headLog.Take();
  outer.EnableInPlace(true);
  EXPECT_EQ(headLog.Take(), Calls{"head.EnableInPlace(true)"});
  EXPECT_EQ(outer.PullAll({17, 4}).size(), 100U);
  outer.Dispose();
  EXPECT_EQ(head.References(), 0) << "Dispose travels up the chain";
}

class InPlaceGenerator : public SingleInput {};

INSTANTIATE_TEST_SUITE_P(Kinds, InPlaceGenerator, testing::Values(SineGen, SquareGen), KindName);

TEST_P(InPlaceGenerator, HasEndedWithoutASource) {
  EXPECT_TRUE(filter.EndOfSrc());
  filter.Set_src_list(first);
  EXPECT_FALSE(filter.EndOfSrc());
  filter.Set_src_list({});
  EXPECT_TRUE(filter.EndOfSrc());
  filter.Set_src_list(second);
  EXPECT_FALSE(filter.EndOfSrc());
  filter.Dispose();
  EXPECT_TRUE(filter.EndOfSrc());
}

TEST_P(InPlaceGenerator, AsksItsSourceForItsEndEachTime) {
  int asked = 0;
  first.end = [&asked] { return ++asked == 2; };
  filter.Set_src_list(first);
  log.Take();
  EXPECT_FALSE(filter.EndOfSrc());
  EXPECT_TRUE(filter.EndOfSrc());
  EXPECT_FALSE(filter.EndOfSrc());
  EXPECT_EQ(log.Take(), (Calls{"first.EndOfSrc()", "first.EndOfSrc()", "first.EndOfSrc()"}));
}

TEST_P(InPlaceGenerator, AppliesItselfThroughTheSlotToWhatCame) {
  static std::vector<int> counts;
  static float* buffers[2];
  counts.clear();
  filter.Exchange(
      15, +[](void*, float* samples, int count) {
        buffers[counts.size() % 2] = samples;
        counts.push_back(count);
        for (int i = 0; i < count; ++i) {
          samples[i] = -samples[i];
        }
      });
  first.deliver = InBlocksOf({3, 0});
  filter.Set_src_list(first);
  log.Take();
  float buffer[8] = {};
  int produced = -1;
  filter.Slots().TransmitNow(filter.Object(), buffer, 5, &produced);
  EXPECT_EQ(produced, 3);
  EXPECT_TRUE(SameBits({buffer, buffer + 4}, {-1.0F, -2.0F, -3.0F, 0.0F}));
  filter.Slots().TransmitNow(filter.Object(), buffer + 1, 5, &produced);
  EXPECT_EQ(produced, 0);
  EXPECT_EQ(counts, (std::vector<int>{3, 0}));
  EXPECT_EQ(buffers[0], buffer);
  EXPECT_EQ(buffers[1], buffer + 1);
  EXPECT_EQ(log.Take(), (Calls{"first.TransmitNow(5)", "first.TransmitNow(5)"}));
}

TEST_P(InPlaceGenerator, HandsEveryRequestOnAsItIs) {
  filter.Set_src_list(first);
  log.Take();
  for (const int count : {0, -1, -5000, -2147483647 - 1}) {
    EXPECT_TRUE(filter.Pull(count).empty());
    EXPECT_EQ(log.Take("first").front(), "TransmitNow(" + std::to_string(count) + ")");
  }
  EXPECT_EQ(filter.Pull(100).size(), 40U);
}

TEST_P(InPlaceGenerator, TakesAClaimOfItsSourceAtTheBounds) {
  filter.Set_src_list(first);
  for (const int claim : {6, 1000000, 2147483647}) {
    first.claim = [claim](int, int) { return claim; };
    EXPECT_EQ(filter.Pull(5).size(), 5U);
  }
  first.deliver = [](int) { return 0; };
  for (const int claim : {-1, -2147483647 - 1}) {
    first.claim = [claim](int, int) { return claim; };
    EXPECT_TRUE(filter.Pull(5).empty());
  }
  first.claim = [](int, int) { return 5; };
  EXPECT_TRUE(filter.Pull(0).empty());
  EXPECT_TRUE(filter.Pull(-3).empty());
}

}  // namespace
