#include "host/plot_colours.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace wavechain {
namespace {

using Three = std::array<double, 3>;

// What a reader sees of a colour, in linear sRGB. Without red or green cones: F. Viénot, H. Brettel
// and J. Mollon, "Digital video colourmaps for checking the legibility of displays by dichromats"
// (1999), for sRGB's primaries.
struct Reader {
  const char* name;
  std::array<Three, 3> sees;
};
constexpr std::array<Reader, 3> Readers = {{
    {"all cones", {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}}},
    {"no red cones", {{{0.11238, 0.88762, 0}, {0.11238, 0.88762, 0}, {0.00401, -0.00401, 1}}}},
    {"no green cones", {{{0.29275, 0.70725, 0}, {0.29275, 0.70725, 0}, {-0.02234, 0.02234, 1}}}},
}};

double Linear(Colour channel) {
  const double v = channel / 255.0;
  return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
}

double Dot(const Three& a, const Three& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

// CIE L*a*b* of a colour as the reader sees it, whose steps are about equally plain: one of 2 is
// just seen.
Three Lab(Colour colour, const Reader& reader) {
  const Three light = {Linear(colour >> 16 & 255), Linear(colour >> 8 & 255), Linear(colour & 255)};
  Three seen = {};
  for (std::size_t i = 0; i < 3; ++i) {
    seen[i] = std::clamp(Dot(reader.sees[i], light), 0.0, 1.0);
  }
  const auto root = [](double t) {
    return t > 216.0 / 24389.0 ? std::cbrt(t) : (24389.0 / 27.0 * t + 16.0) / 116.0;
  };
  const double x = root(Dot({0.4124, 0.3576, 0.1805}, seen) / 0.9505);
  const double y = root(Dot({0.2126, 0.7152, 0.0722}, seen));
  const double z = root(Dot({0.0193, 0.1192, 0.9505}, seen) / 1.089);
  return {116 * y - 16, 500 * (x - y), 200 * (y - z)};
}

TEST(Colours, OfLinesAreToldApartByColourBlindReaders) {
  for (const Reader& reader : Readers) {
    for (std::size_t i = 0; i < 7; ++i) {
      for (std::size_t j = 0; j < i; ++j) {
        const Three a = Lab(LineColour(i), reader);
        const Three b = Lab(LineColour(j), reader);
        EXPECT_GT(std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]), 15.0)
            << reader.name << ": " << i << " and " << j;
      }
    }
  }
}

TEST(Colours, OfLevelsGrowLighterForColourBlindReaders) {
  constexpr int Steps = 16;
  for (const Reader& reader : Readers) {
    for (int i = 0; i < Steps; ++i) {
      const double below = Lab(Viridis(static_cast<double>(i) / Steps), reader)[0];
      EXPECT_GT(Lab(Viridis((i + 1.0) / Steps), reader)[0], below + 3.0)
          << reader.name << ": " << i;
    }
  }
}

}  // namespace
}  // namespace wavechain
