#include "host/leftovers.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <vector>

#include "host/failure.h"

namespace wavechain {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view ScratchName = "wavechain-batch-";

// ".wavechain-123-0.part", as outputs are called before they are whole.
bool IsPartName(std::string_view name) {
  constexpr std::string_view Start = ".wavechain-";
  constexpr std::string_view End = ".part";
  if (!name.starts_with(Start) || !name.ends_with(End) || name.size() < Start.size() + End.size()) {
    return false;
  }
  const std::string_view numbers =
      name.substr(Start.size(), name.size() - Start.size() - End.size());
  return numbers.find_first_not_of("0123456789-") == std::string_view::npos;
}

std::vector<fs::path> Entries(const std::string& folder, bool (*wanted)(std::string_view)) {
  std::vector<fs::path> found;
  std::error_code error;
  for (fs::directory_iterator at(folder.empty() ? "." : folder, error), end; !error && at != end;
       at.increment(error)) {
    if (wanted(at->path().filename().string())) {
      found.push_back(at->path());
    }
  }
  return found;
}

// Locked for us alone, where it is ours and nobody else's process has it.
bool Lock(const File& file) {
  struct stat status = {};
  return file.IsOpen() && ::fstat(file.Descriptor(), &status) == 0 &&
         status.st_uid == ::geteuid() && ::flock(file.Descriptor(), LOCK_EX | LOCK_NB) == 0;
}

File OpenFolder(const std::string& path) {
  return File(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

void RemoveScratch(const std::string& parent) {
  const auto isScratch = [](std::string_view name) { return name.starts_with(ScratchName); };
  for (const fs::path& path : Entries(parent, isScratch)) {
    const File folder = OpenFolder(path.string());
    if (Lock(folder)) {
      std::error_code ignored;
      fs::remove_all(path, ignored);
    }
  }
}

}  // namespace

void RemoveLeftovers(const std::string& folder) {
  for (const fs::path& path : Entries(folder, IsPartName)) {
    // For writing: some file systems only lock what is open so.
    const File file(::open(path.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (Lock(file)) {
      ::unlink(path.c_str());
    }
  }
}

BatchScratch::BatchScratch() : parent(TemporaryFolder()) {
  RemoveScratch(parent);
  bool taken = true;
  while (taken) {
    folder = fmt::format("{}/{}XXXXXX", parent, ScratchName);
    const bool made = ::mkdtemp(folder.data()) != nullptr;
    lock = made ? OpenFolder(folder) : File();
    const int error = errno;
    if (!made || (!lock.IsOpen() && error != ENOENT)) {
      Fail(ExitStatus::Output, "cannot make a temporary folder in {}: {}; set TMPDIR", parent,
           SystemText(error));
    }
    // Another batch may have taken it for a leftover before it was locked.
    taken = !lock.IsOpen() || (!Lock(lock) && errno == EWOULDBLOCK) ||
            IdentityOf(folder) != IdentityOf(lock.Descriptor());
  }
  ::setenv("TMPDIR", folder.c_str(), 1);
}

BatchScratch::~BatchScratch() {
  RemoveWithContents(folder);
  ::setenv("TMPDIR", parent.c_str(), 1);
}

}  // namespace wavechain
