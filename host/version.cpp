#include "host/version.h"

#include <fmt/format.h>

#include <filesystem>

#include "host/failure.h"
#include "host/filter_library.h"

namespace wavechain {
namespace {

// The library tells its version by the name of its file alone, as in libwavefilters.so.1.0.0.
std::string LibraryText() {
  try {
    const FilterLibrary library(std::nullopt);
    std::error_code error;
    const std::filesystem::path real = std::filesystem::canonical(library.Path(), error);
    const std::string path = error ? library.Path() : real.string();
    const std::string name = std::filesystem::path(path).filename().string();
    constexpr std::string_view Mark = ".so.";
    const std::size_t mark = name.find(Mark);
    return fmt::format(
        "{}, {}", mark == std::string::npos ? "unknown" : name.substr(mark + Mark.size()), path);
  } catch (const Failure& failure) {
    return fmt::format("none: {}", failure.what());
  }
}

}  // namespace

std::string VersionText() {
  return fmt::format("wavechain {}\nlibrary   {}\n", WAVECHAIN_VERSION, OneLine(LibraryText()));
}

}  // namespace wavechain
