#include "host/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <vector>

#include "host/interrupt.h"

namespace wavechain {
namespace {

FileIdentity Identity(const struct stat& status) { return {status.st_dev, status.st_ino}; }

}  // namespace

File::~File() { Close(); }

int File::Close() {
  const int closing = std::exchange(descriptor, -1);
  return closing >= 0 && ::close(closing) != 0 ? errno : 0;
}

std::optional<FileIdentity> IdentityOf(const std::string& path) {
  struct stat status = {};
  return ::stat(path.c_str(), &status) == 0 ? std::optional(Identity(status)) : std::nullopt;
}

std::optional<FileIdentity> IdentityOf(int descriptor) {
  struct stat status = {};
  return ::fstat(descriptor, &status) == 0 ? std::optional(Identity(status)) : std::nullopt;
}

std::optional<FileState> StateOf(const std::string& path) {
  struct stat status = {};
  if (::stat(path.c_str(), &status) != 0) {
    return std::nullopt;
  }
  return FileState{Identity(status), status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

bool HasRoomForFiles(std::size_t count) {
  std::vector<File> taken(count);
  for (File& one : taken) {
    one = File(::open("/", O_RDONLY | O_CLOEXEC));
    if (!one.IsOpen()) {
      return false;
    }
  }
  return true;
}

int WriteAll(int descriptor, const void* bytes, std::size_t count) {
  const char* from = static_cast<const char*>(bytes);
  while (count > 0) {
    const ssize_t written = ::write(descriptor, from, count);
    if (written > 0) {
      from += written;
      count -= static_cast<std::size_t>(written);
    } else if (written == 0) {
      return ENOSPC;
    } else if (errno != EINTR || Interrupted()) {
      return errno;
    }
  }
  return 0;
}

long ReadSome(int descriptor, void* bytes, std::size_t count) {
  for (;;) {
    const ssize_t came = ::read(descriptor, bytes, count);
    if (came >= 0) {
      return came;
    }
    if (errno != EINTR || Interrupted()) {
      return -errno;
    }
  }
}

std::string TemporaryFolder() {
  const char* folder = std::getenv("TMPDIR");
  return folder != nullptr && *folder != '\0' ? folder : "/tmp";
}

File TemporaryFile() {
  File file(::open(TemporaryFolder().c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600));
  if (!file.IsOpen()) {
    // Not every file system makes files without a name.
    std::string path = TemporaryFolder() + "/wavechain-XXXXXX";
    file = File(::mkostemp(path.data(), O_CLOEXEC));
    if (file.IsOpen()) {
      ::unlink(path.c_str());
    }
  }
  return file;
}

}  // namespace wavechain
