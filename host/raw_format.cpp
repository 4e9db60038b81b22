#include "host/raw_format.h"

#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "host/failure.h"
#include "host/text.h"

namespace wavechain {
namespace {

constexpr int Raw = static_cast<int>(SF_FORMAT_RAW) | static_cast<int>(SF_ENDIAN_LITTLE);

constexpr RawType AllTypes[] = {
    {"f32", "float32", Raw | SF_FORMAT_FLOAT, 4}, {"f64", "float64", Raw | SF_FORMAT_DOUBLE, 8},
    {"s16", "pcm16", Raw | SF_FORMAT_PCM_16, 2},  {"s24", "pcm24", Raw | SF_FORMAT_PCM_24, 3},
    {"s32", "pcm32", Raw | SF_FORMAT_PCM_32, 4},
};

}  // namespace

std::span<const RawType> RawTypes() { return AllTypes; }

std::optional<RawLayout> ChooseRawLayout(const std::optional<std::string>& type,
                                         std::optional<double> rate) {
  if (!type) {
    return std::nullopt;
  }
  const auto* found = std::ranges::find(AllTypes, *type, &RawType::name);
  if (found == std::end(AllTypes)) {
    std::vector<std::string_view> names;
    for (const RawType& one : AllTypes) {
      names.push_back(one.name);
    }
    Fail(ExitStatus::Usage, "-t {}: there is no such type of raw samples{}", *type,
         Suggestion(*type, names));
  }
  if (!rate) {
    Fail(ExitStatus::Usage, "-t {}: raw samples do not say their rate; add --rate HZ", *type);
  }
  if (*rate != std::trunc(*rate)) {
    Fail(ExitStatus::Usage, "--rate {}: raw samples are read at a whole number of Hz",
         NumberText(*rate));
  }
  return RawLayout{found, static_cast<int>(*rate)};
}

}  // namespace wavechain
