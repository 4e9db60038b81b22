#include "host/out_of_memory.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <new>
#include <stdexcept>
#include <string>

#include "host/unfinished.h"

namespace wavechain {
namespace {

namespace fs = std::filesystem;

constexpr const char* Line = "^wavechain: out of memory; no output was left unfinished";

void DoWithoutThrowing(const std::function<void()>& what) noexcept { what(); }

template <class Error>
[[noreturn]] void FailUnderWatch(const Error& error) {
  const LackOfMemory watch;
  DoWithoutThrowing([&] { throw error; });
  std::abort();
}

[[noreturn]] void ExitUnderWatch() {
  const LackOfMemory watch;
  std::exit(1);
}

[[noreturn]] void ExitBehindWatch() {
  { const LackOfMemory watch; }
  std::exit(1);
}

// A folder with a folder and two files in it, gone at the end.
class Tree {
 public:
  Tree() : path(testing::TempDir() + "/wavechain-tree-XXXXXX") {
    EXPECT_NE(::mkdtemp(path.data()), nullptr);
    fs::create_directory(path + "/folder");
    std::ofstream(path + "/file") << "file";
    std::ofstream(path + "/folder/file") << "file";
    fs::create_symlink(testing::TempDir(), path + "/folder/link");
  }
  ~Tree() { fs::remove_all(path); }
  Tree(const Tree&) = delete;
  Tree& operator=(const Tree&) = delete;

  const std::string& Path() const { return path; }

 private:
  std::string path;
};

[[noreturn]] void FailWithTemporary(const std::string& path) {
  const TemporaryPath temporary(path);
  FailUnderWatch(std::bad_alloc());
}

TEST(LackOfMemoryDeathTest, EndsTheProgramInOrderWhereNobodyCanBeTold) {
  EXPECT_EXIT(FailUnderWatch(std::bad_alloc()), testing::ExitedWithCode(2), Line);
  EXPECT_EXIT(FailUnderWatch(std::bad_array_new_length()), testing::ExitedWithCode(2), Line);
}

TEST(LackOfMemoryDeathTest, LeavesOtherEndsAsTheyAre) {
  EXPECT_EXIT(FailUnderWatch(std::runtime_error("of another kind")),
              testing::KilledBySignal(SIGABRT), "");
  EXPECT_EXIT(FailUnderWatch(1), testing::KilledBySignal(SIGABRT), "");
}

TEST(LackOfMemoryDeathTest, TakesALibrarysExitForWantOfMemoryWhileItLives) {
  EXPECT_EXIT(ExitUnderWatch(), testing::ExitedWithCode(2), Line);
  EXPECT_EXIT(ExitBehindWatch(), testing::ExitedWithCode(1), "");
}

TEST(LackOfMemory, KnowsOfStreamsThatKeepItToThemselves) {
  const LackOfMemory watch;
  RequireMemory();
  EXPECT_FALSE(MemoryHasFailed());
  // As operator new does where it fails.
  EXPECT_THROW(std::get_new_handler()(), std::bad_alloc);
  EXPECT_TRUE(MemoryHasFailed());
  EXPECT_THROW(RequireMemory(), std::bad_alloc);
  const LackOfMemory another;
  EXPECT_FALSE(MemoryHasFailed());
}

TEST(UnfinishedDeathTest, GoesWithTheProcess) {
  const Tree tree;
  EXPECT_EXIT(FailWithTemporary(tree.Path()), testing::ExitedWithCode(2), Line);
  EXPECT_FALSE(fs::exists(tree.Path()));
}

TEST(UnfinishedDeathTest, IsLeftToTheProcessThatMadeIt) {
  const Tree tree;
  const TemporaryPath temporary(tree.Path());
  EXPECT_EXIT(FailUnderWatch(std::bad_alloc()), testing::ExitedWithCode(2), Line);
  EXPECT_TRUE(fs::exists(tree.Path() + "/folder/file"));
}

TEST(Unfinished, IsAbandonedOnlyWhileItLives) {
  const Tree ended;
  const Tree first;
  const Tree second;
  std::string none;
  const TemporaryPath one(first.Path());
  const TemporaryPath nothing(none);
  { const TemporaryPath gone(ended.Path()); }
  const TemporaryPath other(second.Path());
  Unfinished::AbandonAll();
  EXPECT_TRUE(fs::exists(ended.Path()));
  EXPECT_FALSE(fs::exists(first.Path()));
  EXPECT_FALSE(fs::exists(second.Path()));
  EXPECT_TRUE(fs::exists(testing::TempDir()));
}

}  // namespace
}  // namespace wavechain
