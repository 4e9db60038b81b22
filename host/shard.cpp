#include "host/shard.h"

#include <charconv>
#include <cstdint>
#include <optional>

#include "host/failure.h"

namespace wavechain {
namespace {

std::optional<unsigned> WholeNumber(std::string_view text) {
  unsigned number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool whole = error == std::errc() && end == text.data() + text.size();
  return whole ? std::optional(number) : std::nullopt;
}

}  // namespace

bool Shard::Holds(std::string_view name) const {
  constexpr std::uint64_t Start = 14695981039346656037U;
  constexpr std::uint64_t Prime = 1099511628211U;
  std::uint64_t hash = Start;
  for (const char c : name) {
    hash = (hash ^ static_cast<unsigned char>(c)) * Prime;
  }
  const std::uint64_t folded = (hash >> 32U) ^ (hash & 0xffffffffU);
  return folded % count == number - 1;
}

Shard ParseShard(const std::string& text) {
  const std::size_t slash = text.find('/');
  if (slash != std::string::npos) {
    const std::optional<unsigned> number = WholeNumber(std::string_view(text).substr(0, slash));
    const std::optional<unsigned> count = WholeNumber(std::string_view(text).substr(slash + 1));
    if (number && count && *number >= 1 && *number <= *count) {
      return {*number, *count};
    }
  }
  Fail(ExitStatus::Usage, "--shard {}: takes I/N with I from 1 to N, as in --shard 3/8", text);
}

}  // namespace wavechain
