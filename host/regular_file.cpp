#include "host/regular_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <utility>

namespace wavechain {

File OpenRegularFile(const std::string& path) {
  // Asked after the opening, which must not wait: what has the name may change in between.
  File file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  struct stat status = {};
  const bool isRegular =
      file.IsOpen() && ::fstat(file.Descriptor(), &status) == 0 && S_ISREG(status.st_mode);
  return isRegular ? std::move(file) : File();
}

std::string ReadPart(int descriptor, std::int64_t at, std::size_t count) {
  std::string part;
  std::array<char, 1 << 12> block = {};
  long came = ::lseek(descriptor, at, SEEK_SET) < 0 ? 0 : 1;
  while (came > 0 && part.size() < count) {
    came = ReadSome(descriptor, block.data(), std::min(block.size(), count - part.size()));
    part.append(block.data(), static_cast<std::size_t>(std::max(came, 0L)));
  }
  return part;
}

}  // namespace wavechain
