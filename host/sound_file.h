#ifndef WAVEFILTERS_HOST_SOUND_FILE_H
#define WAVEFILTERS_HOST_SOUND_FILE_H

#include <sndfile.h>

#include <cstdint>
#include <optional>
#include <string>

namespace wavechain {

/// An audio file on a descriptor that the caller keeps open. The bytes go through functions
/// of our own, because only so is every failed read, write and seek noticed: some that
/// libsndfile makes while it closes a file are otherwise lost.
class SoundFile {
 public:
  /// `mode` is SFM_READ or SFM_WRITE. Where the file cannot be opened, Get() is null and
  /// Error() says why.
  /// Four bytes from `unknownSize` on, if given, are read as 0xFF whatever they are: a size that
  /// nobody filled in becomes one that libsndfile takes for unknown.
  SoundFile(int fileDescriptor, int mode, SF_INFO& info,
            std::optional<std::int64_t> unknownSize = std::nullopt);
  ~SoundFile();
  SoundFile(const SoundFile&) = delete;
  SoundFile& operator=(const SoundFile&) = delete;

  SNDFILE* Get() const { return file; }
  /// Completes and closes the audio file, not the descriptor; false when something failed.
  bool Close();
  /// What went wrong: the system's reason where there is one, otherwise libsndfile's. Throws
  /// std::bad_alloc where that was want of memory.
  std::string Error() const;
  /// Throws std::bad_alloc where the number that libsndfile returned means want of memory.
  static void RequireMemory(int error);
  /// The errno value of the first call that failed, or 0.
  int SystemError() const { return systemError; }
  /// Bytes from the start of the file to the furthest one written.
  std::int64_t Written() const { return written; }

 private:
  static sf_count_t Length(void* self);
  static sf_count_t Seek(sf_count_t offset, int whence, void* self);
  static sf_count_t Read(void* bytes, sf_count_t count, void* self);
  static sf_count_t Write(const void* bytes, sf_count_t count, void* self);
  static sf_count_t Tell(void* self);

  void ReplaceSize(char* bytes, std::int64_t at, std::int64_t count) const;
  sf_count_t Note(sf_count_t result, int error);

  int descriptor;
  std::optional<std::int64_t> unknownSize;
  SNDFILE* file = nullptr;
  int systemError = 0;
  std::int64_t written = 0;
  int closingError = 0;  // libsndfile's number
};

}  // namespace wavechain

#endif
