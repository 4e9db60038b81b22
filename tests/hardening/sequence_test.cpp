// Every order of calls that a host may come up with, but for the documented usage errors. Two
// letters beyond the twelve operations: an empty list of sources, and a peek.

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <string>
#include <vector>

#include "hardening/allocations.h"
#include "hardening/plain_filter.h"
#include "support/filter.h"

namespace hardening {
namespace {

enum Call {
  GetDescriptor,
  TransmitNow,
  Dispose,
  EndOfSrc,
  EnableInPlace,
  Set_src_list,
  Set_param_list,
  Set_console_out,
  Set_num_stream,
  SrcSet,
  InitFrom,
  Init,
  Set_src_list_empty,
  Peek,
  CallCount
};

constexpr std::array<const char*, CallCount> Names{
    "GetDescriptor",       "TransmitNow",      "Dispose",          "EndOfSrc",
    "EnableInPlace",       "Set_src_list",     "Set_param_list",   "Set_console_out",
    "Set_num_stream",      "SrcSet",           "Init(descriptor)", "Init(interval)",
    "Set_src_list(empty)", "TransmitNow(null)"};

bool IsLongRun() { return std::getenv("WAVEFILTERS_LONG_TESTS") != nullptr; }

constexpr int SignalLength = 300;

const DataFiles& Files() {
  static const DataFiles files(400.0);
  return files;
}

// A filter, its host, and what a host has to know: whether there is a source.
class Story {
 public:
  explicit Story(const Kind& kindOfFilter)
      : kind(kindOfFilter), params(UsefulParams(kind)), filter(kind) {
    host.Describe(SignalLength, 0.1, Files().Signal());
    host.stream.text = Files().Text(kind);
    lent.interval_ms = 0.1;
    lent.name = Files().Signal();
    lent.counted.references = 1;
  }

  void Do(Call call) {
    const FilterSlots& slots = filter.Slots();
    void* const self = filter.Object();
    switch (call) {
      case GetDescriptor:
        if (connected) filter.Length();
        break;
      case TransmitNow:
        if (connected || !NeedsSourceToPull(kind)) filter.Pull(buffer.data(), PullSize);
        break;
      case Dispose:
        filter.Dispose();
        connected = false;
        break;
      case EndOfSrc:
        filter.EndOfSrc();
        break;
      case EnableInPlace:
        slots.EnableInPlace(self, true);
        break;
      case Set_src_list:
        // One more than the kind wants: it gives that one back.
        filter.Attach(host, SourceCount(kind) + 1);
        connected = true;
        break;
      case Set_param_list:
        slots.Set_param_list(self, params.data(), static_cast<int>(params.size()));
        break;
      case Set_console_out:
        filter.Set_console_out(hasConsole ? nullptr : &host.console);
        hasConsole = !hasConsole;
        break;
      case Set_num_stream:
        filter.Set_num_stream(&host.stream);
        break;
      case SrcSet:
        if (connected) slots.SrcSet(self);
        break;
      case InitFrom:
        slots.InitFrom(self, &lent);
        break;
      case Init:
        slots.Init(self, 0.1);
        break;
      case Set_src_list_empty:
        filter.Attach(host, 0);
        connected = false;
        break;
      case Peek:
        if (Peeks(kind)) filter.Peek(PullSize);
        break;
      case CallCount:
        break;
    }
  }

  void End() {
    EXPECT_EQ(filter.Release(), 0U);
    EXPECT_TRUE(host.Balanced());
    EXPECT_EQ(lent.counted.references, 1);
    EXPECT_EQ(lent.counted.strayCalls, 0);
    EXPECT_EQ(buffer.back(), Untouched);
  }

 private:
  static constexpr int PullSize = 100;
  static constexpr float Untouched = 4711.0F;

  static std::array<float, PullSize + 1> FilledBuffer() {
    std::array<float, PullSize + 1> filled{};
    filled.back() = Untouched;
    return filled;
  }

  Kind kind;
  std::vector<double> params;
  PlainHost host;
  PlainDescriptor lent;
  PlainFilter filter;
  bool connected = false;
  bool hasConsole = false;
  std::array<float, PullSize + 1> buffer = FilledBuffer();
};

using Calls = std::vector<Call>;

std::string Text(const Calls& calls) {
  std::string text = "calls:";
  for (const Call call : calls) text += std::string(" ") + Names[call];
  return text;
}

void Tell(const Kind& kind, const Calls& calls) {
  const long before = LiveAllocations();
  {
    Story story(kind);
    for (const Call call : calls) story.Do(call);
    story.End();
  }
  EXPECT_EQ(LiveAllocations(), before) << "memory was not given back";
}

// The next of all sequences of this length over the first `letters` calls, as an odometer runs;
// false after the last. What stands ahead of `from` stays.
bool Turn(Calls& calls, std::size_t from, int letters) {
  for (std::size_t place = calls.size(); place-- > from;) {
    if (calls[place] + 1 < letters) {
      calls[place] = static_cast<Call>(calls[place] + 1);
      return true;
    }
    calls[place] = Call{};
  }
  return false;
}

// Every sequence of `length` calls behind those of `opening`; how many there are.
int TellAll(const Kind& kind, const Calls& opening, std::size_t length, int letters) {
  Calls calls = opening;
  calls.resize(opening.size() + length);
  int told = 0;
  do {
    Tell(kind, calls);
    ++told;
    if (testing::Test::HasFailure()) {
      ADD_FAILURE() << Text(calls);
      break;
    }
  } while (Turn(calls, opening.size(), letters));
  return told;
}

class Sequences : public testing::TestWithParam<Kind> {
 protected:
  // What this process makes once and keeps is made before anything is counted.
  void SetUp() override { Files(); }
};

INSTANTIATE_TEST_SUITE_P(Kinds, Sequences, testing::ValuesIn(support::Kinds), support::KindName);

TEST_P(Sequences, OfUpToThreeCallsGiveEverythingBack) {
  int told = 0;
  for (std::size_t length = 0; length <= 3; ++length) {
    told += TellAll(GetParam(), {}, length, CallCount);
    told += TellAll(GetParam(), {Set_num_stream, Set_src_list, TransmitNow}, length, CallCount);
  }
  EXPECT_EQ(told, 2 * (1 + 14 + 14 * 14 + 14 * 14 * 14));
}

// A quarter of a million sequences a kind take their time: ./check --matrix asks for them.
TEST_P(Sequences, OfUpToFiveOperationsGiveEverythingBackInTheLongRun) {
  constexpr int Operations = Init + 1;
  const std::size_t longest = IsLongRun() ? 5 : 2;
  int expected = 0;
  int told = 0;
  int ofThisLength = 1;
  for (std::size_t length = 0; length <= longest; ++length, ofThisLength *= Operations) {
    told += TellAll(GetParam(), {}, length, Operations);
    expected += ofThisLength;
  }
  EXPECT_EQ(told, expected);
}

}  // namespace
}  // namespace hardening
