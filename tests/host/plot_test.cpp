// The pieces of pictures that can be computed beforehand: ticks, colours, lines, levels, titles.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

#include "host/failure.h"
#include "host/plot_axis.h"
#include "host/plot_colours.h"
#include "host/plot_label.h"
#include "host/plot_layout.h"
#include "host/plot_spectrogram.h"
#include "host/plot_trace.h"

namespace wavechain {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> Labels(const Range& range, int most) {
  std::vector<std::string> labels;
  for (const Tick& tick : NiceTicks(range, most)) {
    labels.push_back(tick.label);
  }
  return labels;
}

TEST(Ticks, StandAtMultiplesOfOneTwoOrFive) {
  EXPECT_THAT(Labels({0.0, 10.3}, 6), ElementsAre("0", "2", "4", "6", "8", "10"));
  EXPECT_THAT(Labels({-0.5, 0.5}, 3), ElementsAre("-0.5", "0.0", "0.5"));
  EXPECT_THAT(Labels({-0.39, 0.39}, 3), ElementsAre("-0.2", "0.0", "0.2"));
  EXPECT_THAT(Labels({-0.5, 0.5}, 5), ElementsAre("-0.4", "-0.2", "0.0", "0.2", "0.4"));
  EXPECT_THAT(Labels({0.99, 1.02}, 4), ElementsAre("0.99", "1.00", "1.01", "1.02"));
  EXPECT_THAT(Labels({-200000.0, 200000.0}, 5),
              ElementsAre("-200000", "-100000", "0", "100000", "200000"));
  EXPECT_THAT(Labels({0.0, 3e-8}, 4), ElementsAre("0", "1e-08", "2e-08", "3e-08"));
  EXPECT_THAT(Labels({0.0, 2e9}, 3), ElementsAre("0", "1e+09", "2e+09"));
}

TEST(Ticks, AreLeftOutWhereThereIsNoRange) {
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_THAT(NiceTicks({1.0, 1.0}, 5), IsEmpty());
  EXPECT_THAT(NiceTicks({2.0, 1.0}, 5), IsEmpty());
  EXPECT_THAT(NiceTicks({0.0, infinity}, 5), IsEmpty());
  EXPECT_THAT(NiceTicks({1e20, 1e20 * (1 + 1e-15)}, 5), IsEmpty());
}

TEST(Ranges, HaveAirAndNeverEmpty) {
  EXPECT_EQ(Padded(std::nullopt), (Range{0.0, 1.0}));
  EXPECT_EQ(Padded(Range{0.0, 0.0}), (Range{-1.0, 1.0}));
  EXPECT_EQ(Padded(Range{10.0, 10.0}), (Range{9.0, 11.0}));
  EXPECT_DOUBLE_EQ(Padded(Range{0.0, 100.0}).low, -6.0);
  EXPECT_DOUBLE_EQ(Symmetrical(Range{-2.0, 1.0}).high, 2.12);
  EXPECT_EQ(Symmetrical(std::nullopt), (Range{-1.0, 1.0}));
}

TEST(Colours, AreThoseOfTheirSources) {
  EXPECT_EQ(Viridis(0.0), 0x440154U);
  EXPECT_EQ(Viridis(1.0), 0xfde725U);
  EXPECT_EQ(Viridis(0.5), 0x21918cU);
  EXPECT_EQ(Viridis(-3.0), Viridis(0.0));
  EXPECT_EQ(Viridis(7.0), Viridis(1.0));
  EXPECT_EQ(Viridis(std::nan("")), Viridis(0.0));
  EXPECT_EQ(LineColour(0), 0x0072b2U);
  EXPECT_EQ(LineColour(7), LineColour(0));
}

TEST(Line, KeepsTheExtremesOfEachColumn) {
  Trace trace({0.0, 10.0}, 10);
  const double values[] = {1.0, 5.0, -2.0, 3.0};
  for (int i = 0; i < 4; ++i) {
    trace.Add(0.1 + 0.2 * i, values[i], false);
  }
  trace.Add(1.5, 0.0, false);
  trace.Finish(0.2);
  ASSERT_EQ(trace.Pieces().size(), 1U);
  std::vector<double> kept;
  for (const Point& point : trace.Pieces().front()) {
    kept.push_back(point.y);
  }
  EXPECT_THAT(kept, ElementsAre(1.0, 5.0, -2.0, 3.0, 0.0));
  EXPECT_EQ(*trace.Values(), (Range{-2.0, 5.0}));
}

TEST(Line, TakesNoMoreThanFourPointsAColumn) {
  Trace trace({0.0, 1.0}, 10);
  for (int i = 0; i < 10000; ++i) {
    trace.Add(i * 1e-4, std::sin(0.1 * i), false);
  }
  trace.Finish(1e-4);
  EXPECT_LE(trace.Pieces().front().size(), 40U);
}

TEST(Line, BreaksWhereSamplesAreMissing) {
  Trace trace({0.0, 10.0}, 100);
  for (int i = 0; i <= 10; ++i) {
    trace.Add(i, i == 7 ? std::nan("") : 1.0, i == 3 || i == 4 || i == 10);
  }
  trace.Finish(1.0);
  EXPECT_EQ(trace.Pieces().size(), 3U);
  EXPECT_THAT(trace.Gaps(), ElementsAre(Range{3.0, 5.0}, Range{7.0, 8.0}));
}

TEST(Line, RunsUpToTheEdgesOfTheView) {
  Trace trace({2.5, 4.5}, 100);
  for (int i = 0; i < 10; ++i) {
    trace.Add(i, 10.0 * i, false);
  }
  trace.Finish(1.0);
  const std::vector<Point>& piece = trace.Pieces().front();
  EXPECT_EQ(piece.front().x, 2.0);
  EXPECT_EQ(piece.back().x, 5.0);
  EXPECT_EQ(*trace.Values(), (Range{30.0, 40.0}));
}

TEST(Line, HasNoValueWhereAllIsMissing) {
  Trace trace({0.0, 4.0}, 10);
  for (int i = 0; i < 6; ++i) {
    trace.Add(i, 0.0, true);
  }
  trace.Finish(1.0);
  EXPECT_FALSE(trace.Values());
  EXPECT_THAT(trace.Pieces(), IsEmpty());
  EXPECT_THAT(trace.Gaps(), ElementsAre(Range{0.0, 4.0}));
}

std::vector<float> Tone(double frequency, double rate, int count, double amplitude) {
  std::vector<float> samples;
  for (int i = 0; i < count; ++i) {
    samples.push_back(
        static_cast<float>(amplitude * std::sin(2.0 * std::numbers::pi * frequency * i / rate)));
  }
  return samples;
}

TEST(Levels, OfAToneAreItsAmplitude) {
  // 50 rows of 80 Hz; 1000 Hz is the middle of row 12. The window spans whole periods.
  const SpectrogramGrid grid = {{0.2, 0.4}, 8, 4000.0, 50, 0.032};
  const std::vector<float> samples = Tone(1000.0, 8000.0, 8000, 0.1);
  Spectrogram whole(grid, 1.0 / 8000.0);
  whole.Add(samples.data(), 8000);
  whole.Finish();
  EXPECT_NEAR(*whole.Level(3, 12), -20.0, 0.01);
  EXPECT_LT(*whole.Level(3, 40), -90.0);
  EXPECT_NEAR(*whole.Greatest(), -20.0, 0.01);

  Spectrogram split(grid, 1.0 / 8000.0);
  for (int at = 0; at < 8000; at += 125) {
    split.Add(samples.data() + at, 125);
  }
  split.Finish();
  for (int column = 0; column < grid.columns; ++column) {
    for (int row = 0; row < grid.rows; ++row) {
      ASSERT_EQ(whole.Level(column, row), split.Level(column, row));
    }
  }
}

TEST(Levels, OfAConstantAreItsSize) {
  const std::vector<float> samples(8000, 0.5F);
  // The window is as long as the transform, and the lowest row holds 0 Hz alone.
  Spectrogram spectra({{0.2, 0.4}, 4, 4000.0, 128, 0.032}, 1.0 / 8000.0);
  spectra.Add(samples.data(), 8000);
  spectra.Finish();
  EXPECT_NEAR(*spectra.Level(1, 0), 20.0 * std::log10(0.5), 1e-6);
}

TEST(Levels, AreBlankWithoutSignal) {
  // The signal ends in the middle of the view, and the grid reaches beyond half its rate.
  const std::vector<float> samples = Tone(500.0, 4000.0, 2000, 1.0);
  Spectrogram spectra({{0.0, 1.0}, 10, 4000.0, 40, 0.02}, 1.0 / 4000.0);
  spectra.Add(samples.data(), 2000);
  spectra.Finish();
  for (int column = 0; column < 10; ++column) {
    EXPECT_EQ(spectra.Level(column, 5).has_value(), column < 5) << column;
    EXPECT_FALSE(spectra.Level(column, 20)) << column;
  }
}

double LetterWidth(std::string_view text) { return static_cast<double>(text.size()); }

TEST(Titles, BreakAtBlanks) {
  EXPECT_THAT(WrapTitle("one two three", 20.0, 3, LetterWidth), ElementsAre("one two three"));
  EXPECT_THAT(WrapTitle("one two three", 8.0, 3, LetterWidth), ElementsAre("one two", "three"));
  EXPECT_THAT(WrapTitle("one two three four", 10.0, 1, LetterWidth),
              ElementsAre("one two\xe2\x80\xa6"));
  EXPECT_THAT(WrapTitle("interminable", 8.0, 2, LetterWidth), ElementsAre("inter\xe2\x80\xa6"));
}

TEST(Titles, HoldCharactersAlone) {
  EXPECT_EQ(ValidUtf8("caf\xc3\xa9 \xe4\xb8\xad \xf0\x9f\x8e\xb5"),
            "caf\xc3\xa9 \xe4\xb8\xad \xf0\x9f\x8e\xb5");
  const std::string replacement = "\xef\xbf\xbd";
  EXPECT_EQ(ValidUtf8("a\xff"
                      "b\xc3"),
            "a" + replacement + "b" + replacement);
  // Overlong, a surrogate, beyond the last character.
  EXPECT_EQ(ValidUtf8("\xc0\x80"), replacement + replacement);
  EXPECT_EQ(ValidUtf8("\xed\xa0\x80").size(), 9U);
  EXPECT_EQ(ValidUtf8("\xf4\x90\x80\x80").size(), 12U);
  EXPECT_EQ(PrintedUnit("mm/s^2 x 6.866"), "mm/s\xc2\xb2 \xc3\x97 6.866");
}

TEST(Layouts, PutPanelsBelowEachOther) {
  const std::vector<PanelPlan> plans = {
      {PanelKind::Waveform, 1}, {PanelKind::Spectrogram, 0}, {PanelKind::Track, 2}};
  for (const auto& wanted : {std::optional<PictureSize>(), std::optional(PictureSize{500, 900})}) {
    const Layout layout = LayOut(plans, wanted);
    int y = 0;
    for (const Box& plot : layout.plots) {
      EXPECT_GE(plot.y, y);
      EXPECT_EQ(plot.width, PlotWidth(layout.size.width, true));
      y = plot.y + plot.height;
    }
    EXPECT_LT(y, layout.size.height);
  }
  EXPECT_EQ(LayOut(plans, PictureSize{500, 900}).size.height, 900);
  EXPECT_THROW(LayOut(plans, PictureSize{500, 200}), Failure);
  EXPECT_THROW(LayOut(plans, PictureSize{200, 900}), Failure);
}

}  // namespace
}  // namespace wavechain
