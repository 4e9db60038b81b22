#include <gtest/gtest.h>

#include "reference/glot_syn.h"
#include "tracks/twin.h"
#include "voice/voice.h"

// The glottal source beside its model, where numbers leave what is sensible and where pulses are
// worked out together.
namespace voice {
namespace {

using support::Constant;
using support::Noise;

// Whatever a file says, the numbers are the model's, beyond the range of floats, too.
TEST(GlotSyn, KeepsToTheModelForSenselessNumbers) {
  for (const char* line :
       {"1500 1e300 0.1 0.01 1", "1500 1 0.25 0 1", "1500 1 0 0 -1", "1500 1 1e300 0.1 1",
        "1500 1 0.1 1e300 1", "1500 1 0.1 -1e300 1", "1500 1 0.1 -0.2 1", "1500 1 0.1 3 2000",
        "1500 1 0.1 0.1 -2000", "1500 1 0.1 0.1 3e38 -3e38", "1500 1 0.1 0.1 50 50 50 50 50",
        "1500 1e-300 0.1 0.1 -50 -50 50 -50", "1500 -0 0.1 0.1 1", "1500 1 0.1 40 1"}) {
    for (const char* next : {"\n1600 1 0.1 0.1 1", "\n1600", ""}) {
      tracks::Twin<reference::GlotSyn> twin(support::GlotSyn);
      twin.Supply({{".gpl", std::string(line) + next}});
      twin.Init(1.0);
      twin.Apply(Noise(4000), 4000, 0);
      twin.Apply(Constant(4000, -0.0F), 4000, 0);
    }
  }
}

// Numbers at which another order of the same operations gives other bits.
TEST(GlotSyn, MultipliesFromLeftToRight) {
  struct Case {
    const char* line;
    double interval_ms;
  };
  for (const Case& each :
       {Case{"70 1 3.9 0.01 1", 0.25 / 3.9}, Case{"150 1 161.3 161.31300354003906", 0.06875}}) {
    tracks::Twin<reference::GlotSyn> twin(support::GlotSyn);
    twin.Supply({{".gpl", each.line}});
    twin.Init(each.interval_ms);
    twin.Apply(Constant(5000), 5000, 0);
  }
}

// With so many reflections of 1 the coefficients are binomials, the middle ones beyond any float.
TEST(GlotSyn, KeepsToTheModelForCoefficientsWithoutBounds) {
  const std::vector<float> closed(200, 50.0F);
  const std::vector<float> open(200, 0.125F);
  for (const bool closedFirst : {false, true}) {
    for (const bool closedLast : {false, true}) {
      // Half of the pulses rise for a few samples only, the last one for as many as there can be.
      tracks::Twin<reference::GlotSyn> twin(support::GlotSyn);
      twin.Supply({{".gpl", Line({100, 1, 0.1, 0.01}, closedFirst ? closed : open) +
                                Line({101, 1, 0.1, 0.01}, closedLast ? closed : open) +
                                Line({1400, 1, 0.1, 0.01}, closedFirst ? closed : open) +
                                Line({1401, 1, 0.1, 0.01}, closedLast ? closed : open)}});
      twin.Init(1.0);
      twin.Apply(Noise(4000), 4000, 0);
    }
  }
}

// Neighbours of one order and of many periods, in numbers around those that fit into a register.
TEST(GlotSyn, KeepsToTheModelForManyPulsesOfOneOrder) {
  const std::vector<float> ratios{0.5F, -1.0F, 2.0F, 0.25F, -0.75F};
  for (const int order : {0, 1, 3, 5}) {
    for (int count = 1; count <= 20; ++count) {
      std::string text;
      double time_ms = 0.0;
      for (int pulse = 0; pulse < count; ++pulse) {
        text += Line({time_ms, 1.0 + pulse, 0.01 + 0.002 * pulse, 0.001 * pulse},
                     {ratios.begin(), ratios.begin() + order});
        time_ms += (pulse * 37) % 150 + pulse % 3;
      }
      tracks::Twin<reference::GlotSyn> twin(support::GlotSyn);
      twin.Supply({{".gpl", text}});
      twin.Init(1.0);
      twin.Apply(Noise(4000), 4000, 0);
    }
  }
}

TEST(GlotSyn, KeepsToTheModelOnNegativeZeros) {
  for (const char* ratios : {"", " 0", " 0 0 0", " 1 -1", " -3"}) {
    tracks::Twin<reference::GlotSyn> twin(support::GlotSyn);
    twin.Supply({{".gpl", std::string("600 0 0.1 0.1") + ratios + "\n700 1 0.1 0.1" + ratios}});
    twin.Init(1.0);
    twin.Apply(Constant(4000, -0.0F), 4000, 0);
  }
}

}  // namespace
}  // namespace voice
