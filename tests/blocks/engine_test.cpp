// The block engine as the FIR filters show it: margins, padding, peeks, ends. The smoothing filter
// serves where the samples matter, with taps that the test replaces where plain numbers read
// better.

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>

#include "reference/fir.h"
#include "support/filter.h"
#include "support/guarded_buffer.h"

namespace {

using namespace support;

constexpr int Lowest = -2147483647 - 1;
constexpr int Highest = 2147483647;

struct BlockEngine : testing::Test {
  CallLog log;
  SourceMock source{"source", log, Ramp(20)};
  ConsoleMock console{"console", log};
  Filter filter = MakeFilter(FIRFilter);

  // Attaches the source to a filter of 2 half + 1 taps.
  void Attach(int half) {
    filter.Set_param_list({static_cast<double>(half)});
    filter.Set_src_list(source);
    log.Take();
  }

  // The same, but with taps that pass the current sample on and nothing else.
  void AttachPassing(int half) {
    filter.Exchange(
        16, +[](void*, float* coef, int n, double) {
          std::fill(coef, coef + n, 0.0F);
          coef[n / 2] = 1.0F;
        });
    Attach(half);
  }

  // The same with taps that are all 1: each output is the sum of its 2 half + 1 inputs.
  void AttachSumming(int half) {
    filter.Exchange(
        16, +[](void*, float* coef, int n, double) { std::fill(coef, coef + n, 1.0F); });
    Attach(half);
  }
};

TEST_F(BlockEngine, PassesTheSignalThroughWithoutMargins) {
  AttachPassing(0);
  EXPECT_TRUE(SameBits(filter.Pull(7), Ramp(7)));
  EXPECT_EQ(log.Take(), (Calls{"source.EndOfSrc()", "source.TransmitNow(7)", "source.EndOfSrc()"}));
  EXPECT_FALSE(filter.EndOfSrc());
  EXPECT_TRUE(SameBits(filter.Pull(13), Ramp(13, 8.0F)));
  EXPECT_TRUE(filter.EndOfSrc());
}

TEST_F(BlockEngine, YieldsNotANumberForEachSampleAtHalfLengthZero) {
  Attach(0);
  const Samples samples = filter.PullAll({7});
  EXPECT_EQ(samples.size(), 20U);
  for (const float sample : samples) {
    EXPECT_TRUE(std::isnan(sample));
  }
}

TEST_F(BlockEngine, YieldsAsManySamplesAsItsInputWithZerosAroundThem) {
  source.samples = {1.0F, 10.0F, 100.0F, 1000.0F, 10000.0F};
  AttachSumming(3);
  EXPECT_TRUE(SameBits(filter.PullAll({2}), {1111.0F, 11111.0F, 11111.0F, 11111.0F, 11110.0F}));
}

TEST_F(BlockEngine, YieldsAsManySamplesAsItsInputHoweverShort) {
  for (const int length : {0, 1, 2, 3, 7, 100}) {
    for (const int half : {1, 2, 5, 50, 2048}) {
      source.samples = Noise(length);
      source.position = 0;
      Attach(half);
      const Samples coef = reference::HammingAverage(2 * half + 1);
      EXPECT_TRUE(SameBits(filter.PullAll({64}), reference::Filtered(source.samples, coef, length)))
          << length << " samples, half length " << half;
    }
  }
}

TEST_F(BlockEngine, DeliversAtMostWhatItsBufferLeavesBesideTheMargins) {
  source.samples = Noise(30000);
  for (const int half : {0, 1, 100, 2047, 2048}) {
    for (const int count : {8192 - 2 * half, 8193 - 2 * half, 10000, Highest}) {
      source.position = 0;
      AttachPassing(half);
      // A buffer of the largest request would take 8 GiB: the bound makes this room enough.
      GuardedBuffer buffer(8192);
      int produced = -1;
      filter.Slots().TransmitNow(filter.Object(), buffer.data(), count, &produced);
      EXPECT_EQ(produced, 8192 - 2 * half);
      buffer.CheckAfter(produced);
      EXPECT_TRUE(SameBits(buffer.First(produced), Slice(source.samples, 0, produced)));
      EXPECT_EQ(log.Take("source").at(1), "TransmitNow(" + std::to_string(8192 - half) + ")");
    }
  }
}

TEST_F(BlockEngine, AsksItsSourceForItsEndBeforeAndAfterEachDelivery) {
  AttachPassing(2);
  EXPECT_TRUE(SameBits(filter.Pull(6), Ramp(6)));
  EXPECT_EQ(log.Take(), (Calls{"source.EndOfSrc()", "source.TransmitNow(8)", "source.EndOfSrc()"}));
  EXPECT_TRUE(SameBits(filter.Pull(6), Ramp(6, 7.0F)));
  EXPECT_EQ(log.Take(), (Calls{"source.EndOfSrc()", "source.TransmitNow(6)", "source.EndOfSrc()"}));
  EXPECT_TRUE(SameBits(filter.Pull(8), Ramp(8, 13.0F)));
  EXPECT_EQ(log.Take(), (Calls{"source.EndOfSrc()", "source.TransmitNow(8)", "source.EndOfSrc()"}));
  EXPECT_TRUE(filter.EndOfSrc());
  EXPECT_EQ(log.Take(), Calls{}) << "the end is the engine's own";
  EXPECT_TRUE(SameBits(filter.Pull(3), Constant(3)));
  EXPECT_EQ(log.Take(), (Calls{"source.EndOfSrc()", "source.EndOfSrc()"}));
}

TEST_F(BlockEngine, AsksForNothingWhereItHasEnough) {
  AttachPassing(2);
  EXPECT_EQ(filter.Peek(6), 6);
  log.Take();
  EXPECT_TRUE(SameBits(filter.Pull(6), Ramp(6)));
  EXPECT_EQ(log.Take(), Calls{});
}

TEST_F(BlockEngine, FillsItsLookAheadForARequestOfNone) {
  AttachPassing(3);
  EXPECT_TRUE(filter.Pull(0).empty());
  EXPECT_EQ(log.Take(), (Calls{"source.EndOfSrc()", "source.TransmitNow(3)", "source.EndOfSrc()"}));
  EXPECT_TRUE(filter.Pull(0).empty());
  EXPECT_EQ(log.Take(), Calls{});
  EXPECT_TRUE(SameBits(filter.PullAll({5}), Ramp(20)));
}

TEST_F(BlockEngine, UsesANegativeRequestAsTheNumberItIs) {
  AttachPassing(5);
  EXPECT_TRUE(filter.Pull(-2).empty());
  EXPECT_EQ(log.Take(), (Calls{"source.EndOfSrc()", "source.TransmitNow(3)", "source.EndOfSrc()"}))
      << "-2 + 10 wanted, 5 there";
  for (const int count : {-2, -10, -11, -8192, Lowest}) {
    EXPECT_TRUE(filter.Pull(count).empty());
    EXPECT_EQ(filter.Peek(count), 0) << count;
    EXPECT_EQ(log.Take(), Calls{}) << count;
  }
  EXPECT_TRUE(SameBits(filter.PullAll({5}), Ramp(20)));
}

TEST_F(BlockEngine, APeekReportsWhatTheNextPullDelivers) {
  source.deliver = InBlocksOf({6, 0, 4, 9});
  AttachPassing(2);
  Samples all;
  for (int pull = 0; pull < 4; ++pull) {
    const Calls before = log.Take();
    const int promised = filter.Peek(5);
    source.deliver = [](int) { return 0; };  // a live source with nothing new in between
    const Samples samples = filter.Pull(5);
    EXPECT_EQ(static_cast<int>(samples.size()), promised);
    all = all + samples;
    source.deliver = InBlocksOf({4});
  }
  EXPECT_GT(all.size(), 4U);
  EXPECT_TRUE(SameBits(all, Slice(source.samples, 0, static_cast<int>(all.size()))));
}

TEST_F(BlockEngine, APeekFillsOnceAndConsumesNothing) {
  AttachPassing(2);
  EXPECT_EQ(filter.Peek(5), 5);
  EXPECT_EQ(log.Take(), (Calls{"source.EndOfSrc()", "source.TransmitNow(7)", "source.EndOfSrc()"}));
  EXPECT_EQ(filter.Peek(5), 5);
  EXPECT_EQ(log.Take(), Calls{});
  EXPECT_EQ(filter.Peek(3), 3) << "never more than was asked for";
  EXPECT_EQ(filter.Peek(0), 0);
  EXPECT_EQ(filter.Peek(9), 9);
  EXPECT_EQ(log.Take(), (Calls{"source.EndOfSrc()", "source.TransmitNow(4)", "source.EndOfSrc()"}));
  EXPECT_TRUE(SameBits(filter.PullAll({5}), Ramp(20)));
}

TEST_F(BlockEngine, APeekThatCompletesThePaddingSetsTheEndBeforeTheLastSamplesLeave) {
  source.samples = Ramp(4);
  AttachSumming(1);
  EXPECT_EQ(filter.Peek(10), 4);
  EXPECT_TRUE(filter.EndOfSrc());
  // The next call asks for more than there is: zeros follow, and the first output over them still
  // sees the last sample as its history.
  EXPECT_TRUE(SameBits(filter.Pull(7), {3.0F, 6.0F, 9.0F, 7.0F, 4.0F, 0.0F, 0.0F}));
}

TEST_F(BlockEngine, APeekAfterTheEndFillsWithZeros) {
  source.samples = Ramp(4);
  AttachPassing(1);
  EXPECT_EQ(filter.Peek(10), 4);
  EXPECT_EQ(filter.Peek(10), 10);
  EXPECT_EQ(filter.Peek(Highest), 8190);
  EXPECT_TRUE(SameBits(filter.Pull(6), {1.0F, 2.0F, 3.0F, 4.0F, 0.0F, 0.0F}));
}

TEST_F(BlockEngine, TheEndComesWithTheLastSampleAndNoSooner) {
  source.samples = Ramp(10);
  AttachPassing(3);
  EXPECT_TRUE(SameBits(filter.Pull(9), Ramp(9)));
  EXPECT_FALSE(filter.EndOfSrc()) << "padding for the last sample is still to come";
  EXPECT_TRUE(SameBits(filter.Pull(1), {10.0F}));
  EXPECT_TRUE(filter.EndOfSrc());
}

TEST_F(BlockEngine, PadsOnlyAsMuchAsTheRequestNeeds) {
  source.samples = Ramp(4);
  AttachSumming(3);
  EXPECT_TRUE(SameBits(filter.Pull(1), {10.0F}));
  EXPECT_FALSE(filter.EndOfSrc());
  EXPECT_TRUE(SameBits(filter.Pull(1), {10.0F}));
  EXPECT_TRUE(SameBits(filter.Pull(1), {10.0F}));
  EXPECT_FALSE(filter.EndOfSrc());
  EXPECT_TRUE(SameBits(filter.Pull(1), {10.0F}));
  EXPECT_TRUE(filter.EndOfSrc());
}

TEST_F(BlockEngine, DeliversZerosAfterTheEndForAsLongAsItIsAsked) {
  source.samples = Ramp(4);
  AttachSumming(2);
  EXPECT_TRUE(SameBits(filter.PullAll({2}), {6.0F, 10.0F, 10.0F, 9.0F}));
  EXPECT_TRUE(SameBits(filter.Pull(4), {7.0F, 4.0F, 0.0F, 0.0F}));
  for (const int count : {1, 100, 8188, 3}) {
    EXPECT_TRUE(SameBits(filter.Pull(count), Constant(count)));
    EXPECT_TRUE(filter.EndOfSrc());
  }
}

TEST_F(BlockEngine, EndsAnEmptyInputWithTheFirstPull) {
  source.samples.clear();
  AttachPassing(3);
  EXPECT_FALSE(filter.EndOfSrc());
  EXPECT_TRUE(filter.Pull(100).empty());
  EXPECT_EQ(log.Take(), (Calls{"source.EndOfSrc()", "source.EndOfSrc()"}));
  EXPECT_TRUE(filter.EndOfSrc());
}

TEST_F(BlockEngine, EndsAnEmptyInputWithoutMarginsOnlyWhenSomethingIsWanted) {
  source.samples.clear();
  AttachPassing(0);
  EXPECT_TRUE(filter.Pull(0).empty());
  EXPECT_FALSE(filter.EndOfSrc());
  EXPECT_EQ(log.Take(), Calls{});
  EXPECT_TRUE(filter.Pull(1).empty());
  EXPECT_TRUE(filter.EndOfSrc());
}

TEST_F(BlockEngine, DoesNotPadAShortDeliveryOfALiveSource) {
  source.deliver = InBlocksOf({5, 0, 1});
  AttachPassing(2);
  EXPECT_TRUE(SameBits(filter.Pull(6), Ramp(3))) << "2 of history, 5 came, 2 stay as look-ahead";
  EXPECT_TRUE(filter.Pull(6).empty());
  EXPECT_TRUE(SameBits(filter.Pull(6), {4.0F}));
  EXPECT_EQ(log.Take("source"),
            (Calls{"EndOfSrc()", "TransmitNow(8)", "EndOfSrc()", "EndOfSrc()", "TransmitNow(6)",
                   "EndOfSrc()", "EndOfSrc()", "TransmitNow(6)", "EndOfSrc()"}));
}

TEST_F(BlockEngine, BelievesItsSourceEachTimeItAsks) {
  // Asked first it says that it is over, asked again that it is not: nothing is read or padded.
  int asked = 0;
  source.end = [&asked] { return ++asked == 1; };
  AttachPassing(2);
  EXPECT_TRUE(filter.Pull(4).empty());
  EXPECT_EQ(log.Take(), (Calls{"source.EndOfSrc()", "source.EndOfSrc()"}));
  EXPECT_FALSE(filter.EndOfSrc());
  EXPECT_TRUE(SameBits(filter.Pull(4), Ramp(4)));
  EXPECT_EQ(log.Take(), (Calls{"source.EndOfSrc()", "source.TransmitNow(6)", "source.EndOfSrc()"}));
}

TEST_F(BlockEngine, PadsAfterASourceThatEndsBeforeItsSamplesAreGone) {
  bool over = false;
  source.end = [&over] { return over; };
  AttachPassing(2);
  EXPECT_TRUE(SameBits(filter.Pull(4), Ramp(4)));
  over = true;
  EXPECT_TRUE(SameBits(filter.PullAll({4}), {5.0F, 6.0F}));
  EXPECT_EQ(source.position, 6);
}

TEST_F(BlockEngine, TakesAClaimAboveTheRequestAtTheRequest) {
  source.samples = Ramp(20000);
  AttachPassing(2048);
  for (const int claim : {8193, Highest}) {
    source.claim = [claim](int, int) { return claim; };
    EXPECT_EQ(filter.Pull(4096).size(), 4096U);
    EXPECT_EQ(filter.Pull(100).size(), 100U);
  }
  source.claim = [](int count, int) { return count + 1; };
  log.Take();
  EXPECT_EQ(filter.Pull(50).size(), 50U);
  EXPECT_EQ(log.Take("source").at(1), "TransmitNow(50)");
}

TEST_F(BlockEngine, TakesANegativeClaimAsNothing) {
  AttachPassing(2);
  for (const int claim : {-1, -100, Lowest}) {
    source.claim = [claim](int, int) { return claim; };
    source.deliver = [](int) { return 0; };
    EXPECT_TRUE(filter.Pull(6).empty());
    EXPECT_EQ(log.Take("source").at(1), "TransmitNow(8)");
  }
  source.claim = nullptr;
  source.deliver = nullptr;
  EXPECT_TRUE(SameBits(filter.PullAll({6}), Ramp(20)));
}

TEST_F(BlockEngine, DeliversTheRestThenZerosAfterDispose) {
  AttachSumming(1);
  EXPECT_EQ(filter.Peek(5), 5);  // 1 of history, 1 to 6 are there
  filter.Dispose();
  EXPECT_FALSE(filter.EndOfSrc());
  log.Take();
  EXPECT_TRUE(SameBits(filter.Pull(2), {3.0F, 6.0F}));
  EXPECT_FALSE(filter.EndOfSrc());
  EXPECT_TRUE(SameBits(filter.Pull(9), {9.0F, 12.0F, 15.0F, 11.0F}));
  EXPECT_TRUE(filter.EndOfSrc());
  EXPECT_TRUE(SameBits(filter.Pull(3), {6.0F, 0.0F, 0.0F}));
  EXPECT_TRUE(SameBits(filter.Pull(1000), Constant(1000)));
  EXPECT_EQ(log.Take(), Calls{});
}

TEST_F(BlockEngine, AnEmptyListInMidStreamLeavesTheEndAsItIs) {
  AttachPassing(2);
  filter.Peek(4);
  filter.Set_src_list({});
  EXPECT_FALSE(filter.EndOfSrc());
  EXPECT_TRUE(SameBits(filter.Pull(100), Ramp(6)));
  EXPECT_TRUE(filter.EndOfSrc());
  filter.Set_src_list({});
  EXPECT_TRUE(filter.EndOfSrc());
  EXPECT_TRUE(SameBits(filter.Pull(10), Constant(10)));
}

TEST_F(BlockEngine, ANewSourceStartsANewStream) {
  AttachSumming(2);
  filter.Pull(5);
  SourceMock next("next", log, {100.0F, 200.0F, 300.0F});
  filter.Set_src_list(next);
  EXPECT_FALSE(filter.EndOfSrc());
  EXPECT_TRUE(SameBits(filter.PullAll({2}), {600.0F, 600.0F, 600.0F}));
  next.position = 0;
  filter.Set_src_list(next);
  EXPECT_FALSE(filter.EndOfSrc()) << "the end of the old stream is forgotten";
  EXPECT_TRUE(SameBits(filter.PullAll({3}), {600.0F, 600.0F, 600.0F}));
  filter.Dispose();
}

TEST_F(BlockEngine, SrcSetRestartsTheStreamFromWhereTheSourceStands) {
  AttachSumming(1);
  filter.Pull(5);
  filter.SrcSet();
  EXPECT_EQ(source.position, 6);
  EXPECT_TRUE(SameBits(filter.Pull(2), {15.0F, 24.0F})) << "7 + 8 after a zero, then 7 + 8 + 9";
}

TEST_F(BlockEngine, ReadsItsMarginsAfterInit) {
  // Init sets the margins; a filter that was attached with others before must not keep them.
  AttachPassing(7);
  filter.Set_param_list({2.0});
  filter.SrcSet();
  log.Take();
  EXPECT_TRUE(SameBits(filter.Pull(4), Ramp(4)));
  EXPECT_EQ(log.Take("source").at(1), "TransmitNow(6)");
}

TEST_F(BlockEngine, InitInMidStreamChangesTheMarginsAndNothingElse) {
  AttachPassing(1);
  EXPECT_TRUE(SameBits(filter.Pull(4), Ramp(4)));  // 4 and 5 are in the buffer
  filter.Set_param_list({3.0});
  filter.Init(0.1);
  log.Take();
  EXPECT_TRUE(SameBits(filter.Pull(2), {7.0F, 8.0F})) << "the third sample of history is 6";
  EXPECT_EQ(log.Take("source").at(1), "TransmitNow(6)");
  filter.Set_param_list({0.0});
  filter.Init(0.1);
  EXPECT_TRUE(SameBits(filter.Pull(2), {6.0F, 7.0F}));
  EXPECT_EQ(log.Take(), Calls{}) << "6 samples wait in the buffer";
}

TEST_F(BlockEngine, HasEndedBeforeItsFirstSource) {
  EXPECT_TRUE(filter.EndOfSrc());
  EXPECT_EQ(filter.Peek(100), 100);
  EXPECT_EQ(filter.Pull(100).size(), 100U);
  EXPECT_EQ(filter.Pull(10000).size(), 8192U);
  EXPECT_TRUE(filter.EndOfSrc());
  filter.Set_src_list({});
  EXPECT_TRUE(filter.EndOfSrc());
}

TEST_F(BlockEngine, SuppliesZerosWithoutEndWhereItNeverHadASource) {
  filter.Set_param_list({3.0});
  filter.Init(0.1);
  EXPECT_TRUE(filter.EndOfSrc());
  for (const int count : {10, 1, 8186}) {
    EXPECT_TRUE(SameBits(filter.Pull(count), Constant(count)));
  }
  EXPECT_EQ(filter.Peek(Highest), 8186);
}

TEST_F(BlockEngine, AppliesItselfThroughTheSlotWithTheStartOfItsBuffer) {
  static std::vector<Samples> blocks;
  blocks.clear();
  filter.Exchange(
      15, +[](void*, float* in, float* out, int count) {
        blocks.emplace_back(in, in + count + 4);
        std::fill(out, out + count, 9.0F);
      });
  Attach(2);
  EXPECT_TRUE(SameBits(filter.Pull(3), Constant(3, 9.0F)));
  EXPECT_TRUE(SameBits(filter.Pull(2), Constant(2, 9.0F)));
  EXPECT_TRUE(filter.Pull(0).empty());
  filter.Peek(4);
  ASSERT_EQ(blocks.size(), 2U) << "called for real deliveries only";
  EXPECT_TRUE(SameBits(blocks[0], {0.0F, 0.0F, 1.0F, 2.0F, 3.0F, 4.0F, 5.0F}));
  EXPECT_TRUE(SameBits(blocks[1], {2.0F, 3.0F, 4.0F, 5.0F, 6.0F, 7.0F}));
}

TEST_F(BlockEngine, WritesTheCountBeforeItApplies) {
  static int* produced;
  static int seen;
  int count = -1;
  produced = &count;
  filter.Exchange(
      15, +[](void*, float*, float*, int) { seen = *produced; });
  Attach(1);
  float buffer[5];
  filter.Slots().TransmitNow(filter.Object(), buffer, 5, produced);
  EXPECT_EQ(seen, 5);
}

TEST_F(BlockEngine, InitialisesThroughItsOwnSlotsAndReleasesTheDescriptorAfterThem) {
  static Calls reached;
  static CallLog* calls;
  static FilterSlots original;
  calls = &log;
  original = filter.Slots();
  filter.Exchange(
      13, +[](void* self, void* descriptor) {
        calls->Add("Init(descriptor)");
        original.InitFrom(self, descriptor);
      });
  filter.Exchange(
      14, +[](void* self, double interval_ms) {
        calls->Add("Init(" + Text(interval_ms) + ")");
        original.Init(self, interval_ms);
      });
  filter.Exchange(
      16, +[](void*, float* coef, int n, double) {
        calls->Add("CalcCoef(" + std::to_string(n) + ")");
        std::fill(coef, coef + n, 0.0F);
      });
  filter.Set_param_list({4.0});
  filter.Set_src_list(source);
  EXPECT_EQ(log.Take(),
            (Calls{"source.GetDescriptor()", "Init(descriptor)", "source.descriptor.GetPeriod()",
                   "Init(0.1)", "CalcCoef(9)", "source.descriptor.Release()"}));
}

TEST_F(BlockEngine, KeepsWhatCameBeforeItsSourceThrew) {
  AttachPassing(2);
  int asked = 0;
  source.before = [&asked](const std::string& operation) {
    if (operation == "EndOfSrc" && ++asked == 2) {
      throw std::runtime_error("lost after the delivery");
    }
  };
  float buffer[4];
  int produced = 0;
  EXPECT_THROW(filter.Slots().TransmitNow(filter.Object(), buffer, 4, &produced),
               std::runtime_error);
  EXPECT_EQ(source.position, 6);
  EXPECT_TRUE(SameBits(filter.PullAll({4}), Ramp(20)));
}

}  // namespace
