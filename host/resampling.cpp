#include "host/resampling.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <numeric>
#include <tuple>
#include <utility>

namespace wavechain {
namespace {

constexpr int MaxHalfLength = 2048;
// How much of a quality's reach a kernel must have: some factors do not go well into 2048.
constexpr double LeastReach = 0.985;

// From tools/measure_resampler.py.
constexpr ResamplerQuality Qualities[] = {
    {"fast", 14, 0.0, 146},
    {"good", 39, -5.2, 52},
    {"best", 98, -12.2, 21},
};

ResamplerStage Stage(int up, int down, const ResamplerQuality& quality) {
  const int wanted = quality.reach * std::max(up, down);
  // The kernel reaches whole input samples: what is not a multiple of `up` is cut off.
  const int whole = (wanted + up - 1) / up * up;
  return {up, down, std::min(whole, MaxHalfLength / up * up), quality.widen};
}

// Finds the best way to split what is left of a ratio into stages.
class Planner {
 public:
  Planner(const RateRatio& wholeRatio, const ResamplerQuality& wanted)
      : ratio(wholeRatio), quality(wanted) {}

  std::vector<ResamplerStage> Plan() {
    std::vector<ResamplerStage> stages;
    RateRatio left = ratio;
    while (left.up != 1 || left.down != 1) {
      const Choice& choice = Best(left);
      if (choice.stages == Impossible) {
        return {};
      }
      stages.push_back(Stage(choice.up, choice.down, quality));
      left = {left.up / choice.up, left.down / choice.down};
    }
    return stages;
  }

 private:
  static constexpr int Impossible = std::numeric_limits<int>::max();

  struct Choice {
    int stages = Impossible;
    double cost = 0.0;  // products for each input sample of the whole chain
    int up = 1;         // of the first of the stages
    int down = 1;
  };

  static std::vector<int> Divisors(std::int64_t value, int most) {
    std::vector<int> divisors;
    for (int d = 1; d <= most; ++d) {
      if (value % d == 0) {
        divisors.push_back(d);
      }
    }
    return divisors;
  }

  // The rate that is reached when this is left, in units of the rate that the chain is fed.
  double RateAt(const RateRatio& left) const {
    const RateRatio done = {ratio.up / left.up, ratio.down / left.down};
    return static_cast<double>(done.up) / static_cast<double>(done.down);
  }

  const Choice& Best(const RateRatio& left) {
    const auto [place, isNew] = choices.try_emplace({left.up, left.down});
    if (!isNew) {
      return place->second;
    }
    Choice& best = place->second;  // places in a map stay where they are
    if (left.up == 1 && left.down == 1) {
      best.stages = 0;
      return best;
    }
    for (const int up : Divisors(left.up, quality.largestFactor)) {
      for (const int down : Divisors(left.down, quality.largestFactor)) {
        if (up != 1 || down != 1) {
          Improve(best, up, down, {left.up / up, left.down / down});
        }
      }
    }
    return best;
  }

  void Improve(Choice& best, int up, int down, const RateRatio& after) {
    const double rate = RateAt(after);
    const double lowest = std::min(1.0, RateAt({1, 1}));
    if (rate < lowest * (1.0 - 1e-9)) {
      return;
    }
    const Choice& rest = Best(after);
    if (rest.stages == Impossible) {
      return;
    }
    const ResamplerStage stage = Stage(up, down, quality);
    if (stage.halfLength < LeastReach * quality.reach * std::max(up, down)) {
      return;
    }
    const int taps = 2 * (stage.halfLength / up) + 1;
    const Choice choice = {rest.stages + 1, rest.cost + taps * rate, up, down};
    if (std::tie(choice.stages, choice.cost) < std::tie(best.stages, best.cost)) {
      best = choice;
    }
  }

  RateRatio ratio;
  const ResamplerQuality& quality;
  std::map<std::pair<std::int64_t, std::int64_t>, Choice> choices;
};

}  // namespace

std::span<const ResamplerQuality> ResamplerQualities() { return Qualities; }

const ResamplerQuality* FindQuality(std::string_view name) {
  const auto* found = std::ranges::find(Qualities, name, &ResamplerQuality::name);
  return found == std::end(Qualities) ? nullptr : found;
}

std::optional<RateRatio> RatioOf(double value) {
  constexpr double Most = std::numeric_limits<std::int32_t>::max();
  // A few roundings of doubles away, and far nearer than two fractions of rates can be.
  constexpr double Tolerance = 1e-13;
  RateRatio before = {1, 0};
  RateRatio now = {static_cast<std::int64_t>(std::min(std::floor(value), Most)), 1};
  double rest = value - std::floor(value);
  // Convergents of the continued fraction: no fraction of smaller terms comes as near.
  while (std::abs(static_cast<double>(now.up) / static_cast<double>(now.down) - value) >
         Tolerance * value) {
    const double whole = std::floor(1.0 / rest);
    if (!(whole * static_cast<double>(std::max(now.up, now.down)) < Most)) {
      return std::nullopt;
    }
    const auto times = static_cast<std::int64_t>(whole);
    rest = 1.0 / rest - whole;
    before =
        std::exchange(now, RateRatio{times * now.up + before.up, times * now.down + before.down});
  }
  return now.up >= 1 && static_cast<double>(std::max(now.up, now.down)) < Most ? std::optional(now)
                                                                               : std::nullopt;
}

std::vector<double> ResamplerStage::Parameters() const {
  return {static_cast<double>(down),
          static_cast<double>(up),
          0.0,
          0.0,
          0.0,
          static_cast<double>(halfLength),
          Cutoff(),
          widen};
}

std::vector<ResamplerStage> PlanStages(const RateRatio& ratio, const ResamplerQuality& quality) {
  const std::int64_t common = std::gcd(ratio.up, ratio.down);
  const RateRatio lowest = {ratio.up / common, ratio.down / common};
  if (lowest.up == 1 && lowest.down == 1) {
    return {ResamplerStage{}};
  }
  return Planner(lowest, quality).Plan();
}

}  // namespace wavechain
