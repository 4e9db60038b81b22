#ifndef WAVEFILTERS_HOST_FILE_H
#define WAVEFILTERS_HOST_FILE_H

#include <cstddef>
#include <optional>
#include <string>
#include <utility>

namespace wavechain {

/// An open file descriptor, closed at the end.
class File {
 public:
  File() = default;
  explicit File(int opened) : descriptor(opened) {}
  File(File&& other) noexcept : descriptor(std::exchange(other.descriptor, -1)) {}
  File& operator=(File&& other) noexcept {
    std::swap(descriptor, other.descriptor);
    return *this;
  }
  ~File();

  int Descriptor() const { return descriptor; }
  bool IsOpen() const { return descriptor >= 0; }
  /// Closes and returns the errno value of a failure, 0 without one.
  int Close();

 private:
  int descriptor = -1;
};

/// Which file a path or descriptor leads to, whatever links lie between.
struct FileIdentity {
  unsigned long device = 0;
  unsigned long inode = 0;
  bool operator==(const FileIdentity&) const = default;
};

/// The identity of what a path (links followed) or an open file is; nothing if there is none.
std::optional<FileIdentity> IdentityOf(const std::string& path);
std::optional<FileIdentity> IdentityOf(int descriptor);

/// A file as it is now: what another program writes to it, or puts in its place, shows.
struct FileState {
  FileIdentity identity;
  long size = 0;
  long changed_s = 0;
  long changed_ns = 0;
  bool operator==(const FileState&) const = default;
};

/// Nothing where the path leads nowhere.
std::optional<FileState> StateOf(const std::string& path);

/// True while the process may open `count` more files; otherwise errno says why not.
bool HasRoomForFiles(std::size_t count);

/// Writes all bytes and returns 0, or the errno value of what went wrong. Goes on after an
/// interrupted call, unless the program is to stop (EINTR).
int WriteAll(int descriptor, const void* bytes, std::size_t count);

/// Reads up to `count` bytes: their number, 0 at the end, below 0 the negative errno value.
long ReadSome(int descriptor, void* bytes, std::size_t count);

/// A file without a name in the folder for temporary files, which is gone once it is closed.
/// When it cannot be made the file is not open and errno says why.
File TemporaryFile();

/// The folder for temporary files: $TMPDIR, or /tmp.
std::string TemporaryFolder();

}  // namespace wavechain

#endif
