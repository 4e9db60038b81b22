#include "host/sound_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <new>
#include <utility>

#include "host/failure.h"
#include "host/file.h"

namespace wavechain {
namespace {

SoundFile& Self(void* self) { return *static_cast<SoundFile*>(self); }

// libsndfile has no public number for it. That it cannot be read as a recording, or written, would
// send the user to the wrong place.
std::string Explained(std::string text) {
  if (text.starts_with("Internal malloc () failed")) {
    throw std::bad_alloc();
  }
  while (!text.empty() && (text.back() == '.' || text.back() == ' ')) {
    text.pop_back();
  }
  return text;
}

}  // namespace

SoundFile::SoundFile(int fileDescriptor, int mode, SF_INFO& info,
                     std::optional<std::int64_t> unknownSizeAt)
    : descriptor(fileDescriptor), unknownSize(unknownSizeAt) {
  SF_VIRTUAL_IO calls = {&Length, &Seek, &Read, &Write, &Tell};
  file = ::sf_open_virtual(&calls, mode, &info, this);
}

SoundFile::~SoundFile() { Close(); }

bool SoundFile::Close() {
  if (file != nullptr) {
    closingError = ::sf_close(std::exchange(file, nullptr));
  }
  return systemError == 0 && closingError == 0;
}

std::string SoundFile::Error() const {
  if (systemError != 0) {
    return SystemText(systemError);
  }
  return Explained(closingError != 0 ? ::sf_error_number(closingError) : ::sf_strerror(file));
}

void SoundFile::RequireMemory(int error) {
  if (error != 0) {
    static_cast<void>(Explained(::sf_error_number(error)));
  }
}

sf_count_t SoundFile::Note(sf_count_t result, int error) {
  if (error != 0 && systemError == 0) {
    systemError = error;
  }
  return result;
}

sf_count_t SoundFile::Length(void* self) {
  struct stat status = {};
  if (::fstat(Self(self).descriptor, &status) != 0) {
    return Self(self).Note(-1, errno);
  }
  return status.st_size;
}

sf_count_t SoundFile::Seek(sf_count_t offset, int whence, void* self) {
  const off_t at = ::lseek(Self(self).descriptor, offset, whence);
  // Damaged headers send libsndfile to places that do not exist: its own error says more.
  return Self(self).Note(at, at < 0 && errno != EINVAL ? errno : 0);
}

void SoundFile::ReplaceSize(char* bytes, std::int64_t at, std::int64_t count) const {
  constexpr std::int64_t Size = 4;
  for (std::int64_t i = 0; unknownSize && i < Size; ++i) {
    const std::int64_t place = *unknownSize + i - at;
    if (place >= 0 && place < count) {
      bytes[place] = '\xFF';
    }
  }
}

sf_count_t SoundFile::Read(void* bytes, sf_count_t count, void* self) {
  const sf_count_t at = Self(self).unknownSize ? Tell(self) : 0;
  sf_count_t total = 0;
  while (total < count) {
    const long came = ReadSome(Self(self).descriptor, static_cast<char*>(bytes) + total,
                               static_cast<std::size_t>(count - total));
    if (came <= 0) {
      return Self(self).Note(total, static_cast<int>(-came));
    }
    total += came;
  }
  Self(self).ReplaceSize(static_cast<char*>(bytes), at, total);
  return total;
}

sf_count_t SoundFile::Write(const void* bytes, sf_count_t count, void* self) {
  SoundFile& me = Self(self);
  const int error = WriteAll(me.descriptor, bytes, static_cast<std::size_t>(count));
  if (error != 0) {
    return me.Note(0, error);
  }
  me.written = std::max<std::int64_t>(me.written, ::lseek(me.descriptor, 0, SEEK_CUR));
  return count;
}

sf_count_t SoundFile::Tell(void* self) { return ::lseek(Self(self).descriptor, 0, SEEK_CUR); }

}  // namespace wavechain
