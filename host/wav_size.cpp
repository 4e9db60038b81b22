#include "host/wav_size.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <string_view>

namespace wavechain {
namespace {

static_assert(std::endian::native == std::endian::little, "sizes are read as they lie");

constexpr std::int64_t ChunkHeader = 8;
constexpr std::int64_t FileHeader = 12;

struct Chunk {
  std::array<char, 4> name = {};
  std::uint32_t size = 0;

  bool Is(std::string_view wanted) const {
    return std::string_view(name.data(), name.size()) == wanted;
  }
  // Silence must not look like chunks without a name.
  bool HasName() const {
    return std::ranges::all_of(name, [](char c) { return c >= ' ' && c <= '~'; });
  }
  // Chunks begin at even places.
  std::int64_t Whole() const { return ChunkHeader + size + (size & 1U); }
};

std::optional<Chunk> ReadChunk(int descriptor, std::int64_t at) {
  std::array<char, ChunkHeader> bytes = {};
  if (::pread(descriptor, bytes.data(), bytes.size(), at) != ChunkHeader) {
    return std::nullopt;
  }
  Chunk chunk;
  std::memcpy(chunk.name.data(), bytes.data(), chunk.name.size());
  std::memcpy(&chunk.size, bytes.data() + chunk.name.size(), sizeof chunk.size);
  return chunk;
}

bool IsWav(int descriptor) {
  const std::optional<Chunk> riff = ReadChunk(descriptor, 0);
  std::array<char, 4> form = {};
  return riff && riff->Is("RIFF") &&
         ::pread(descriptor, form.data(), form.size(), ChunkHeader) == 4 &&
         std::string_view(form.data(), form.size()) == "WAVE";
}

// Chunk by chunk to the very end: so files go on that are not audio.
bool HoldsChunks(int descriptor, std::int64_t at, std::int64_t end) {
  while (at < end) {
    const std::optional<Chunk> chunk = ReadChunk(descriptor, at);
    if (!chunk || !chunk->HasName()) {
      return false;
    }
    at += chunk->Whole();
  }
  // Some programs leave the last chunk's filling byte out.
  return at <= end + 1;
}

}  // namespace

bool IsBeyondWav(int descriptor) {
  constexpr std::int64_t Longest = 0xFFFFFFFF;
  struct stat status = {};
  return ::fstat(descriptor, &status) == 0 && status.st_size > Longest + ChunkHeader &&
         IsWav(descriptor);
}

std::optional<std::int64_t> UnfilledDataSize(int descriptor) {
  struct stat status = {};
  if (::fstat(descriptor, &status) != 0 || !IsWav(descriptor)) {
    return std::nullopt;
  }
  std::int64_t at = FileHeader;
  while (const std::optional<Chunk> chunk = ReadChunk(descriptor, at)) {
    if (chunk->Is("data")) {
      const std::int64_t audio = at + ChunkHeader;
      const bool unfilled = chunk->size == 0 && audio < status.st_size &&
                            !HoldsChunks(descriptor, audio, status.st_size);
      return unfilled ? std::optional(at + 4) : std::nullopt;
    }
    at += chunk->Whole();
  }
  return std::nullopt;
}

}  // namespace wavechain
