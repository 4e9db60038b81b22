// Runs a target over inputs that were kept: the files given, and those in folders given.

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "fuzz/target.h"

namespace {

void Run(const std::filesystem::path& file) {
  std::printf("%s\n", file.c_str());
  std::fflush(stdout);
  std::ifstream stream(file, std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  // Exactly as long as it is, for the sanitizers to see what lies beyond.
  const std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
  LLVMFuzzerTestOneInput(input.data(), input.size());
}

}  // namespace

int main(int argc, char** argv) {
  LLVMFuzzerInitialize(&argc, &argv);
  int runs = 0;
  for (int i = 1; i < argc; ++i) {
    if (!std::filesystem::is_directory(argv[i])) {
      Run(argv[i]), ++runs;
      continue;
    }
    for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
      Run(entry.path()), ++runs;
    }
  }
  if (runs == 0) std::fputs("there is no input to run\n", stderr);
  return runs == 0 ? 1 : 0;
}
