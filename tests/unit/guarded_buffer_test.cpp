// The room that all tests give the library to write in: whoever leaves it is caught.

#include "support/guarded_buffer.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <cstdlib>

namespace {

using support::GuardedBuffer;

TEST(GuardedBuffer, EndsWhereNobodyMayRead) {
  for (const int room : {0, 1, 1023, 1024, 1025}) {
    GuardedBuffer buffer(room);
    const volatile float* const behind = buffer.data() + room;
    EXPECT_DEATH(static_cast<void>(*behind), "") << room;
  }
}

TEST(GuardedBuffer, TellsWhatWasWrittenBesideWhatWasAnnounced) {
  GuardedBuffer buffer(5);
  buffer.CheckAfter(0);
  buffer.data()[0] = 1.0F;
  buffer.data()[4] = 1.0F;
  buffer.CheckAfter(5);
  EXPECT_NONFATAL_FAILURE(buffer.CheckAfter(4), "sample 4 was written");
  EXPECT_NONFATAL_FAILURE(buffer.CheckAfter(0), "sample 0 was written");
}

// AddressSanitizer ends the process at the write itself.
TEST(GuardedBuffer, TellsOrEndsWhereTheZoneBeforeItIsWritten) {
  const auto write = [] {
    GuardedBuffer buffer(5);
    *(static_cast<volatile float*>(buffer.data()) - 1) = 1.0F;
    buffer.CheckAfter(5);
    if (testing::Test::HasFailure()) std::abort();
  };
  EXPECT_DEATH(write(), "");
}

TEST(GuardedBuffer, IsNewEachTime) {
  for (int i = 0; i < 3; ++i) {
    GuardedBuffer buffer(2000);
    buffer.CheckAfter(0);
    buffer.data()[i] = 1.0F;
  }
}

}  // namespace
