#include "support/library.h"

#include <dlfcn.h>

#include <stdexcept>

namespace support {

std::string LibraryPath() { return WAVEFILTERS_LIBRARY; }

void* Symbol(const char* name) {
  static void* const library = dlopen(WAVEFILTERS_LIBRARY, RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) {
    throw std::runtime_error(dlerror());
  }
  return dlsym(library, name);
}

EntryPoint Entry(const Kind& kind) {
  void* const symbol = Symbol(kind.entry);
  if (symbol == nullptr) {
    throw std::runtime_error(std::string(kind.entry) + " is not exported");
  }
  return reinterpret_cast<EntryPoint>(symbol);
}

Factory::Factory(const Kind& kind) {
  if (Entry(kind)(&object) == nullptr || object == nullptr) {
    throw std::runtime_error(std::string(kind.entry) + " gives no factory");
  }
}

Factory::~Factory() { Slots().Release(object); }

void* Factory::GetFilter() const {
  void* filter = nullptr;
  Slots().GetFilter(object, &filter);
  return filter;
}

}  // namespace support
