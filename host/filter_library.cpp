#include "host/filter_library.h"

#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

#include <climits>
#include <cstring>
#include <vector>

#include "host/failure.h"
#include "host/sha256.h"

namespace wavechain {
namespace {

using wavefilters::EntryPoint;
using wavefilters::IFilterFactory;
using wavefilters::IWaveFilterC;
using wavefilters::Ref;

constexpr std::string_view LibraryName = "libwavefilters.so.1";

std::string ProgramFolder() {
  char path[PATH_MAX];
  const ssize_t length = ::readlink("/proc/self/exe", path, sizeof path);
  const std::string program(path, length > 0 ? static_cast<std::size_t>(length) : 0);
  return program.substr(0, program.rfind('/') + 1);
}

std::vector<std::string> Places() {
  const std::string folder = ProgramFolder();
  std::vector<std::string> places;
  if (!folder.empty()) {
    places.push_back(folder);
    places.push_back(folder + WAVECHAIN_LIBRARY_FOLDER "/");
    places.push_back(folder + "../lib/");
  }
  places.emplace_back();  // the dynamic linker's own path
  return places;
}

// POSIX promises that what dlsym returns converts to a function; the language has no cast
// for it.
EntryPoint ToEntryPoint(void* symbol) {
  EntryPoint entry = nullptr;
  std::memcpy(&entry, &symbol, sizeof entry);
  return entry;
}

}  // namespace

void FilterLibrary::Closer::operator()(void* opened) const { ::dlclose(opened); }

FilterLibrary::FilterLibrary(const std::optional<std::string>& wanted) {
  Open(wanted);
  struct link_map* map = nullptr;
  ::dlinfo(handle.get(), RTLD_DI_LINKMAP, &map);
  path = map == nullptr ? std::string(LibraryName) : std::string(map->l_name);
  for (const FilterKind& kind : Catalogue()) {
    void* symbol = ::dlsym(handle.get(), std::string(kind.entryPoint).c_str());
    if (symbol == nullptr) {
      Fail(ExitStatus::Usage, "{}: this is no filter library, it has no entry point {}", path,
           kind.entryPoint);
    }
    entryPoints[kind.entryPoint] = ToEntryPoint(symbol);
  }
}

void FilterLibrary::Open(const std::optional<std::string>& wanted) {
  if (wanted) {
    // Without a slash the linker would search its path for a name that was meant as a file.
    const bool bare = wanted->find('/') == std::string::npos;
    handle.reset(::dlopen(((bare ? "./" : "") + *wanted).c_str(), RTLD_NOW | RTLD_LOCAL));
    if (handle == nullptr) {
      Fail(ExitStatus::Usage, "--library {}: cannot be loaded: {}", *wanted, ::dlerror());
    }
    return;
  }
  for (const std::string& place : Places()) {
    const std::string candidate = place + std::string(LibraryName);
    if (!place.empty() && ::access(candidate.c_str(), F_OK) != 0) {
      continue;
    }
    handle.reset(::dlopen(candidate.c_str(), RTLD_NOW | RTLD_LOCAL));
    if (handle != nullptr) {
      return;
    }
    if (!place.empty()) {
      Fail(ExitStatus::Usage, "{}: cannot be loaded: {}", candidate, ::dlerror());
    }
  }
  Fail(ExitStatus::Usage, "{} is neither beside the program nor installed; name it by --library",
       LibraryName);
}

const std::optional<std::string>& FilterLibrary::Hash() const {
  if (!hashed) {
    hash = Sha256(path);
    hashed = true;
  }
  return hash;
}

bool FilterLibrary::Has(const FilterKind& kind) const { return static_cast<bool>(Make(kind)); }

Ref<IWaveFilterC> FilterLibrary::Create(const FilterKind& kind) const {
  Ref<IWaveFilterC> filter = Make(kind);
  if (!filter) {
    Fail(ExitStatus::Usage, "{} is not in this library ({})", kind.name, path);
  }
  return filter;
}

Ref<IWaveFilterC> FilterLibrary::Make(const FilterKind& kind) const {
  IFilterFactory* factory = nullptr;
  entryPoints.at(kind.entryPoint)(&factory);
  const auto held = Ref<IFilterFactory>::Adopt(factory);
  IWaveFilterC* filter = nullptr;
  if (held) {
    held->GetFilter(&filter);
  }
  return Ref<IWaveFilterC>::Adopt(filter);
}

}  // namespace wavechain
