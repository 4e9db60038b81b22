#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/failure.h"
#include "host/filter_arguments.h"

namespace {

using testing::ElementsAre;
using wavechain::Argument;
using wavechain::FilterCall;
using wavechain::ParseFilter;
using wavechain::SplitFilter;

// The words behind the name, "name=[value]" or "[value]".
std::vector<std::string> Words(const std::string& text) {
  std::vector<std::string> words;
  for (const Argument& argument : SplitFilter(text).arguments) {
    words.push_back((argument.name ? *argument.name + "=" : "") + "[" + argument.value + "]");
  }
  return words;
}

TEST(FilterText, IsSplitAtBlanks) {
  EXPECT_EQ(SplitFilter("  A ").name, "A");
  EXPECT_THAT(Words("A"), ElementsAre());
  EXPECT_THAT(Words(" A\t1\n b=2  c= "), ElementsAre("[1]", "b=[2]", "c=[]"));
  EXPECT_THAT(Words("A b=c=d =e"), ElementsAre("b=[c=d]", "=[e]"));
}

TEST(FilterText, KeepsBlanksInQuotes) {
  EXPECT_THAT(Words("A data='two words.xyd' with=\"a | B c=1\""),
              ElementsAre("data=[two words.xyd]", "with=[a | B c=1]"));
  EXPECT_THAT(Words("A 'b=c' d='' pre'mid dle'post"),
              ElementsAre("[b=c]", "d=[]", "[premid dlepost]"));
}

TEST(FilterText, BackslashKeepsWhatWouldSplitOrQuote) {
  EXPECT_THAT(Words(R"(A a=two\ words b=\"x\" c="say \"no\"" d='it\s' e=\\ f=C:\dir)"),
              ElementsAre("a=[two words]", "b=[\"x\"]", "c=[say \"no\"]", "d=[it\\s]", "e=[\\]",
                          "f=[C:\\dir]"));
}

TEST(FilterCall, HandsOverAsManyValuesAsReachTheLastOneGiven) {
  EXPECT_EQ(ParseFilter("SineFilter").handed, 0);
  EXPECT_EQ(ParseFilter("SineFilter 440").handed, 1);
  EXPECT_EQ(ParseFilter("SineFilter phase=90").handed, 3);
  EXPECT_THAT(ParseFilter("SineFilter phase=90").values, ElementsAre(100.0, 1.0, 90.0));
  EXPECT_THAT(ParseFilter("FIRNotch 200").values, ElementsAre(200.0, 2500.0, 0.5));
}

TEST(FilterCall, DefaultsMayFollowFromOtherParameters) {
  EXPECT_THAT(ParseFilter("ResampleBlackman up=3 widen=1").values,
              ElementsAre(1.0, 3.0, 0.0, 0.0, 0.0, 60.0, 1.0 / 3.0, 1.0));
  EXPECT_THAT(ParseFilter("ResampleBlackman 4 3").values,
              ElementsAre(4.0, 3.0, 0.0, 0.0, 0.0, 60.0, 0.25, 0.52));
}

TEST(FilterCall, NamesStandForValues) {
  EXPECT_EQ(ParseFilter("BeamData mode=speed").values[0], 5.0);
  EXPECT_EQ(ParseFilter("BeamData palate 1").values[0], 8.0);
  EXPECT_EQ(ParseFilter("BeamData 3").values[0], 3.0);
}

TEST(FilterCall, IsWrittenWithEveryParameterByName) {
  EXPECT_EQ(ParseFilter("FIRNotch 200").Text(),
            "FIRNotch half_length=200 frequency=2500 edge_weight=0.5");
  EXPECT_EQ(ParseFilter("GlotSyn").Text(), "GlotSyn");
  // What is written is read again as the same.
  EXPECT_EQ(ParseFilter(ParseFilter("SineFilter 0.1 -3e-7").Text()).values,
            ParseFilter("SineFilter 0.1 -3e-7").values);
}

TEST(FilterCall, TheHostsOwnArgumentsStandBesideTheNumbers) {
  static constexpr wavechain::Parameter Parameters[] = {
      {.name = "column", .unit = "", .help = "", .preset = 6}};
  static constexpr wavechain::HostArgument Own[] = {{"data", "FILE", "the data"}};
  const wavechain::FilterKind kind = {.name = "Made",
                                      .entryPoint = "MadeI",
                                      .purpose = "",
                                      .parameters = Parameters,
                                      .hostArguments = Own};
  const std::string text = "Made data='two words' 3";
  const FilterCall call = wavechain::ResolveFilter(kind, SplitFilter(text));
  EXPECT_THAT(call.values, ElementsAre(3.0));
  EXPECT_EQ(call.hostValues.at("data"), "two words");
  EXPECT_EQ(call.Text(), "Made column=3 data='two words'");
  EXPECT_THROW(wavechain::ResolveFilter(kind, SplitFilter("Made data=a data=b")),
               wavechain::Failure);
  EXPECT_THROW(wavechain::ResolveFilter(kind, SplitFilter("Made dato=a")), wavechain::Failure);
}

}  // namespace
