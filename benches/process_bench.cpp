// Whole programs, from their start to their end: a notch and the double rate over 20 s of a
// recording, by wavechain and by sox.

#include <benchmark/benchmark.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <chrono>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

#include "benches/data_files.h"
#include "benches/suites.h"

extern char** environ;

namespace wavefilters::bench {
namespace {

using Words = std::vector<std::string>;

int RunProgram(Words words) {
  std::vector<char*> arguments;
  for (std::string& word : words) {
    arguments.push_back(word.data());
  }
  arguments.push_back(nullptr);
  pid_t child = 0;
  if (posix_spawnp(&child, arguments[0], nullptr, nullptr, arguments.data(), environ) != 0) {
    return -1;
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

double Processor_s() {
  rusage usage{};
  getrusage(RUSAGE_CHILDREN, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

void Run(benchmark::State& state, const Words& words) {
  const double before_s = Processor_s();
  for (auto _ : state) {
    const auto start = std::chrono::steady_clock::now();
    if (RunProgram(words) != 0) {
      state.SkipWithError((words[0] + " failed").c_str());
      break;
    }
    state.SetIterationTime(
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
  }
  state.counters["processor_ms"] =
      1e3 * (Processor_s() - before_s) / static_cast<double>(state.iterations());
  state.SetItemsProcessed(state.iterations());
}

}  // namespace

void RegisterProcesses() {
  const std::string in = Data().Recording();
  const Words ours = {WAVECHAIN, "run",          in,           Data().File("wavechain.wav"),
                      "--force", "-q",           "--encoding", "pcm16",
                      "-f",      "FIRNotch 200", "-f",         "ResampleBlackman down=1 up=2"};
  const Words sox = {
      "sox", in, Data().File("sox.wav"), "sinc", "-n", "401", "2600-2400", "rate", "-h", "44100"};
  benchmark::RegisterBenchmark("process/20_s/wavechain", Run, ours)->UseManualTime();
  benchmark::RegisterBenchmark("process/20_s/sox", Run, sox)->UseManualTime();
}

}  // namespace wavefilters::bench
