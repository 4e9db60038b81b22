// A host that loads the library for every file it plays, and unloads it again.

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <memory>

#include "hardening/allocations.h"
#include "hardening/plain_filter.h"

namespace hardening {
namespace {

const DataFiles& Files() {
  static const DataFiles files(100.0);
  return files;
}

struct CloseLibrary {
  void operator()(void* library) const { EXPECT_EQ(dlclose(library), 0); }
};
using Library = std::unique_ptr<void, CloseLibrary>;

void RunOnce(const Kind& kind, void* library) {
  PlainHost host;
  host.Describe(1000, 0.1, Files().Signal());
  const auto entry = reinterpret_cast<EntryPoint>(dlsym(library, kind.entry));
  ASSERT_NE(entry, nullptr) << kind.entry;
  void* factory = nullptr;
  entry(&factory);
  const auto& slots = support::SlotsOf<FactorySlots>(factory);
  void* made = nullptr;
  slots.GetFilter(factory, &made);
  EXPECT_EQ(slots.Release(factory), 0U);
  PlainFilter filter(made);
  filter.Set_console_out(&host.console);
  filter.Attach(host, SourceCount(kind));
  std::array<float, 600> buffer{};
  filter.Pull(buffer.data(), static_cast<int>(buffer.size()));
  filter.Pull(buffer.data(), static_cast<int>(buffer.size()));
  EXPECT_EQ(filter.Release(), 0U);
  EXPECT_TRUE(host.Balanced());
}

void LoadRunAndUnload(int round) {
  const Library library(dlopen(support::LibraryPath().c_str(), RTLD_NOW | RTLD_LOCAL));
  ASSERT_NE(library, nullptr) << dlerror();
  RunOnce(support::Kinds[static_cast<std::size_t>(round) % support::Kinds.size()], library.get());
}

// Bytes of this process that are in memory. Sanitizers keep freed blocks back on purpose: there
// the count of live allocations has to do.
long ResidentBytes() {
  if (std::string(WAVEFILTERS_SANITIZE) != "") {
    return 0;
  }
  std::ifstream statm("/proc/self/statm");
  long total = 0;
  long resident = 0;
  statm >> total >> resident;
  EXPECT_GT(resident, 0);
  return resident * sysconf(_SC_PAGESIZE);
}

long OpenFiles() {
  long count = 0;
  for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    ++count;
  }
  return count;
}

struct Balance {
  long live = LiveAllocations();
  long files = OpenFiles();
  long resident = ResidentBytes();
};

TEST(Loading, TenThousandTimesLeavesNothingBehind) {
  Files();
  for (int round = 0; round < 1000 && !HasFailure(); ++round) LoadRunAndUnload(round);
  const Balance before;
  for (int round = 0; round < 10000 && !HasFailure(); ++round) LoadRunAndUnload(round);
  const Balance after;
  EXPECT_EQ(after.live, before.live);
  EXPECT_EQ(after.files, before.files);
  EXPECT_LT(after.resident - before.resident, 512 * 1024);
}

TEST(Loading, EndsWhenTheLastHandleIsClosed) {
  const std::string path = support::LibraryPath();
  LoadRunAndUnload(0);
  // Not loaded any more: nothing in it keeps it in the process.
  EXPECT_EQ(dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD), nullptr);
}

}  // namespace
}  // namespace hardening
