// A batch as a person sees it, and one that gets no process.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include "e2e/support/program.h"
#include "e2e/support/sound.h"
#include "support/samples.h"
#include "support/temp_folder.h"

namespace {

using e2e::Outcome;
using support::TempFolder;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

std::vector<std::string> BatchOf(const TempFolder& folder, int files, int jobs = 1) {
  std::vector<std::string> words = {"batch",           "--out",  folder.Path("out"),   "-f",
                                    "FIRFilter 20",    "--jobs", std::to_string(jobs), "--log",
                                    folder.Path("log")};
  for (int i = 0; i < files; ++i) {
    const std::string path = folder.Path(std::to_string(i) + ".wav");
    // Long enough for the line to be shown again after its tenth of a second.
    e2e::WriteSound(path, support::Noise(400000), 48000);
    words.push_back(path);
  }
  return words;
}

TEST(WavechainBatch, ShowsInATerminalHowFarItIsAndWhatTimeIsLeft) {
  const TempFolder folder;
  std::vector<std::string> words = BatchOf(folder, 30);
  const Outcome run = e2e::WavechainInTerminal(words);
  EXPECT_EQ(run.status, 0) << run.out;
  EXPECT_THAT(run.out,
              ContainsRegex("\\[#+\\.+\\] +[0-9]+ %  [0-9]+ of 30, [0-9]+:[0-9][0-9] left"));
  const std::size_t done = run.out.rfind("done   30 files made, 0 up to date");
  ASSERT_NE(done, std::string::npos) << run.out;
  EXPECT_LT(run.out.rfind("\r\x1b[K"), done);
  EXPECT_GT(run.out.rfind("\r\x1b[K"), run.out.rfind(" of 30"));

  words.emplace_back("-q");
  words.emplace_back("--force");
  EXPECT_EQ(e2e::WavechainInTerminal(words).out, "");
}

TEST(WavechainBatch, ShowsFailuresBesideTheBar) {
  const TempFolder folder;
  std::vector<std::string> words = BatchOf(folder, 20);
  words.insert(words.end() - 20, folder.Path("none.wav"));
  words.emplace_back("--keep-going");
  const Outcome run = e2e::WavechainInTerminal(words);
  EXPECT_EQ(run.status, 2);
  EXPECT_THAT(run.out, HasSubstr("none.wav: cannot be opened: No such file or directory"));
  EXPECT_THAT(run.out, HasSubstr(" of 21, 1 failed"));
  EXPECT_THAT(run.out, HasSubstr("wavechain: 1 of 21 files failed"));
}

TEST(WavechainBatch, ShowsNoBarElsewhere) {
  const TempFolder folder;
  const Outcome run = e2e::Wavechain(BatchOf(folder, 3));
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.err, Not(HasSubstr("[")));
}

TEST(WavechainBatch, SaysWhenNoProcessCanBeStarted) {
  const TempFolder folder;
  const Outcome run = e2e::Wavechain(BatchOf(folder, 1), {.variables = e2e::Fault("fork", EAGAIN)});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.err,
            "wavechain: no other process can be started: Resource temporarily unavailable; use "
            "fewer --jobs\n");
}

TEST(WavechainBatch, SaysWhenThereAreNoPipesForMoreProcesses) {
  const TempFolder folder;
  const Outcome run =
      e2e::Wavechain(BatchOf(folder, 8, 8), {.variables = e2e::Fault("pipe", EMFILE, 5)});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.err,
            "wavechain: no pipe for another process: Too many open files; use fewer --jobs\n");
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.Path("out"))) {
    EXPECT_THAT(entry.path().string(), Not(HasSubstr(".part")));
  }
}

}  // namespace
