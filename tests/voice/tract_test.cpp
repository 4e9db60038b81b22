#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "voice/voice.h"

// The tract filter of the glottal source, seen from outside. A pulse at the first sample of a block
// has no rising part: with a resonance of half the sampling rate and no bandwidth it is a single
// sample of -A / 2, and what follows is the ringing of the tract, G / A(z).
namespace voice {
namespace {

using Polynomial = std::vector<double>;

// The ringing to an impulse of 1, for 600 samples. Its period reaches so far that no bandwidth is
// widened within them.
Samples Ringing(const std::vector<float>& ratios) {
  const Samples block = Rendered(support::GlotSyn, Line({0, -2, 0.5, 0}, ratios), 3000);
  return support::Slice(block, 0, 600);
}

// A(z) from G / A(z): the first sample is G, and each coefficient follows from the next sample.
Polynomial Predictor(const Samples& ringing, std::size_t order) {
  Polynomial a{1.0};
  for (std::size_t n = 1; n <= order; ++n) {
    double sum = 0.0;
    for (std::size_t j = 0; j < n; ++j) {
      sum += a[j] * static_cast<double>(ringing[n - j]) / static_cast<double>(ringing[0]);
    }
    a.push_back(-sum);
  }
  return a;
}

float LogAreaRatio(double k) { return static_cast<float>(std::log2((1.0 + k) / (1.0 - k))); }

void ExpectNear(const Polynomial& actual, const Polynomial& expected, double tolerance) {
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_NEAR(actual[i], expected[i], tolerance) << "coefficient " << i;
  }
}

// A worked example of the step-up recursion that is often printed, to four digits.
TEST(Tract, StepsUpTheWorkedExample) {
  const Polynomial expected{1.0, 0.6148, 0.9899, 0.0000, 0.0032, -0.0082};
  const std::vector<float> ratios{0.921707F, 6.629357F, 0.008945F, 0.023661F, -0.023661F};
  ExpectNear(Predictor(Ringing(ratios), 5), expected, 6e-5);
  std::vector<float> fromReflections;
  for (const double k : {0.3090, 0.9800, 0.0031, 0.0082, -0.0082}) {
    fromReflections.push_back(LogAreaRatio(k));
  }
  ExpectNear(Predictor(Ringing(fromReflections), 5), expected, 6e-5);
}

TEST(Tract, HasTheGainThatIsTheProductOfOnePlusK) {
  std::mt19937 bits(3);
  std::uniform_real_distribution<double> anyK(-0.6, 0.6);
  for (int order = 1; order <= 12; ++order) {
    std::vector<float> ratios;
    double product = 1.0;
    for (int i = 0; i < order; ++i) {
      const double k = anyK(bits);
      ratios.push_back(LogAreaRatio(k));
      product *= 1.0 + k;
    }
    EXPECT_NEAR(Ringing(ratios)[0] / product, 1.0, 2e-5) << order;
  }
}

TEST(Tract, RingsLikeAnAutoregressiveProcessOfOrderOne) {
  const Samples ringing = Ringing({static_cast<float>(std::log2(0.1 / 1.9))});
  for (std::size_t n = 0; n < 100; ++n) {
    EXPECT_NEAR(ringing[n], 0.1 * std::pow(0.9, static_cast<double>(n)), 1e-6) << n;
  }
}

// Two reflections of a resonance: k2 = r^2 and k1 = -2 r cos(w) / (1 + r^2).
TEST(Tract, RingsLikeAResonance) {
  const double radius = 0.95;
  const double angle = 0.4;
  const double k2 = radius * radius;
  const double k1 = -2.0 * radius * std::cos(angle) / (1.0 + k2);
  const Samples ringing = Ringing({LogAreaRatio(k1), LogAreaRatio(k2)});
  const double gain = 1.0 - 2.0 * radius * std::cos(angle) + k2;
  for (std::size_t n = 0; n < 200; ++n) {
    const auto place = static_cast<double>(n);
    const double expected =
        gain * std::pow(radius, place) * std::sin((place + 1.0) * angle) / std::sin(angle);
    EXPECT_NEAR(ringing[n], expected, 1e-5) << n;
  }
}

TEST(Tract, HasUnitGainAtZeroFrequency) {
  const Samples ringing = Ringing({1.0F, -2.0F, 0.5F, 1.5F, -0.25F});
  double sum = 0.0;
  for (const float sample : ringing) sum += static_cast<double>(sample);
  EXPECT_NEAR(sum, 1.0, 1e-5);
}

// A uniform tube of P sections that is all but closed at its end sounds at the odd multiples of
// rate / (2 P): every P samples a reflection returns with its sign turned.
TEST(Tract, EchoesInAUniformTube) {
  std::vector<float> ratios(8, 0.0F);
  ratios[7] = LogAreaRatio(0.5);
  const Samples ringing = Ringing(ratios);
  for (std::size_t n = 0; n < 60; ++n) {
    const double echo = std::pow(-0.5, static_cast<double>(n / 8));
    EXPECT_NEAR(ringing[n], n % 8 == 0 ? 1.5 * echo : 0.0, 1e-6) << n;
  }
}

TEST(Tract, LetsThroughAsItIsWhereAllRatiosAreZero) {
  for (const std::size_t order : {1U, 2U, 40U, 256U}) {
    const Samples ringing = Ringing(std::vector<float>(order, 0.0F));
    EXPECT_EQ(ringing[0], 1.0F);
    EXPECT_EQ(Sounding(ringing), (Extent{0, 1})) << order;
  }
}

TEST(Tract, GoesWithoutRatios) {
  for (const char* rest : {"", " x", " - 1", " 1e99 1"}) {
    const Samples block = Rendered(support::GlotSyn, "0 -2 0.5 0" + std::string(rest), 3000);
    EXPECT_EQ(block[0], 1.0F);
    EXPECT_EQ(Sounding(block), (Extent{0, 1})) << rest;
  }
}

TEST(Tract, TakesTheRatiosUpToTheFirstThatIsNone) {
  const std::string line = "0 -2 0.5 0 0.5 -0.25";
  const Samples expected = Rendered(support::GlotSyn, line, 3000);
  for (const char* rest : {" x 3", " 1e99 3", "\t,3", " nan 3", "\r\n"}) {
    EXPECT_TRUE(support::SameBits(Rendered(support::GlotSyn, line + rest, 3000), expected)) << rest;
  }
  EXPECT_NE(Rendered(support::GlotSyn, line + " 0.125", 3000), expected);
}

TEST(Tract, ReadsNoMoreThan256Ratios) {
  std::vector<float> ratios;
  for (int i = 0; i < 300; ++i) ratios.push_back(0.01F * static_cast<float>(i % 7 - 3) + 0.01F);
  const auto first = [&ratios](std::ptrdiff_t count) {
    return Ringing(std::vector<float>(ratios.begin(), ratios.begin() + count));
  };
  EXPECT_TRUE(support::SameBits(first(257), first(256)));
  EXPECT_TRUE(support::SameBits(first(300), first(256)));
  EXPECT_NE(first(255), first(256));
  // The rest of a line is left unread, whatever stands there.
  std::string text = Line({0, -2, 0.5, 0}, {ratios.begin(), ratios.begin() + 256});
  text.insert(text.size() - 1, "x 1e999");
  EXPECT_TRUE(support::SameBits(support::Slice(Rendered(support::GlotSyn, text, 3000), 0, 600),
                                first(256)));
}

TEST(Tract, ForgetsTheRatiosOfTheLineBefore) {
  const std::string bare = "1200 -2 0.5 0\n";
  const Samples after =
      Rendered(support::GlotSyn, Line({0, -2, 0.5, 0}, {0.5F, 0.5F}) + bare, 3000);
  const Samples alone = Rendered(support::GlotSyn, bare, 3000);
  EXPECT_TRUE(
      support::SameBits(support::Slice(after, 1100, 1900), support::Slice(alone, 1100, 1900)));
}

}  // namespace
}  // namespace voice
