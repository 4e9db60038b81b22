#include "host/unfinished.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <string_view>

#include "host/file.h"

namespace wavechain {
namespace {

constinit Unfinished* youngest = nullptr;

void RemoveIn(int parent, const char* name) noexcept;

// Not by opendir(), which asks for memory.
void RemoveEntries(int folder) noexcept {
  alignas(dirent64) std::array<char, 4096> block = {};
  ssize_t came = 0;
  while ((came = ::getdents64(folder, block.data(), block.size())) > 0) {
    for (ssize_t at = 0; at < came;) {
      const auto* entry = reinterpret_cast<const dirent64*>(block.data() + at);
      at += entry->d_reclen;
      const std::string_view name = entry->d_name;
      if (name != "." && name != "..") {
        RemoveIn(folder, entry->d_name);
      }
    }
  }
}

void RemoveIn(int parent, const char* name) noexcept {
  if (::unlinkat(parent, name, 0) == 0) {
    return;
  }
  const File folder(::openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (folder.IsOpen()) {
    RemoveEntries(folder.Descriptor());
  }
  ::unlinkat(parent, name, AT_REMOVEDIR);
}

}  // namespace

Unfinished::Unfinished() : older(youngest), owner(::getpid()) { youngest = this; }

Unfinished::~Unfinished() {
  Unfinished** at = &youngest;
  while (*at != this) {
    at = &(*at)->older;
  }
  *at = older;
}

void Unfinished::AbandonAll() noexcept {
  for (Unfinished* one = youngest; one != nullptr; one = one->older) {
    if (one->owner == ::getpid()) {
      one->Abandon();
    }
  }
}

void TemporaryPath::Abandon() noexcept { RemoveWithContents(path); }

void RemoveWithContents(const std::string& path) noexcept {
  if (!path.empty()) {
    RemoveIn(AT_FDCWD, path.c_str());
  }
}

}  // namespace wavechain
