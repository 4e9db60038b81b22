#include "host/gaps.h"

#include <algorithm>

namespace wavechain {
namespace {

// The nearest whole number at or below a quotient, and at or above one; below is positive.
std::int64_t Down(std::int64_t above, std::int64_t below) {
  return above / below - (above % below < 0 ? 1 : 0);
}

std::int64_t Up(std::int64_t above, std::int64_t below) { return -Down(-above, below); }

}  // namespace

void Gaps::Add(Gap gap) {
  gap.first = std::max<std::int64_t>(gap.first, 0);
  if (gap.first >= gap.last) {
    return;
  }
  if (!gaps.empty() && gap.first <= gaps.back().last) {
    gaps.back().last = std::max(gaps.back().last, gap.last);
    return;
  }
  gaps.push_back(gap);
}

std::int64_t Gaps::Samples(std::int64_t length) const {
  std::int64_t count = 0;
  for (const Gap& gap : gaps) {
    count += std::max<std::int64_t>(std::min(gap.last, length) - gap.first, 0);
  }
  return count;
}

Gaps Gaps::Widened(std::int64_t samples) const {
  Gaps wide;
  for (const Gap& gap : gaps) {
    wide.Add({gap.first - samples, gap.last + samples});
  }
  return wide;
}

Gaps Gaps::United(const Gaps& other) const {
  std::vector<Gap> both(gaps.size() + other.gaps.size());
  std::ranges::merge(gaps, other.gaps, both.begin(), {}, &Gap::first, &Gap::first);
  Gaps united;
  for (const Gap& gap : both) {
    united.Add(gap);
  }
  return united;
}

Gaps Gaps::Resampled(std::int64_t up, std::int64_t down, std::int64_t reach) const {
  Gaps resampled;
  for (const Gap& gap : gaps) {
    resampled.Add({Up(gap.first * up - reach, down), Down((gap.last - 1) * up + reach, down) + 1});
  }
  return resampled;
}

void Gaps::Mark(std::int64_t start, std::span<unsigned char> valid) const {
  std::ranges::fill(valid, static_cast<unsigned char>(1));
  const std::int64_t end = start + static_cast<std::int64_t>(valid.size());
  auto gap = std::ranges::lower_bound(gaps, start + 1, {}, &Gap::last);
  for (; gap != gaps.end() && gap->first < end; ++gap) {
    const auto from = static_cast<std::size_t>(std::max(gap->first, start) - start);
    const auto to = static_cast<std::size_t>(std::min(gap->last, end) - start);
    std::ranges::fill(valid.subspan(from, to - from), static_cast<unsigned char>(0));
  }
}

}  // namespace wavechain
