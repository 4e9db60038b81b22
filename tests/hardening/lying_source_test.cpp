// Sources that do not keep to what a source has to do: nothing is written outside a buffer, nothing
// hangs, and everything is given back.

#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <stdexcept>

#include "hardening/allocations.h"
#include "hardening/plain_filter.h"
#include "support/filter.h"
#include "support/guarded_buffer.h"

namespace hardening {
namespace {

constexpr int SignalLength = 9000;
constexpr int LargestInt = std::numeric_limits<int>::max();
constexpr int SmallestInt = std::numeric_limits<int>::min();

const DataFiles& Files() {
  static const DataFiles files(SignalLength * 0.1);
  return files;
}

using Lie = std::function<int(int wanted, int written)>;

struct Scene {
  explicit Scene(const Kind& kindOfFilter) : kind(kindOfFilter), filter(kind) {
    host.Describe(SignalLength, 0.1, Files().Signal());
    filter.Set_param_list(UsefulParams(kind));
    filter.Set_console_out(&host.console);
  }

  void Attach() { filter.Attach(host, SourceCount(kind)); }

  void PullSomeOfAllSizes() {
    for (const int count : {100, 1, 0, 5000, 8192, 20000, -1, -9000, 700, SmallestInt}) {
      if (Peeks(kind)) filter.Peek(count);
      Pull(count);
    }
  }

  int Pull(int count) { return PullFromLiars(kind, filter, count); }

  Kind kind;
  PlainHost host;
  PlainFilter filter;
};

class LyingSources : public testing::TestWithParam<Kind> {
 protected:
  void SetUp() override { Files(); }

  // Runs a scene with sources that were given their lines, and looks at what is left.
  template <class Prepare, class Play>
  void Act(Prepare prepare, Play play) {
    const long before = LiveAllocations();
    {
      Scene scene(GetParam());
      for (PlainSource& source : scene.host.sources) prepare(source);
      scene.Attach();
      play(scene);
      EXPECT_EQ(scene.filter.Release(), 0U);
      EXPECT_TRUE(scene.host.Balanced());
    }
    EXPECT_EQ(LiveAllocations(), before) << "memory was not given back";
  }

  void Claim(const Lie& lie) {
    Act([&lie](PlainSource& source) { source.claim = lie; },
        [](Scene& scene) {
          scene.PullSomeOfAllSizes();
          scene.PullSomeOfAllSizes();
        });
  }
};

INSTANTIATE_TEST_SUITE_P(Kinds, LyingSources, testing::ValuesIn(support::Kinds), support::KindName);

TEST_P(LyingSources, MayClaimMoreThanTheyWereAskedFor) {
  for (const int more : {1, 50, 8192, 1000000, LargestInt / 2}) {
    SCOPED_TRACE("more " + std::to_string(more));
    Claim([more](int wanted, int) { return std::max(wanted, 0) + more; });
  }
  Claim([](int, int) { return LargestInt; });
}

TEST_P(LyingSources, MayClaimNegativeCounts) {
  for (const int claimed : {-1, -100, -8192, -1000000, SmallestInt}) {
    SCOPED_TRACE("claimed " + std::to_string(claimed));
    Claim([claimed](int, int) { return claimed; });
  }
}

TEST_P(LyingSources, MayClaimWhatComesToTheirMind) {
  for (unsigned seed = 1; seed <= 50; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::minstd_rand random(seed);
    Claim([&random](int wanted, int written) {
      switch (random() % 4) {
        case 0:
          return static_cast<int>(random() % 20000) - 5000;
        case 1:
          return random() % 2 == 0 ? LargestInt : SmallestInt;
        case 2:
          return wanted;
        default:
          return written;
      }
    });
  }
}

TEST_P(LyingSources, MayDeliverNothingForEver) {
  const auto nothing = [](PlainSource& source) {
    source.deliver = [](int) { return 0; };
    source.ends = [] { return false; };
  };
  Act(nothing, [](Scene& scene) {
    for (int i = 0; i < 1000; ++i) {
      // A track comes from its file alone.
      ASSERT_TRUE(scene.Pull(1000) == 0 || Is(scene.kind, support::SetTrack));
    }
  });
}

TEST_P(LyingSources, MayChangeTheirMindAboutTheEnd) {
  for (unsigned seed = 1; seed <= 50; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::minstd_rand random(seed);
    Act([&random](PlainSource& source) { source.ends = [&random] { return random() % 3 == 0; }; },
        [](Scene& scene) { scene.PullSomeOfAllSizes(); });
  }
}

TEST_P(LyingSources, MayThrow) {
  for (int calls = 0; calls < 4; ++calls) {
    SCOPED_TRACE("after " + std::to_string(calls) + " calls");
    int left = calls;
    int thrown = 0;
    Act(
        [&left, &thrown](PlainSource& source) {
          source.before = [&left, &thrown] {
            if (left-- == 0) {
              ++thrown;
              throw std::range_error("a source of a careless host");
            }
          };
        },
        [&thrown](Scene& scene) {
          int caught = 0;
          for (int i = 0; i < 20; ++i) {
            support::GuardedBuffer buffer(1000);
            int produced = 0;
            try {
              produced = scene.filter.Pull(buffer.data(), 1000);
            } catch (const std::range_error&) {
              // It passes as it is. What has been written until then is within the room.
              ++caught;
              produced = 1000;
            }
            buffer.CheckAfter(produced);
          }
          EXPECT_EQ(caught, thrown);
          scene.filter.Dispose();
          EXPECT_EQ(scene.host.sources[0].disposed, 1);
        });
    EXPECT_EQ(thrown, Is(GetParam(), support::SetTrack) ? 0 : 1);
  }
}

}  // namespace
}  // namespace hardening
