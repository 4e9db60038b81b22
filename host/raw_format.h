#ifndef WAVEFILTERS_HOST_RAW_FORMAT_H
#define WAVEFILTERS_HOST_RAW_FORMAT_H

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace wavechain {

/// Samples without any header, least significant byte first.
struct RawType {
  std::string_view name;      // as given to -t, the container's name and its extension
  std::string_view encoding;  // the same as a name of --encoding
  int number;                 // libsndfile's, for container, encoding and order of bytes
  int bytes;                  // of a sample
};

std::span<const RawType> RawTypes();

/// One channel of raw samples as input.
struct RawLayout {
  const RawType* type = nullptr;
  int rate = 0;  // Hz
};

/// Understands -t and --rate; nothing without a type. Fails (usage) on an unknown type, with the
/// nearest, and where there is no rate, or one that is no whole number.
std::optional<RawLayout> ChooseRawLayout(const std::optional<std::string>& type,
                                         std::optional<double> rate);

}  // namespace wavechain

#endif
