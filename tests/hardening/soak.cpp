// Signals of a day and longer through every kind: as many samples as the kind promises, right ones
// wherever one knows what is right, and no more memory at the end than at the beginning.
//
//   soak SECONDS [crossing]     so much signal at 10 kHz; then, if wanted, past sample 2^31

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include "hardening/plain_filter.h"
#include "hardening/soak_judge.h"

namespace hardening {
namespace {

constexpr int PullSize = 16384;

// Makes a source give the first `total` samples of the signal.
class Feed {
 public:
  Feed(PlainSource& source, int which, std::int64_t samples) : total(samples) {
    for (int i = 0; i < Period; ++i) cycle.push_back(Input(which, i));
    source.before = [&source] { source.position = 0; };
    source.deliver = [this](int wanted) {
      return static_cast<int>(std::min<std::int64_t>(wanted, total - given));
    };
    source.fill = [this](float* buffer, int count) {
      while (count > 0) {
        const auto at = static_cast<int>(given % Period);
        const int piece = std::min(count, Period - at);
        buffer = std::copy_n(cycle.begin() + at, piece, buffer);
        count -= piece;
        given += piece;
      }
    };
    source.ends = [this] { return given >= total; };
  }
  Feed(const Feed&) = delete;
  Feed& operator=(const Feed&) = delete;

 private:
  std::vector<float> cycle;
  std::int64_t total;
  std::int64_t given = 0;
};

long ResidentKiB() {
  std::ifstream statm("/proc/self/statm");
  long total = 0;
  long resident = 0;
  statm >> total >> resident;
  return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

// Memory at a tenth of the signal and at each quarter from there on.
class MemoryWatch {
 public:
  explicit MemoryWatch(std::int64_t samples) : total(samples), next(samples / 10) {}

  void At(std::int64_t index) {
    if (index < next) return;
    next = next < total / 4 ? total / 4 : next + total / 4;
    last = ResidentKiB();
    if (first == 0) first = last;
    most = std::max(most, last);
  }

  long first = 0;
  long last = 0;
  long most = 0;

 private:
  std::int64_t total;
  std::int64_t next;
};

// SetTrack goes on for as long as it is asked.
bool EndsByLength(const Kind& kind) { return Is(kind, support::SetTrack); }

void CheckLength(const Story& story, std::int64_t produced) {
  if (EndsByLength(story.kind)) {
    EXPECT_GE(produced, story.samples);
  } else if (Is(story.kind, support::Resample)) {
    EXPECT_NEAR(static_cast<double>(produced), static_cast<double>(story.samples) * 2.0 / 3.0, 2.0);
  } else {
    EXPECT_EQ(produced, story.samples) << story.kind;
  }
}

void CheckMemory(const Story& story, const MemoryWatch& memory) {
  // A sanitizer keeps freed blocks back on purpose, and a short signal ends before all is warm.
  constexpr long Bound_KiB = 256;
  if (std::string(WAVEFILTERS_SANITIZE) == "" && story.samples > 10000000) {
    EXPECT_LE(memory.most - memory.first, Bound_KiB) << story.kind;
  }
}

void RunThrough(const Story& story, PlainFilter& filter, Judge& judge, MemoryWatch& memory) {
  std::vector<float> buffer(PullSize);
  int empty = 0;
  while (!filter.EndOfSrc() && !(EndsByLength(story.kind) && judge.Produced() >= story.samples)) {
    const int count = filter.Pull(buffer.data(), PullSize);
    ASSERT_GE(count, 0);
    ASSERT_LE(count, PullSize);
    if (count > 0) judge.Look(buffer.data(), count);
    empty = count > 0 ? 0 : empty + 1;
    ASSERT_LT(empty, 10000) << story.kind << ": nothing comes any more, and yet there is no end";
    memory.At(judge.Produced());
    if (testing::UnitTest::GetInstance()->Failed()) return;
  }
}

void Run(const Story& story) {
  const SoakData data(story.kind, story.dense);
  PlainHost host;
  host.Describe(std::numeric_limits<int>::max(), story.interval_ms, data.Signal());
  const Feed first(host.sources[0], 0, story.samples);
  const Feed second(host.sources[1], 1, story.samples);
  Judge judge(story);
  MemoryWatch memory(story.samples);
  const auto start = std::chrono::steady_clock::now();
  {
    PlainFilter filter(story.kind);
    filter.Set_param_list(story.params);
    filter.Set_console_out(&host.console);
    filter.Attach(host, SourceCount(story.kind));
    RunThrough(story, filter, judge, memory);
  }
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
  CheckLength(story, judge.Produced());
  CheckMemory(story, memory);
  EXPECT_TRUE(host.Balanced()) << story.kind;
  std::printf("%-12s %12lld samples %7.1f s  %8ld KiB, %ld at the end\n", story.kind.entry,
              static_cast<long long>(judge.Produced()), took.count(), memory.first, memory.last);
  std::fflush(stdout);
}

std::vector<double> Params(const Kind& kind) {
  // The one column that there is.
  return Is(kind, support::BeamPel) ? std::vector<double>{1} : UsefulParams(kind);
}

Story Long(const Kind& kind, double seconds) {
  return {kind,
          Params(kind),
          static_cast<std::int64_t>(seconds * 10000.0),
          0.1,
          {0.0, seconds * 1000.0}};
}

// Past the largest sample index of 32 bits, with data before, at and behind it.
Story Crossing(const Kind& kind) {
  constexpr std::int64_t Samples = LargestIndex + 4000000;
  constexpr double Index = static_cast<double>(LargestIndex);
  std::vector<double> params = Params(kind);
  if (Is(kind, support::FIRFilter) || Is(kind, support::FIRNotch)) {
    // A kernel of three coefficients: under sanitizers a longer one takes an hour.
    params[0] = 2;
  }
  if (Is(kind, support::BeamPel) || Is(kind, support::BeamData)) {
    // As few records as can be: 981 samples each, near the 1024 up to which they are held whole.
    return {kind, params, Samples, 0.007, {0.0, Index * 0.007 + 5000.0}};
  }
  if (ReadsText(kind)) {
    return {kind, params, Samples, 0.1, {Index * 0.1 - 2000.0, Index * 0.1 + 2000.0}};
  }
  return {kind, params, Samples, 0.1, {0.0, 3600000.0}};
}

}  // namespace
}  // namespace hardening

int main(int argc, char** argv) {
  const double seconds = argc > 1 ? std::atof(argv[1]) : 0.0;
  const bool crossing = argc == 3 && std::strcmp(argv[2], "crossing") == 0;
  if (!(seconds > 0.0) || argc > 3 || (argc == 3 && !crossing)) {
    std::fputs("soak SECONDS [crossing]\n", stderr);
    return 2;
  }
  for (const support::Kind& kind : support::Kinds) {
    hardening::Run(hardening::Long(kind, seconds));
    if (crossing) hardening::Run(hardening::Crossing(kind));
    if (testing::UnitTest::GetInstance()->Failed()) return 1;
  }
}
