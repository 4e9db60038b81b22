#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <random>

#include "reference/fric_syn.h"
#include "reference/glot_syn.h"
#include "reference/pulse_syn.h"
#include "support/temp_folder.h"
#include "tracks/twin.h"
#include "voice/event_text.h"
#include "voice/random_numbers.h"
#include "voice/voice.h"

// Random event files, signals, pulls, deliveries and intervals: the sources beside their models,
// bit for bit and call for call.
namespace voice {
namespace {

using support::Noise;

int Among(int first, int last, std::mt19937& random) {
  return std::uniform_int_distribution<int>(first, last)(random);
}

double AnyInterval(std::mt19937& random) {
  const double intervals_ms[] = {
      1.0 / 8.0,  1.0 / 10.0, 1.0 / 16.0, 1000.0 / 22050.0,
      1.0 / 48.0, 1.0,        4.7,        std::exp2(Among(-12, 3, random))};
  return intervals_ms[Among(0, 7, random)];
}

std::vector<int> AnySizes(std::mt19937& random) {
  const int sizes[] = {1024, 8192, 4096, 4097, 3000, 20000, 512};
  std::vector<int> all;
  const int count = Among(1, 4, random);
  for (int i = 0; i < count; ++i) {
    all.push_back(Among(0, 2, random) > 0 ? sizes[Among(0, 6, random)] : Among(1, 9000, random));
  }
  return all;
}

tracks::SourceScript AnySource(double interval_ms, int length, std::mt19937& random) {
  tracks::SourceScript script;
  script.samples = Among(0, 3, random) == 0 ? support::Constant(length, -0.0F) : Noise(length, 5);
  script.interval_ms = interval_ms;
  if (Among(0, 1, random) == 0) script.deliver = support::InBlocksOf(AnySizes(random));
  return script;
}

template <class Model>
void ConnectGenerator(Model&, RandomNumbers&) {}
void ConnectGenerator(reference::FricSyn& model, RandomNumbers& numbers) {
  model.DrawFrom([&numbers] { return numbers.Next(); });
}

// A whole signal through a source and its model, on a host's stream or on one of their own.
template <class Model>
void RunSignal(const support::Kind& kind, const std::string& extension, unsigned seed) {
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  const double interval_ms = AnyInterval(random);
  const int length = Among(0, 30000, random);
  const std::string text = RandomEvents(kind, interval_ms, length, random);
  RandomNumbers numbers(seed);
  tracks::Twin<Model> twin(kind);
  ConnectGenerator(twin.Reference(), numbers);
  const support::TempFolder folder;
  tracks::SourceScript script = AnySource(interval_ms, length, random);
  if (Among(0, 3, random) == 0) {
    script.path = folder.Path("sig.wav");
    folder.Write("sig" + extension, text);
  } else {
    twin.Supply({{extension, text}});
  }
  twin.Attach(script);
  const Samples all = twin.PullAll(AnySizes(random));
  EXPECT_EQ(all.size(), static_cast<std::size_t>(length));
  twin.Release();
  EXPECT_EQ(std::rand(), numbers.Next());
  if (testing::Test::HasFailure()) std::puts(text.c_str());
}

// Slot 16 by itself: calls with any count that the buffer has room for, from anywhere.
template <class Model>
void RunApply(const support::Kind& kind, const std::string& extension, unsigned seed) {
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  const double interval_ms = AnyInterval(random);
  const int room = Among(1, 20000, random);
  RandomNumbers numbers(seed);
  tracks::Twin<Model> twin(kind);
  ConnectGenerator(twin.Reference(), numbers);
  twin.Supply({{extension, RandomEvents(kind, interval_ms, room, random)}});
  twin.Init(interval_ms);
  const int starts[] = {0, 0, 1, -1, 1000, -1000, 5000, INT_MAX, INT_MAX - 2000, INT_MIN};
  const int counts[] = {0, -1, INT_MIN, 1025, room, room, room};
  for (int call = 0; call < 6; ++call) {
    const int count = std::min(counts[Among(0, 6, random)], room);
    const int start = call == 0 ? Among(-2000, 2000, random) : starts[Among(0, 9, random)];
    twin.Apply(Noise(room, seed), count, start);
  }
  EXPECT_EQ(std::rand(), numbers.Next());
}

constexpr unsigned Runs = 120;

TEST(RandomEvents, GlotSynKeepsToItsModel) {
  for (unsigned seed = 1; seed <= Runs && !HasFailure(); ++seed) {
    RunSignal<reference::GlotSyn>(support::GlotSyn, ".gpl", seed);
  }
}

TEST(RandomEvents, FricSynKeepsToItsModel) {
  for (unsigned seed = 1; seed <= Runs && !HasFailure(); ++seed) {
    RunSignal<reference::FricSyn>(support::FricSyn, ".fla", seed);
  }
}

TEST(RandomEvents, PulseSynKeepsToItsModel) {
  for (unsigned seed = 1; seed <= Runs && !HasFailure(); ++seed) {
    RunSignal<reference::PulseSyn>(support::PulseSyn, ".gpm", seed);
  }
}

TEST(RandomApply, GlotSynKeepsToItsModel) {
  for (unsigned seed = 1; seed <= Runs && !HasFailure(); ++seed) {
    RunApply<reference::GlotSyn>(support::GlotSyn, ".gpl", seed);
  }
}

TEST(RandomApply, FricSynKeepsToItsModel) {
  for (unsigned seed = 1; seed <= Runs && !HasFailure(); ++seed) {
    RunApply<reference::FricSyn>(support::FricSyn, ".fla", seed);
  }
}

TEST(RandomApply, PulseSynKeepsToItsModel) {
  for (unsigned seed = 1; seed <= Runs && !HasFailure(); ++seed) {
    RunApply<reference::PulseSyn>(support::PulseSyn, ".gpm", seed);
  }
}

}  // namespace
}  // namespace voice
