// Memory that runs out, at every allocation that a filter's life has: once, and for good.

#include <gtest/gtest.h>

#include <cstdlib>

#include "hardening/allocations.h"
#include "hardening/plain_filter.h"
#include "support/filter.h"
#include "support/guarded_buffer.h"

namespace hardening {
namespace {

constexpr int SignalLength = 12000;
constexpr double Interval_ms = 0.1;

const DataFiles& Files() {
  static const DataFiles files(SignalLength * Interval_ms);
  return files;
}

// Bits, so that a set of them needs no memory.
enum Stage : unsigned {
  Entry = 1,
  GetFilter = 2,
  SetUp = 4,
  Attach = 8,
  Describe = 16,
  FirstPull = 32,
  Middle = 64,
  End = 128,
  LettingGo = 256,
};

enum class Data { Own, Supplied, None };

struct Case {
  Kind kind;
  Data data;
};

// One life of a filter, every call of which may run out of memory.
class Life {
 public:
  Life(const Case& theCase, Refusal& theRefusal) : life(theCase), refusal(theRefusal) {
    host.Describe(SignalLength, Interval_ms,
                  life.data == Data::None ? Files().Missing() : Files().Signal());
    host.stream.text = Files().Text(life.kind);
  }

  // The filter, or null where it could not be made; nothing is stored then.
  void* Make() {
    void* factory = &host;
    const EntryPoint entryPoint = support::Entry(life.kind);
    if (!Let(Entry, [&] { entryPoint(&factory); })) {
      EXPECT_EQ(factory, &host) << "a failed entry point stored something";
      return nullptr;
    }
    const auto& slots = support::SlotsOf<FactorySlots>(factory);
    void* filter = &host;
    const bool made = Let(GetFilter, [&] { slots.GetFilter(factory, &filter); });
    EXPECT_TRUE(made || filter == &host) << "a failed GetFilter stored something";
    EXPECT_EQ(slots.Release(factory), 0U);
    return made ? filter : nullptr;
  }

  // Goes on after every failure, as a careless host would.
  void Use(PlainFilter& filter) {
    auto params = UsefulParams(life.kind);
    Let(SetUp, [&] {
      filter.Slots().Set_param_list(filter.Object(), params.data(),
                                    static_cast<int>(params.size()));
      filter.Set_console_out(&host.console);
      if (life.data == Data::Supplied) Supply(filter);
    });
    Let(Attach, [&] { filter.Attach(host, SourceCount(life.kind)); });
    Let(Describe, [&] { filter.Length(); });
    int total = 0;
    for (int pull = 0; pull < SignalLength / Block; ++pull) {
      const Stage stage = pull == 0 ? FirstPull : total < 6500 ? Middle : End;
      int came = 0;
      support::GuardedBuffer buffer(Block);
      Let(stage, [&] { came = filter.Pull(buffer.data(), Block); });
      buffer.CheckAfter(came);
      total += came;
    }
    Let(LettingGo, [&] { filter.Dispose(); });
  }

  void Supply(PlainFilter& filter) { filter.Set_num_stream(&host.stream); }

  // With memory again: the whole signal.
  support::Samples Again(PlainFilter& filter) {
    std::srand(7);
    for (PlainSource& source : host.sources) source.Rewind();
    filter.Attach(host, SourceCount(life.kind));
    return PullToEnd(filter, 1000, 3000);
  }

  // Without memory: everything goes back.
  void LetGo(PlainFilter& filter) {
    Let(LettingGo, [&] { EXPECT_EQ(filter.Release(), 0U); });
  }

  testing::AssertionResult Balanced() const { return host.Balanced(); }
  unsigned Failed() const { return failed; }

 private:
  static constexpr int Block = 512;

  template <class Call>
  bool Let(Stage stage, Call call) {
    const bool enough = refusal.During(call);
    if (!enough) failed |= stage;
    return enough;
  }

  Case life;
  Refusal& refusal;
  PlainHost host;
  unsigned failed = 0;
};

// What a filter delivers that had enough memory: attached for the first time, and once more after
// a whole life. The two differ: a stream that a filter made for itself takes later names as they
// are, and the pellet readers do not go back to the start where no file opens.
struct Outputs {
  support::Samples first;
  support::Samples again;
};

Outputs Undisturbed(const Case& theCase) {
  Refusal none(0, false);
  Outputs outputs;
  Life fresh(theCase, none);
  PlainFilter unused(fresh.Make());
  unused.Set_param_list(UsefulParams(theCase.kind));
  if (theCase.data == Data::Supplied) fresh.Supply(unused);
  outputs.first = fresh.Again(unused);
  Life whole(theCase, none);
  PlainFilter used(whole.Make());
  whole.Use(used);
  outputs.again = whole.Again(used);
  return outputs;
}

// One life in which allocation `first` is refused; returns the stages that went without memory.
unsigned LiveThrough(const Case& theCase, long first, bool fromThereOn, const Outputs& expected) {
  Refusal refusal(first, fromThereOn);
  Life life(theCase, refusal);
  if (void* const made = life.Make()) {
    PlainFilter filter(made);
    life.Use(filter);
    if (fromThereOn) {
      life.LetGo(filter);
    } else {
      const support::Samples again = life.Again(filter);
      EXPECT_TRUE(support::SameBits(again, expected.first) ||
                  support::SameBits(again, expected.again));
    }
  }
  EXPECT_TRUE(life.Balanced());
  EXPECT_EQ(life.Failed() != 0, refusal.Happened()) << "a refusal was swallowed";
  EXPECT_EQ(life.Failed() & LettingGo, 0U) << "letting go needs memory";
  return life.Failed();
}

// Refuses each allocation of such a life in turn; returns the stages that met a refusal.
unsigned RefuseEach(const Case& theCase) {
  const Outputs expected = Undisturbed(theCase);
  unsigned met = 0;
  for (const bool fromThereOn : {false, true}) {
    unsigned failed = ~0U;
    for (long first = 1; failed != 0 && !testing::Test::HasFailure(); ++first) {
      SCOPED_TRACE("allocation " + std::to_string(first) + (fromThereOn ? " and later" : ""));
      const long before = LiveAllocations();
      failed = LiveThrough(theCase, first, fromThereOn, expected);
      EXPECT_EQ(LiveAllocations(), before) << "memory was not given back";
      met |= failed;
    }
  }
  return met;
}

class Allocations : public testing::TestWithParam<Kind> {};

INSTANTIATE_TEST_SUITE_P(Kinds, Allocations, testing::ValuesIn(support::Kinds), support::KindName);

TEST_P(Allocations, MayFailOneByOneWithTheFiltersOwnStream) {
  const unsigned met = RefuseEach({GetParam(), Data::Own});
  EXPECT_EQ(met & (Entry | GetFilter), Entry | GetFilter);
  const bool readsAtAll = ReadsText(GetParam()) || Is(GetParam(), support::SetTrack);
  EXPECT_EQ((met & Attach) != 0, readsAtAll);
  // Lines that grow in mid-stream have memory asked for in every stage.
  const unsigned pulls = FirstPull | Middle | End;
  EXPECT_EQ(met & pulls, ReadsText(GetParam()) ? pulls : 0U);
}

TEST_P(Allocations, MayFailOneByOneWithAStreamOfTheHosts) {
  const unsigned met = RefuseEach({GetParam(), Data::Supplied});
  EXPECT_EQ(met & (Entry | GetFilter), Entry | GetFilter);
}

TEST_P(Allocations, MayFailOneByOneWithoutDataFiles) {
  const unsigned met = RefuseEach({GetParam(), Data::None});
  EXPECT_EQ(met & (Entry | GetFilter), Entry | GetFilter);
}

}  // namespace
}  // namespace hardening
