#include "host/output_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "host/failure.h"
#include "host/interrupt.h"
#include "host/unfinished.h"

namespace wavechain {
namespace {

[[noreturn]] void CannotWrite(const std::string& name, int error) {
  StopIfInterrupted();
  Fail(ExitStatus::Output, "{}: cannot be written: {}", name, SystemText(error));
}

bool IsThere(const std::string& path) {
  struct stat status = {};
  return ::lstat(path.c_str(), &status) == 0;
}

// A link that leads somewhere is written through, not replaced.
std::string Resolved(const std::string& path) {
  char* real = ::realpath(path.c_str(), nullptr);
  std::string resolved = real == nullptr ? path : real;
  std::free(real);
  return resolved;
}

std::string FolderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "" : path.substr(0, slash + 1);
}

// A file beside its target under a temporary name.
class FileBeside final : public OutputFile {
 public:
  FileBeside(const std::string& path, bool mayReplace)
      : OutputFile(path), target(Resolved(path)), replace(mayReplace) {
    Create();
    KeepMode();
  }
  ~FileBeside() override {
    if (!temporary.empty()) {
      ::unlink(temporary.c_str());
    }
  }
  FileBeside(const FileBeside&) = delete;
  FileBeside& operator=(const FileBeside&) = delete;

  int Descriptor() const override { return file.Descriptor(); }

  void Settle() override {
    if (!file.IsOpen()) {
      return;
    }
    // On the disk before it has its name: a crash must not leave an empty file under it.
    if (::fsync(file.Descriptor()) != 0 && errno != EINVAL && errno != EROFS) {
      CannotWrite(Name(), errno);
    }
    identity = IdentityOf(file.Descriptor());
    lock = File(::fcntl(file.Descriptor(), F_DUPFD_CLOEXEC, 0));
    if (const int error = file.Close()) {
      CannotWrite(Name(), error);
    }
    StopIfInterrupted();
    if (!replace && IsThere(target)) {
      ExistsByNow();
    }
  }

  void Commit() override {
    Settle();
    Rename();
    temporary.clear();
  }

  void Withdraw() override {
    if (identity && IdentityOf(target) == identity) {
      ::unlink(target.c_str());
    }
  }

 private:
  void Create() {
    for (int attempt = 0;; ++attempt) {
      temporary = fmt::format("{}.wavechain-{}-{}.part", FolderOf(target), ::getpid(), attempt);
      file = File(::open(temporary.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
      if (file.IsOpen() && IsOurs()) {
        return;
      }
      if (file.IsOpen()) {
        continue;
      }
      const int error = errno;
      temporary.clear();
      if (error != EEXIST) {
        CannotWrite(Name(), error);
      }
    }
  }

  // A lock tells whoever clears away what killed programs left that this file is being written.
  // One who came before the lock may have taken it for such a leftover.
  bool IsOurs() const {
    const bool taken = ::flock(file.Descriptor(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    return !taken && IdentityOf(temporary) == IdentityOf(file.Descriptor());
  }

  // A file that is replaced hands on its permissions, as if it had been written over.
  void KeepMode() const {
    struct stat status = {};
    if (replace && ::stat(target.c_str(), &status) == 0) {
      static_cast<void>(::fchmod(file.Descriptor(), status.st_mode & 07777));
    }
  }

  [[noreturn]] void ExistsByNow() const {
    Fail(ExitStatus::Output, "{}: exists by now; --force replaces it", Name());
  }

  void Rename() const {
    if (replace) {
      if (::rename(temporary.c_str(), target.c_str()) != 0) {
        CannotWrite(Name(), errno);
      }
      return;
    }
    // What has appeared under the name since the beginning stays.
    if (::renameat2(AT_FDCWD, temporary.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0) {
      return;
    }
    if (errno == EEXIST || IsThere(target)) {
      ExistsByNow();
    }
    if (::rename(temporary.c_str(), target.c_str()) != 0) {
      CannotWrite(Name(), errno);
    }
  }

  std::string target;
  std::string temporary;
  TemporaryPath abandoned{temporary};
  bool replace;
  File file;
  File lock;  // the same file: the lock must outlast the temporary name
  std::optional<FileIdentity> identity;
};

// Standard output gets nothing before everything is there: formats need to seek, and what
// reads the pipe shall not take half a result for a whole one.
class StandardOutput final : public OutputFile {
 public:
  StandardOutput() : OutputFile(TargetName("-")), file(TemporaryFile()) {
    if (!file.IsOpen()) {
      const int error = errno;
      Fail(ExitStatus::Output, "{}: no temporary file in {}: {}; set TMPDIR", Name(),
           TemporaryFolder(), SystemText(error));
    }
  }

  int Descriptor() const override { return file.Descriptor(); }

  void Commit() override {
    std::vector<char> block(1 << 16);
    ::lseek(file.Descriptor(), 0, SEEK_SET);
    for (;;) {
      StopIfInterrupted();
      const long came = ReadSome(file.Descriptor(), block.data(), block.size());
      if (came == 0) {
        return;
      }
      const int error = came < 0
                            ? static_cast<int>(-came)
                            : WriteAll(STDOUT_FILENO, block.data(), static_cast<std::size_t>(came));
      if (error != 0) {
        CannotWrite(Name(), error);
      }
    }
  }

 private:
  File file;
};

}  // namespace

void OutputFile::Remove(const std::string& path) {
  if (::unlink(Resolved(path).c_str()) != 0 && errno != ENOENT) {
    CannotWrite(path, errno);
  }
}

std::string TargetName(const std::string& path) { return path == "-" ? "standard output" : path; }

void CheckTarget(const std::string& path, bool replace, const std::optional<FileIdentity>& input) {
  if (path == "-") {
    if (::isatty(STDOUT_FILENO) != 0) {
      Fail(ExitStatus::Output, "standard output: is a terminal; send it to a file or a pipe");
    }
    return;
  }
  if (path.empty() || path.back() == '/') {
    Fail(ExitStatus::Output, "'{}': names no file to write", path);
  }
  struct stat status = {};
  const bool leadsSomewhere = ::stat(path.c_str(), &status) == 0;
  if (leadsSomewhere && input && IdentityOf(path) == input) {
    Fail(ExitStatus::Output, "{}: is the input itself; name another output", path);
  }
  if (leadsSomewhere && !S_ISREG(status.st_mode)) {
    Fail(ExitStatus::Output, "{}: is {}; name a file, or - for standard output", path,
         S_ISDIR(status.st_mode) ? "a folder" : "not a regular file");
  }
  if (!replace && IsThere(path)) {
    Fail(ExitStatus::Output, "{}: exists already; --force replaces it", path);
  }
}

void RequireNotRead(const std::string& path, const std::vector<std::string>& files) {
  const std::optional<FileIdentity> target = path == "-" ? std::nullopt : IdentityOf(path);
  for (const std::string& file : files) {
    if (target && file != "-" && IdentityOf(file) == target) {
      Fail(ExitStatus::Output, "{}: is read by a filter; name another output", path);
    }
  }
}

std::unique_ptr<OutputFile> OpenOutput(const std::string& path, bool replace) {
  if (path == "-") {
    return std::make_unique<StandardOutput>();
  }
  return std::make_unique<FileBeside>(path, replace);
}

}  // namespace wavechain
