#ifndef WAVEFILTERS_HOST_FILTER_LIBRARY_H
#define WAVEFILTERS_HOST_FILTER_LIBRARY_H

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "frame/interfaces.h"
#include "frame/ref.h"
#include "host/catalogue.h"

namespace wavechain {

/// A filter library, loaded the way any host would: opened at run time, and known by nothing
/// but its thirteen entry points. It must outlive every filter that it made.
class FilterLibrary {
 public:
  /// Loads the library of that path or, without one, the first that is found beside the
  /// program, in the library folder that belongs to the program's, and on the dynamic
  /// linker's path. Fails (usage) with the linker's reason, or naming the entry point that
  /// is not there.
  explicit FilterLibrary(const std::optional<std::string>& path);

  /// Whether the library makes filters of that kind.
  bool Has(const FilterKind& kind) const;
  /// A new filter with one reference; fails (usage) where the library hands out nothing.
  wavefilters::Ref<wavefilters::IWaveFilterC> Create(const FilterKind& kind) const;
  /// The file that was loaded.
  const std::string& Path() const { return path; }
  /// Its SHA-256, made when it is first asked for; nothing where it cannot be read.
  const std::optional<std::string>& Hash() const;

 private:
  struct Closer {
    void operator()(void* handle) const;
  };

  void Open(const std::optional<std::string>& wanted);
  wavefilters::Ref<wavefilters::IWaveFilterC> Make(const FilterKind& kind) const;

  std::unique_ptr<void, Closer> handle;
  std::string path;
  mutable bool hashed = false;
  mutable std::optional<std::string> hash;
  std::map<std::string_view, wavefilters::EntryPoint> entryPoints;
};

}  // namespace wavechain

#endif
