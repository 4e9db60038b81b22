#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <list>
#include <utility>
#include <vector>

#include "reference/resampler.h"
#include "support/filter.h"
#include "support/twin_source.h"

namespace resample {

// Positions in the resampler's parameter list.
enum Parameter { Down, Up, DownStart, PhaseStart, Shift, HalfLength, Cutoff, Widen };

// Parameter lists of every length whose streams can be walked step by step.
inline std::vector<double> NearParameters(support::Dice& dice) {
  const int up = dice.OneIn(3) ? dice.Int(1, 100) : dice.Int(1, 9);
  const int down = dice.OneIn(3) ? dice.Int(1, 100) : dice.Int(1, 9);
  const auto start = [&dice](int period) {
    if (dice.OneIn(2)) return 0;
    return dice.OneIn(3) ? dice.Int(-3000, 3000) : dice.Int(-2 * period, 2 * period);
  };
  std::vector<double> p{down + dice.Real(0.0, 0.99),
                        up + dice.Real(0.0, 0.99),
                        static_cast<double>(start(down)),
                        static_cast<double>(start(up)),
                        dice.OneIn(2) ? 0.0 : dice.Real(-1.0, 1.0),
                        dice.OneIn(4) ? dice.Real(-3.0, 2500.0) : dice.Real(0.0, 150.0),
                        dice.Real(0.001, 1.5),
                        dice.Real(-2.0, 5.0)};
  p.resize(static_cast<std::size_t>(dice.Int(0, 8)));
  return p;
}

// Values that no user means.
inline double OddValue(support::Dice& dice) {
  const double exact = static_cast<double>(dice.Between(-2147483648LL, 2147483647LL));
  return dice.OneOf<double>({exact,         exact,        std::nan(""), 1e300,        -1e300,
                             HUGE_VAL,      -HUGE_VAL,    2147483647.0, 2147483646.0, -2147483648.0,
                             -2147483647.0, 4294967297.0, -2.9,         -0.5,         0.0,
                             1.0,           2.0,          60.0,         65536.0,      1000003.0});
}

// Parameter lists with factors and starts over the whole range.
inline std::vector<double> FarParameters(support::Dice& dice) {
  const auto factor = [&dice] {
    return dice.OneIn(2) ? OddValue(dice) : static_cast<double>(dice.Int(1, 200));
  };
  const auto start = [&dice] { return dice.OneIn(3) ? 0.0 : OddValue(dice); };
  std::vector<double> p{factor(), factor(), start(), start()};
  p.push_back(dice.OneIn(4) ? OddValue(dice) : dice.Real(-1.0, 1.0));
  p.push_back(dice.OneIn(2) ? OddValue(dice) : dice.Real(0.0, 2500.0));
  p.push_back(dice.OneIn(4) ? OddValue(dice) : dice.Real(0.001, 1.5));
  p.push_back(dice.OneIn(4) ? OddValue(dice) : dice.Real(-2.0, 5.0));
  if (dice.OneIn(3)) p.resize(static_cast<std::size_t>(dice.Int(0, 8)));
  return p;
}

// What the resampler makes of a source's length and interval.
inline support::Description Described(const std::vector<double>& p, int length,
                                      double interval_ms) {
  support::CallLog log;
  support::SourceMock source("source", log);
  source.description.length = length;
  source.description.interval_ms = interval_ms;
  support::Filter filter = support::MakeFilter(support::Resample);
  filter.Set_param_list(p);
  filter.Set_src_list(source);
  return filter.GetDescriptor(source);
}

// A resampler of the library and its model, given the same parameters and sources.
struct Pair {
  explicit Pair(reference::Walk walk = reference::Walk::Steps) : model(walk) {}

  void Set_param_list(const std::vector<double>& p) {
    filter.Set_param_list(p);
    model.Set_param_list(p);
  }

  support::TwinSource& NewSource(support::Samples signal) {
    const std::string name = "source" + std::to_string(sources.size());
    return sources.emplace_back(name, log, calls, std::move(signal));
  }

  void Attach(const std::vector<support::TwinSource*>& given) {
    std::vector<support::SourceMock*> mocks;
    std::vector<reference::ScriptedSource*> models;
    for (support::TwinSource* source : given) {
      mocks.push_back(&source->mock);
      models.push_back(&source->model);
    }
    filter.Set_src_list(mocks);
    model.Set_src_list(models);
  }
  void Attach(support::TwinSource& source) { Attach({&source}); }
  void Attach(support::Samples signal) { Attach(NewSource(std::move(signal))); }

  // Both deliver the same, ask the same of the host, and are at the same end.
  void Pull(int n) {
    EXPECT_TRUE(support::SameBitsOrNaN(filter.Pull(n), model.TransmitNow(n))) << "a pull of " << n;
    SameCalls();
    EXPECT_EQ(filter.EndOfSrc(), model.EndOfSrc()) << "after a pull of " << n;
  }

  // The end stands still where the parameters say so; a test sets a bound.
  void PullToEnd(const std::vector<int>& sizes, int bound = 100000) {
    for (int i = 0; i < bound && !model.EndOfSrc() && !testing::Test::HasFailure(); ++i) {
      Pull(sizes[static_cast<std::size_t>(i) % sizes.size()]);
    }
  }

  void SameCalls() { EXPECT_EQ(log.Take(), std::exchange(calls, {})); }

  support::CallLog log;
  reference::CallList calls;
  std::list<support::TwinSource> sources;
  reference::Resampler model;
  support::Filter filter = support::MakeFilter(support::Resample);
};

}  // namespace resample
