#include "frame/lifetime.h"

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace wavefilters
