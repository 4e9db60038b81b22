// The same signal in any pieces: pulls, deliveries and peeks of random sizes give the samples of
// one long pull. Short signals, very many splits.

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

#include "hardening/plain_filter.h"
#include "support/filter.h"

namespace hardening {
namespace {

using support::Samples;

// Samples of the signal, and how many ways of splitting it are tried.
struct Effort {
  int length;
  int splits;
};

// The track-driven kinds hold 4096 samples back, so their signals are longer; SetTrack's own file
// is read in blocks of 4096.
Effort EffortFor(const Kind& kind) {
  if (ReadsText(kind)) return {4700, 3000};
  if (Is(kind, support::SetTrack)) return {4700, 3000};
  return {400, 12000};
}

constexpr double Interval_ms = 0.1;

const DataFiles& Files() {
  static const DataFiles files(4700 * 1.2);
  return files;
}

class Random {
 public:
  explicit Random(std::uint32_t seed) : bits(seed) {}
  int Between(int low, int high) {
    return low + static_cast<int>(bits() % (static_cast<std::uint32_t>(high - low) + 1));
  }
  bool OneIn(int n) { return Between(1, n) == 1; }
  // Sizes of all orders up to `most` and a little beyond, 0 now and then.
  int Size(int most) {
    const int limit = OneIn(4) ? most + 50 : OneIn(2) ? most / 8 + 1 : most / 40 + 1;
    return Between(OneIn(8) ? 0 : 1, limit);
  }

 private:
  std::minstd_rand bits;
};

// A filter that has been set up; FricSyn's noise starts where it always does.
struct Session {
  explicit Session(const Kind& kindOfFilter) : kind(kindOfFilter), filter(kind) {
    host.Describe(EffortFor(kind).length, Interval_ms, Files().Signal());
    // The two sources of a pair end at different times.
    host.sources[1].length = 2 * host.sources[0].length / 3;
    host.stream.text = Files().Text(kind);
    filter.Set_param_list(UsefulParams(kind));
    if (ReadsText(kind)) filter.Set_num_stream(&host.stream);
    std::srand(1);
  }

  void Attach() { filter.Attach(host, SourceCount(kind)); }

  Kind kind;
  PlainHost host;
  PlainFilter filter;
};

// Whether a host goes by the announced length: the track never ends, and a pair may report its end
// while samples of the longer source wait.
bool EndsByLength(const Kind& kind) {
  return Is(kind, support::SetTrack) || SourceCount(kind) == 2;
}

// Collects what comes from one piece after the other; `next` says how many to ask for, of as many
// as are left at most.
template <class Next>
Samples Collect(Session& session, Next next) {
  const int most = EffortFor(session.kind).length;
  const bool byLength = EndsByLength(session.kind);
  Samples all;
  for (int calls = 0; byLength || !session.filter.EndOfSrc(); ++calls) {
    const int left = most - static_cast<int>(all.size());
    if (byLength && left <= 0) break;
    const int wanted = next();
    const Samples some = PullGuarded(session.filter, byLength ? std::min(wanted, left) : wanted);
    all.insert(all.end(), some.begin(), some.end());
    if (calls > 100000) {
      ADD_FAILURE() << "no end";
      break;
    }
  }
  return all;
}

Samples InOnePiece(const Kind& kind) {
  Session session(kind);
  session.Attach();
  return Collect(session, [&kind] { return EffortFor(kind).length; });
}

void SplitDeliveries(Random& random, PlainSource& source) {
  if (random.OneIn(4)) {
    return;
  }
  const int most = source.length;
  source.deliver = [&random, most](int) { return random.Size(most); };
}

Samples InRandomPieces(const Kind& kind, std::uint32_t seed) {
  Random random(seed);
  Session session(kind);
  for (PlainSource& source : session.host.sources) SplitDeliveries(random, source);
  session.Attach();
  const int most = EffortFor(kind).length;
  return Collect(session, [&] {
    const int wanted = random.Size(most);
    if (!Peeks(kind) || !random.OneIn(3)) {
      return wanted;
    }
    // What a peek foretells is there. It may also be the call that meets the end, behind which
    // there are zeros for whoever asks for more.
    const int foretold = session.filter.Peek(wanted);
    EXPECT_GE(foretold, 0);
    EXPECT_LE(foretold, wanted);
    EXPECT_EQ(session.filter.Peek(foretold), foretold);
    return foretold;
  });
}

class Splits : public testing::TestWithParam<Kind> {};

INSTANTIATE_TEST_SUITE_P(Kinds, Splits, testing::ValuesIn(support::Kinds), support::KindName);

TEST_P(Splits, GiveTheSamplesOfOnePull) {
  const Samples expected = InOnePiece(GetParam());
  ASSERT_FALSE(expected.empty());
  for (int split = 1; split <= EffortFor(GetParam()).splits; ++split) {
    const Samples actual = InRandomPieces(GetParam(), static_cast<std::uint32_t>(split));
    ASSERT_TRUE(support::SameBits(actual, expected)) << "split " << split;
    ASSERT_FALSE(HasFailure()) << "split " << split;
  }
}

TEST(SplitCounts, AreAHundredThousandAndMore) {
  int splits = 0;
  for (const Kind& kind : support::Kinds) splits += EffortFor(kind).splits;
  EXPECT_GE(splits, 100000);
}

}  // namespace
}  // namespace hardening
