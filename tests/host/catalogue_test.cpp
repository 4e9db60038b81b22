#include "host/catalogue.h"

#include <gtest/gtest.h>

#include <set>

#include "host/catalogue_text.h"

namespace {

using wavechain::Catalogue;
using wavechain::FilterKind;
using wavechain::Parameter;

TEST(Catalogue, HoldsThirteenKindsWithNamesOfTheirOwn) {
  std::set<std::string_view> names;
  std::set<std::string_view> entries;
  for (const FilterKind& kind : Catalogue()) {
    names.insert(kind.name);
    entries.insert(kind.entryPoint);
    EXPECT_EQ(wavechain::FindFilter(kind.name), &kind);
  }
  EXPECT_EQ(names.size(), 13U);
  EXPECT_EQ(entries, (std::set<std::string_view>{"SetTrackI", "BeamPelI", "BeamDataI", "GlotSynI",
                                                 "FricSynI", "PulseSynI", "FIRFilterI", "FIRNotchI",
                                                 "ResampleI", "SumSourcesI", "EchoCancelI",
                                                 "SineGenI", "SquareGenI"}));
  EXPECT_EQ(wavechain::FindFilter("SineGen"), nullptr);
}

TEST(Catalogue, IsComplete) {
  for (const FilterKind& kind : Catalogue()) {
    EXPECT_FALSE(kind.purpose.empty()) << kind.name;
    std::set<std::string_view> names;
    for (const Parameter& parameter : kind.parameters) {
      EXPECT_FALSE(parameter.help.empty()) << kind.name << " " << parameter.name;
      EXPECT_TRUE(names.insert(parameter.name).second) << kind.name << " " << parameter.name;
      EXPECT_LE(parameter.minimum, parameter.maximum);
      EXPECT_EQ(parameter.computed == nullptr, parameter.computedText.empty());
      if (parameter.preset) {
        EXPECT_GE(*parameter.preset, parameter.minimum);
        EXPECT_LE(*parameter.preset, parameter.maximum);
      }
    }
  }
}

TEST(Catalogue, SaysRangesAndDefaultsInWords) {
  const auto words = [](const Parameter& parameter) {
    return wavechain::RangeText(parameter) + "; " + wavechain::DefaultText(parameter);
  };
  const auto rule = [](std::span<const double>) { return 0.0; };
  EXPECT_EQ(words({.name = "a", .unit = "Hz", .help = ""}), "Hz, real, any value; none");
  EXPECT_EQ(words({.name = "a", .unit = "", .help = "", .preset = 3, .minimum = 1, .whole = true}),
            "whole, 1 or more; 3");
  EXPECT_EQ(words({.name = "a", .unit = "", .help = "", .preset = 0.5, .maximum = 1}),
            "real, 1 or less; 0.5");
  EXPECT_EQ(words({.name = "a",
                   .unit = "",
                   .help = "",
                   .computed = rule,
                   .computedText = "by rule",
                   .minimum = -1,
                   .maximum = 1}),
            "real, -1 to 1; by rule");
}

}  // namespace
