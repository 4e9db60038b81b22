#include <gtest/gtest.h>

#include "fuzz/target.h"

// Expectations that fail stop the run where they do, so that the fuzzer keeps the input.
extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  GTEST_FLAG_SET(break_on_failure, true);
  return 0;
}
