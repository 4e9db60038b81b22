#include <gtest/gtest.h>

#include <cstdlib>

#include "fuzz/target.h"

namespace {

// Ends the process at an expectation that fails, by the signal of which the fuzzer knows that it is
// to keep the input: GoogleTest's own break is another one, and the input would be lost.
class AbortAtFailure : public testing::EmptyTestEventListener {
  void OnTestPartResult(const testing::TestPartResult& result) override {
    if (result.failed()) std::abort();
  }
};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  testing::UnitTest::GetInstance()->listeners().Append(new AbortAtFailure);  // which deletes it
  return 0;
}
