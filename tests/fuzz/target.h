#pragma once

#include <cstddef>
#include <cstdint>

// What each target defines: one run over the fuzzer's bytes. A difference or a broken promise ends
// the process. libFuzzer calls these, and so does the replay of inputs that were kept.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count);
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
