#include "frame/lifetime.h"

#include <gtest/gtest.h>

#include "frame/ref.h"
#include "frame/unknown.h"

namespace wavefilters {
namespace {

// Notes its end.
class Probe : public TUnknown {
 public:
  explicit Probe(bool& flag) : ended(&flag) {}

 protected:
  ~Probe() { *ended = true; }

 private:
  bool* ended;
};

TEST(Heap, EndsWithItsLastRelease) {
  bool ended = false;
  auto* probe = new Heap<Probe>(ended);
  EXPECT_EQ(probe->AddRef(), 1U);
  EXPECT_EQ(probe->AddRef(), 2U);
  EXPECT_EQ(probe->Release(), 1U);
  EXPECT_FALSE(ended);
  EXPECT_EQ(probe->Release(), 0U);
  EXPECT_TRUE(ended);
}

TEST(Heap, EndsWithAReleaseThatNoReferencePrecedes) {
  bool ended = false;
  auto* probe = new Heap<Probe>(ended);
  EXPECT_EQ(probe->Release(), 0U);
  EXPECT_TRUE(ended);
}

TEST(Embedded, CountsAndEndsWithItsOwner) {
  bool ended = false;
  {
    Embedded<Probe> probe(ended);
    EXPECT_EQ(probe.AddRef(), 1U);
    EXPECT_EQ(probe.AddRef(), 2U);
    EXPECT_EQ(probe.Release(), 1U);
    EXPECT_EQ(probe.Release(), 0U);
    EXPECT_EQ(probe.Release(), 0U) << "below 0 there is nothing left, either";
    EXPECT_FALSE(ended);
  }
  EXPECT_TRUE(ended);
}

TEST(Ref, ReleasesWhatItHeldWhenItTakesAnother) {
  bool firstEnded = false;
  bool secondEnded = false;
  auto ref = Ref<Probe>::Share(new Heap<Probe>(firstEnded));
  ref = Ref<Probe>::Share(new Heap<Probe>(secondEnded));
  EXPECT_TRUE(firstEnded);
  EXPECT_FALSE(secondEnded);
  auto& itself = ref;
  ref = std::move(itself);
  EXPECT_FALSE(secondEnded) << "moved to itself it keeps what it holds";
  ref.Reset();
  EXPECT_TRUE(secondEnded);
  EXPECT_FALSE(ref);
}

TEST(Ref, SharesAndAdoptsAndHandsOut) {
  bool ended = false;
  Embedded<Probe> probe(ended);
  {
    const auto shared = Ref<Probe>::Share(&probe);
    probe.AddRef();
    auto adopted = Ref<Probe>::Adopt(&probe);
    EXPECT_EQ(adopted.Get(), &probe);
    EXPECT_EQ(probe.AddRef(), 3U);
    EXPECT_EQ(adopted.Detach(), &probe);
    EXPECT_FALSE(adopted);
  }
  EXPECT_EQ(probe.Release(), 1U);
  EXPECT_EQ(probe.Release(), 0U);
  EXPECT_FALSE(Ref<Probe>::Share(nullptr));
}

}  // namespace
}  // namespace wavefilters
