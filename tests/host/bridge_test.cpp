#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>

#include "host/bridge_source.h"
#include "host/make.h"
#include "support/samples.h"

namespace {

using support::operator+;
using support::SameBits;
using support::Samples;
using testing::ElementsAre;
using wavechain::BridgeSettings;
using wavechain::BridgeSource;
using wavechain::HostSource;
using wavechain::Make;
using wavechain::SignalInfo;
using wavefilters::IWaveFilterC;
using wavefilters::Ref;

// A filter that delivers given samples, in portions that the test settles.
class Upstream : public HostSource {
 public:
  int TransmitNow(float* buffer, int count, int& produced) override {
    requests.push_back(count);
    const int left = static_cast<int>(samples.size()) - at;
    const int came = std::min({count, left, portion(count)});
    std::copy_n(samples.begin() + at, std::max(came, 0), buffer);
    at += std::max(came, 0);
    produced = came + claimTooMany;
    return 0;
  }
  void Dispose() override { ++disposed; }
  bool EndOfSrc() override { return endsByItself && at == static_cast<int>(samples.size()); }
  void EnableInPlace(bool flag) override { hints.push_back(flag); }

  std::function<int(int)> portion = [](int count) { return count; };
  bool endsByItself = true;
  int claimTooMany = 0;
  int disposed = 0;
  std::vector<int> requests;
  std::vector<bool> hints;

 protected:
  explicit Upstream(Samples given) : HostSource({.name = "take.wav"}), samples(std::move(given)) {}
  ~Upstream() = default;

 private:
  Samples samples;
  int at = 0;
};

class Bridge : public testing::Test {
 protected:
  Ref<BridgeSource> Over(const Samples& samples, const BridgeSettings& settings) {
    upstream = Make<Upstream>(samples);
    const SignalInfo info = {.length = static_cast<std::int64_t>(samples.size()),
                             .interval_ms = 0.125,
                             .fullScale = 150.0,
                             .units = "mm",
                             .name = "take.wav"};
    return Make<BridgeSource>(Ref<IWaveFilterC>::Share(upstream.Get()), info, settings);
  }

  Ref<Upstream> upstream;
};

// Pulls until the end, and checks on the way what every source promises.
Samples PullAll(BridgeSource& bridge, const std::function<int()>& pull) {
  Samples all;
  while (!bridge.EndOfSrc()) {
    const int count = pull();
    Samples block(static_cast<std::size_t>(count) + 8, 99.0F);
    int produced = -1;
    bridge.TransmitNow(block.data(), count, produced);
    EXPECT_TRUE(produced == count || bridge.EndOfSrc());
    EXPECT_GT(produced, 0);
    EXPECT_EQ(block[static_cast<std::size_t>(count)], 99.0F);
    all.insert(all.end(), block.begin(), block.begin() + produced);
    if (produced <= 0) {
      break;
    }
  }
  EXPECT_EQ(bridge.Delivered(), static_cast<std::int64_t>(all.size()));
  return all;
}

TEST_F(Bridge, ForwardsEverySampleUnchanged) {
  const Samples noise = support::Noise(10000);
  for (const int pull : {1, 7, 4096, 20000}) {
    const auto bridge = Over(noise, {});
    EXPECT_TRUE(SameBits(PullAll(*bridge.Get(), [&] { return pull; }), noise));
  }
}

TEST_F(Bridge, MakesWholeDeliveriesOfShortOnes) {
  const Samples noise = support::Noise(5000);
  const auto bridge = Over(noise, {});
  upstream->portion = [calls = 0](int count) mutable {
    return ++calls % 3 == 0 ? 0 : count / 2 + 1;
  };
  EXPECT_TRUE(SameBits(PullAll(*bridge.Get(), [] { return 512; }), noise));
}

TEST_F(Bridge, TakesClaimsBeyondTheRequestAtTheBound) {
  const auto bridge = Over(support::Noise(100), {});
  upstream->claimTooMany = 1000;
  Samples block(60, 99.0F);
  int produced = -1;
  bridge->TransmitNow(block.data(), 50, produced);
  EXPECT_EQ(produced, 50);
  EXPECT_EQ(block[50], 99.0F);
  const auto other = Over(support::Noise(100), {});
  upstream->portion = [calls = 0](int count) mutable { return ++calls == 1 ? -5 : count; };
  other->TransmitNow(block.data(), 50, produced);
  EXPECT_EQ(produced, 50);
}

TEST_F(Bridge, RequestsOfNothingDoNotReachTheUpstream) {
  const auto bridge = Over(support::Noise(10), {.silence = 5});
  for (const int count : {0, -1, std::numeric_limits<int>::min()}) {
    int produced = -1;
    bridge->TransmitNow(nullptr, count, produced);
    EXPECT_EQ(produced, 0);
  }
  EXPECT_THAT(upstream->requests, ElementsAre());
}

TEST_F(Bridge, TheFirstRequestReachesAnUpstreamThatHasEndedAlready) {
  const auto bridge = Over({}, {});
  float sample = 7.0F;
  int produced = -1;
  EXPECT_TRUE(bridge->EndOfSrc());
  bridge->TransmitNow(&sample, 1, produced);
  bridge->TransmitNow(&sample, 1, produced);
  EXPECT_EQ(produced, 0);
  EXPECT_EQ(sample, 7.0F);
  EXPECT_THAT(upstream->requests, ElementsAre(1));
}

TEST_F(Bridge, CutsToALength) {
  const Samples noise = support::Noise(100);
  for (const int length : {0, 1, 99, 100, 101}) {
    const auto bridge = Over(noise, {.length = length});
    EXPECT_EQ(bridge->Info().length, std::min(length, 100));
    EXPECT_TRUE(SameBits(PullAll(*bridge.Get(), [] { return 7; }),
                         support::Slice(noise, 0, std::min(length, 100))));
  }
}

TEST_F(Bridge, NeverAsksForMoreThanTheCutLeaves) {
  const auto bridge = Over(support::Noise(100), {.length = 10});
  PullAll(*bridge.Get(), [] { return 8; });
  EXPECT_THAT(upstream->requests, ElementsAre(8, 2));
}

TEST_F(Bridge, EndsByLengthWhereTheUpstreamNeverDoes) {
  const Samples noise = support::Noise(100);
  const auto bridge = Over(noise, {.length = 60});
  upstream->endsByItself = false;
  EXPECT_TRUE(SameBits(PullAll(*bridge.Get(), [] { return 7; }), support::Slice(noise, 0, 60)));
}

TEST_F(Bridge, EndsByLengthAloneWhateverTheUpstreamSaysOfItsEnd) {
  // An upstream that reports its end and still has samples waiting.
  const Samples noise = support::Noise(100);
  class Early : public Upstream {
   public:
    bool EndOfSrc() override { return true; }

   protected:
    explicit Early(const Samples& given) : Upstream(given) {}
    ~Early() = default;
  };
  const auto early = Make<Early>(noise);
  const SignalInfo announced = {.length = 40, .interval_ms = 1.0};
  const auto bridge = Make<BridgeSource>(Ref<IWaveFilterC>::Share(early.Get()), announced,
                                         BridgeSettings{.length = 100, .endsByLengthAlone = true});
  EXPECT_EQ(bridge->Info().length, 100);
  EXPECT_TRUE(SameBits(PullAll(*bridge.Get(), [] { return 9; }), noise));
}

TEST_F(Bridge, AppendsSilenceBehindTheEnd) {
  const Samples noise = support::Noise(100);
  for (const int silence : {1, 50, 5000}) {
    const auto bridge = Over(noise, {.silence = silence});
    EXPECT_EQ(bridge->Info().length, 100 + silence);
    EXPECT_TRUE(
        SameBits(PullAll(*bridge.Get(), [] { return 64; }), noise + support::Constant(silence)));
  }
}

TEST_F(Bridge, SilenceFollowsTheCutAndStandsAloneAfterAnEmptySignal) {
  const Samples noise = support::Noise(100);
  const auto cut = Over(noise, {.length = 30, .silence = 20});
  EXPECT_TRUE(SameBits(PullAll(*cut.Get(), [] { return 8; }),
                       support::Slice(noise, 0, 30) + support::Constant(20)));
  const auto empty = Over({}, {.silence = 20});
  EXPECT_FALSE(empty->EndOfSrc());
  EXPECT_TRUE(SameBits(PullAll(*empty.Get(), [] { return 8; }), support::Constant(20)));
}

TEST_F(Bridge, AnySplitIntoPullsAndDeliveriesGivesTheSameSamples) {
  std::mt19937 random(1);
  const auto upTo = [&](int most) { return std::uniform_int_distribution<int>(1, most)(random); };
  for (int round = 0; round < 200; ++round) {
    const Samples noise = support::Noise(upTo(3000), static_cast<std::uint32_t>(round));
    const int length = upTo(4000);
    const int silence = upTo(500) - 1;
    const auto bridge = Over(noise, {.length = length, .silence = silence});
    upstream->portion = [&](int count) { return std::min(count, upTo(300) - 1); };
    const int kept = std::min(length, static_cast<int>(noise.size()));
    EXPECT_TRUE(SameBits(PullAll(*bridge.Get(), [&] { return upTo(700); }),
                         support::Slice(noise, 0, kept) + support::Constant(silence)));
  }
}

TEST_F(Bridge, RenamesTheSignalAndKeepsTheRest) {
  const auto bridge = Over(support::Noise(100), {.name = "private/1.x"});
  wavefilters::IWaveDescriptorC* descriptor = nullptr;
  bridge->GetDescriptor(&descriptor);
  const auto held = Ref<wavefilters::IWaveDescriptorC>::Adopt(descriptor);
  char name[512];
  descriptor->GetName(name, 512);
  EXPECT_STREQ(name, "private/1.x");
  EXPECT_EQ(descriptor->GetLength(), 100);
  EXPECT_EQ(bridge->Info().interval_ms, 0.125);
  EXPECT_EQ(bridge->Info().fullScale, 150.0);
  EXPECT_EQ(bridge->Info().units, "mm");
}

TEST_F(Bridge, ReadsWhatAFilterMadeOfItsDescriptor) {
  const auto bridge = Over(support::Noise(100), {});
  wavefilters::IWaveDescriptorC* descriptor = nullptr;
  bridge->GetDescriptor(&descriptor);
  const auto held = Ref<wavefilters::IWaveDescriptorC>::Adopt(descriptor);
  descriptor->SetUnits("mm/s");
  descriptor->SetRange(500.0);
  descriptor->SetPeriod(2.0);
  descriptor->SetLength(10);
  const SignalInfo amended = bridge->Read(*descriptor);
  EXPECT_EQ(amended.units, "mm/s");
  EXPECT_EQ(amended.fullScale, 500.0);
  EXPECT_EQ(amended.interval_ms, 2.0);
  EXPECT_EQ(amended.length, 10);
  // Of another's descriptor only what the interface can be asked for.
  const auto foreign = Make<wavechain::SignalDescriptor>(
      SignalInfo{.length = 5, .interval_ms = 4.0, .fullScale = 9.0, .units = "V", .name = "x"});
  const SignalInfo read = bridge->Read(*foreign.Get());
  EXPECT_EQ(read.length, 5);
  EXPECT_EQ(read.interval_ms, 4.0);
  EXPECT_EQ(read.units, "mm");
  EXPECT_EQ(read.fullScale, 150.0);
}

TEST_F(Bridge, ForwardsTheInPlaceHintAndDispose) {
  const auto bridge = Over(support::Noise(10), {});
  bridge->EnableInPlace(true);
  bridge->EnableInPlace(false);
  EXPECT_THAT(upstream->hints, ElementsAre(true, false));
  EXPECT_FALSE(bridge->EndOfSrc());
  bridge->Dispose();
  bridge->Dispose();
  EXPECT_EQ(upstream->disposed, 1);
  EXPECT_EQ(upstream->AddRef(), 2U);  // the test's own reference is the only one left
  upstream->Release();
  EXPECT_TRUE(bridge->EndOfSrc());
  bridge->EnableInPlace(true);
  float sample = 7.0F;
  int produced = -1;
  bridge->TransmitNow(&sample, 1, produced);
  EXPECT_EQ(produced, 0);
}

TEST_F(Bridge, GivesUpOnAnUpstreamThatNeitherDeliversNorEnds) {
  const auto bridge = Over(support::Noise(10), {.silence = 3});
  upstream->portion = [](int) { return 0; };
  float samples[8] = {9, 9, 9, 9, 9, 9, 9, 9};
  int produced = -1;
  bridge->TransmitNow(samples, 8, produced);
  EXPECT_TRUE(bridge->Stalled());
  EXPECT_TRUE(bridge->EndOfSrc());
}

}  // namespace
