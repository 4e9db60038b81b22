#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numeric>

namespace wavechain {
namespace {

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

// Number of letters to insert, drop or replace to make one word of the other.
std::size_t EditDistance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i + 1;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t replaced = diagonal + (Lower(a[i]) == Lower(b[j]) ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
    }
  }
  return row.back();
}

}  // namespace

std::optional<double> ParseNumber(std::string_view text) {
  if (text.starts_with('+') && !text.starts_with("+-")) {
    text.remove_prefix(1);
  }
  double value = 0.0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc{} || stop != end || !std::isfinite(value)) {
    return std::nullopt;
  }
  return value;
}

std::string NumberText(double value) { return fmt::format("{}", value); }

std::string Nearest(std::string_view word, const std::vector<std::string_view>& candidates) {
  std::string_view best;
  std::size_t least = std::max<std::size_t>(2, word.size() / 3) + 1;
  for (const std::string_view candidate : candidates) {
    const std::size_t distance = EditDistance(word, candidate);
    // A distance of the whole word means that nothing of it is left.
    if (distance < least && distance < candidate.size()) {
      least = distance;
      best = candidate;
    }
  }
  return std::string(best);
}

std::string Suggestion(std::string_view word, const std::vector<std::string_view>& candidates) {
  if (const std::string nearest = Nearest(word, candidates); !nearest.empty()) {
    return fmt::format("; did you mean {}?", nearest);
  }
  return candidates.empty() ? std::string() : fmt::format("; there are {}", Joined(candidates));
}

std::string Joined(const std::vector<std::string_view>& words) {
  return fmt::format("{}", fmt::join(words, ", "));
}

std::string Counted(long long count, std::string_view noun) {
  return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

}  // namespace wavechain
