// How time and memory grow with the length of a signal: a notch and the double rate over 1 s to
// 10 h at 22.05 kHz, by the library alone and by wavechain from file to file. One line of numbers
// for each; every run is a process of its own, so that its peak of memory is its own.

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "benches/data_files.h"
#include "benches/host.h"
#include "benches/signals.h"

namespace wavefilters::bench {
namespace {

constexpr int Rate = 22050;

void RunLibrary(int seconds) {
  const auto signal = Noise(65536);
  const auto notch = MakeFilter("FIRNotchI");
  Connect(*notch.Get(), {200.0}, {NewSource(signal, seconds * Rate, 1000.0 / Rate)});
  notch->AddRef();  // the reference that the next filter takes over
  const auto resampler = MakeFilter("ResampleI");
  Connect(*resampler.Get(), {1.0, 2.0}, {notch.Get()});
  PullAll(*resampler.Get());
}

void RunWavechain(const std::string& in, const std::string& out) {
  execl(WAVECHAIN, WAVECHAIN, "run", in.c_str(), out.c_str(), "--force", "-q", "--encoding",
        "pcm16", "-f", "FIRNotch 200", "-f", "ResampleBlackman down=1 up=2", nullptr);
}

// Runs `work` in a process of its own and prints what it took.
template <class Work>
void Measure(const char* what, int seconds, Work work) {
  const auto start = std::chrono::steady_clock::now();
  const pid_t child = fork();
  if (child == 0) {
    work();
    _exit(std::string(what) == "library" ? 0 : 1);  // an exec does not come back
  }
  int status = 0;
  rusage usage{};
  wait4(child, &status, 0, &usage);
  const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
  const double processor_s =
      static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
      1e-6 * static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec);
  if (child < 0 || status != 0) {
    std::fprintf(stderr, "lengths: %s failed at %d s\n", what, seconds);
    std::exit(1);
  }
  std::printf("%s %d %.4f %.4f %ld\n", what, seconds, wall.count(), processor_s, usage.ru_maxrss);
  std::fflush(stdout);
}

}  // namespace
}  // namespace wavefilters::bench

int main() {
  using namespace wavefilters::bench;
  for (const int seconds : {1, 10, 60, 600, 3600, 36000}) {
    Measure("library", seconds, [seconds] { RunLibrary(seconds); });
    const SilentRecording recording(seconds);
    const std::string out = recording.Path() + ".out.wav";
    Measure("wavechain", seconds, [&] { RunWavechain(recording.Path(), out); });
    std::filesystem::remove(out);
  }
  return 0;
}
