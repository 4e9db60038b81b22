// Random pulls, peeks and deliveries: the samples never depend on them, and every call and count is
// the one that a plain model of the engine foretells.

#include <gtest/gtest.h>

#include <random>

#include "reference/block_engine.h"
#include "support/filter.h"

namespace {

using namespace support;

class Random {
 public:
  explicit Random(std::uint32_t seed) : bits(seed) {}

  int Between(int low, int high) { return std::uniform_int_distribution<int>(low, high)(bits); }
  int OneOf(const std::vector<int>& values) {
    return values[static_cast<std::size_t>(Between(0, static_cast<int>(values.size()) - 1))];
  }
  bool Chance(int percent) { return Between(1, 100) <= percent; }
  std::vector<int> Sizes(int low, int high) {
    std::vector<int> sizes(20);
    std::generate(sizes.begin(), sizes.end(), [&] { return Between(low, high); });
    return sizes;
  }

 private:
  std::mt19937 bits;
};

Samples Taps(const Kind& kind, int half) {
  return std::string(kind.entry) == FIRFilter.entry
             ? reference::HammingAverage(2 * half + 1)
             : reference::Notch(2 * half + 1, 2500.0, 0.5, 0.1 * 0.001);
}

class Splits : public testing::TestWithParam<Kind> {};

INSTANTIATE_TEST_SUITE_P(Kinds, Splits, testing::Values(FIRFilter, FIRNotch), KindName);

TEST_P(Splits, AnySplitIntoPullsAndDeliveriesGivesTheSameBits) {
  for (std::uint32_t seed = 0; seed < 60; ++seed) {
    Random random(seed);
    const int half = random.OneOf({1, 2, 3, 10, 64, 300});
    CallLog log;
    SourceMock source("source", log, Noise(random.Between(0, 4000), seed));
    source.deliver = InBlocksOf(random.Sizes(0, random.OneOf({3, 50, 9000})));
    Filter filter = MakeFilter(GetParam());
    filter.Set_param_list({static_cast<double>(half)});
    filter.Set_src_list(source);
    EXPECT_TRUE(SameBits(filter.PullAll(random.Sizes(0, random.OneOf({5, 500, 9000}))),
                         reference::Filtered(source.samples, Taps(GetParam(), half),
                                             static_cast<int>(source.samples.size()))))
        << "seed " << seed;
  }
}

TEST_P(Splits, TheWidestMarginsGiveTheSameBitsInAnySplit) {
  CallLog log;
  SourceMock source("source", log, Noise(9000));
  const Samples expected = reference::Filtered(source.samples, Taps(GetParam(), 2048), 9000);
  for (const auto& pulls : {std::vector<int>{9000}, {4096}, {1, 4095, 777}}) {
    source.position = 0;
    source.deliver = InBlocksOf({9000, 1, 4096});
    Filter filter = MakeFilter(GetParam());
    filter.Set_param_list({2048.0});
    filter.Set_src_list(source);
    EXPECT_TRUE(SameBits(filter.PullAll(pulls), expected));
  }
}

// One random session with a filter, beside the model.
class Session {
 public:
  Session(const Kind& filterKind, std::uint32_t seed)
      : random(seed), kind(filterKind), filter(MakeFilter(filterKind)) {
    Attach();
  }

  void Step() {
    const int count = random.OneOf({0, 1, 2, 3, -1, -7, -300, 100, 1000, 5000, 8192, 20000,
                                    random.Between(0, 300), random.Between(0, 300)});
    const int what = random.Between(1, 100);
    if (what <= 2) {
      Attach();
    } else if (what <= 4) {
      Detach();
    } else if (what <= 7) {
      ChangeMargins();
    } else if (what <= 30) {
      EXPECT_EQ(filter.Peek(count), engine.Prepare(count)) << "a peek for " << count;
    } else {
      EXPECT_TRUE(SameBits(filter.Pull(count), engine.Pull(count))) << "a pull of " << count;
    }
    EXPECT_EQ(log.Take(), std::exchange(expectedCalls, {}));
    EXPECT_EQ(filter.EndOfSrc(), engine.ended);
    log.Take();
  }

 private:
  void SetHalf() {
    half = random.OneOf({1, 1, 2, 3, 5, 16, 60, 200});
    filter.Set_param_list({static_cast<double>(half)});
  }

  void Attach() {
    SetHalf();
    const int length = random.OneOf({0, 1, 5, 100, 1000, 10000});
    const std::vector<int> sizes = random.Sizes(0, random.OneOf({2, 100, 10000}));
    sources.emplace_back("source", log, Noise(length, static_cast<std::uint32_t>(length + half)));
    sources.back().deliver = InBlocksOf(sizes);
    modelSource = {sources.back().samples, sizes, 0, 0, &expectedCalls};
    engine.Start(Taps(kind, half), &modelSource);
    filter.Set_src_list(sources.back());
    log.Take();
  }

  void Detach() {
    if (random.Chance(50)) {
      filter.Dispose();
    } else {
      filter.Set_src_list({});
    }
    engine.source = nullptr;
    log.Take();
  }

  void ChangeMargins() {
    SetHalf();
    filter.Init(0.1);
    engine.coef = Taps(kind, half);
    engine.margin = half;
  }

  Random random;
  Kind kind;
  int half = 0;
  CallLog log;
  std::list<SourceMock> sources;
  Calls expectedCalls;
  reference::BlockSource modelSource;
  reference::BlockEngine engine;
  Filter filter;
};

TEST_P(Splits, EveryCallIsTheOneThatTheModelForetells) {
  for (std::uint32_t seed = 0; seed < 120; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Session session(GetParam(), seed);
    for (int step = 0; step < 80 && !testing::Test::HasFailure(); ++step) {
      session.Step();
    }
  }
}

}  // namespace
