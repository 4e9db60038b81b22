#include "host/batch.h"

#include <sched.h>

#include <algorithm>
#include <filesystem>
#include <set>

#include "host/batch_files.h"
#include "host/batch_report.h"
#include "host/failure.h"
#include "host/interrupt.h"
#include "host/leftovers.h"
#include "host/text.h"
#include "host/workers.h"

namespace wavechain {
namespace {

constexpr int MostJobs = 1024;

void RequireSense(const BatchRequest& request) {
  if (request.manifest && !request.inputs.empty()) {
    Fail(ExitStatus::Usage, "'{}' stands beside --manifest; name files or a manifest, not both",
         request.inputs.front());
  }
  if (request.jobs < 0 || request.jobs > MostJobs) {
    Fail(ExitStatus::Usage, "--jobs {}: takes 1 to {}, or 0 for one for each processor",
         request.jobs, MostJobs);
  }
  if (request.folder.empty()) {
    Fail(ExitStatus::Usage, "--out '': names no folder");
  }
  if (request.run.rate && !request.run.type) {
    Fail(ExitStatus::Usage,
         "--rate goes with -t; a recording's rate is changed by -f \"ResampleBlackman rate={}\"",
         NumberText(*request.run.rate));
  }
}

// As many as this process may use.
int Processors() {
  cpu_set_t set = {};
  return ::sched_getaffinity(0, sizeof set, &set) == 0 ? std::max(CPU_COUNT(&set), 1) : 1;
}

std::string FolderOf(const BatchFile& file) {
  return std::filesystem::path(file.output).parent_path().string();
}

std::set<std::string> Folders(const std::vector<BatchFile>& files) {
  std::set<std::string> folders;
  for (const BatchFile& file : files) {
    folders.insert(FolderOf(file));
  }
  return folders;
}

void MakeFolder(const std::string& folder) {
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  if (!error && !std::filesystem::is_directory(folder)) {
    error = std::make_error_code(std::errc::not_a_directory);
  }
  if (error) {
    Fail(ExitStatus::Output, "--out {}: cannot be made: {}", folder, SystemText(error.value()));
  }
}

void RunAll(const BatchRequest& request, const std::vector<BatchFile>& files,
            const ChainSet& chains, const FilterLibrary& library, BatchReport& report) {
  constexpr int Patience_ms = 100;
  const auto jobs = static_cast<std::size_t>(request.jobs > 0 ? request.jobs : Processors());
  Workers workers;
  for (std::size_t next = 0;;) {
    const bool goesOn = !Interrupted() && (request.keepGoing || !report.HasFailed());
    if (goesOn && next < files.size() && workers.Count() < jobs) {
      const BatchFile& file = files[next];
      workers.Start(next, [&] { return RunFile(file, request, chains, library); });
      ++next;
      continue;
    }
    if (workers.Count() == 0) {
      return;
    }
    if (Interrupted()) {
      // Each time: one that was about to wait for a pipe when it was told would wait on.
      workers.Stop();
    }
    for (const Workers::Answer& answer : workers.Wait(Patience_ms)) {
      report.Take(answer);
    }
    report.Progress();
  }
}

}  // namespace

void Batch(const BatchRequest& request) {
  RequireSense(request);
  const ChainSet chains = ReadChains(request.run);
  const FilterLibrary library(request.run.library);
  std::vector<BatchFile> files = ListFiles(request, chains);
  std::erase_if(files, [&](const BatchFile& file) { return !request.shard.Holds(file.name); });

  BatchReport report(request, files);
  const std::set<std::string> folders = Folders(files);
  MakeFolder(request.folder);
  std::ranges::for_each(folders, MakeFolder);
  std::ranges::for_each(folders, RemoveLeftovers);
  const BatchScratch scratch;
  // Once for all of them.
  static_cast<void>(library.Hash());
  RunAll(request, files, chains, library, report);
  // A killed batch's last children may only be gone by now.
  std::ranges::for_each(folders, RemoveLeftovers);
  report.Finish();
}

}  // namespace wavechain
