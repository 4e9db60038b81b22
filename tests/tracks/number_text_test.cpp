#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <locale>
#include <random>

#include "reference/number_file.h"
#include "support/temp_folder.h"
#include "tracks/own_stream.h"
#include "tracks/pellet_text.h"

// How the library's own stream reads lines and numbers.
namespace tracks {
namespace {

using support::TempFolder;
using testing::ElementsAre;

struct LineCase {
  std::string line;
  std::vector<double> numbers;  // those before the first that cannot be read
};

const std::vector<LineCase> LineCases{
    {"1.5 2e3 x 4", {1.5, 2000}},
    {"1 -2 +3", {1, -2, 3}},
    {"  \t7\v8\f9  ", {7, 8, 9}},
    {"1 2\r", {1, 2}},
    {"\r", {}},
    {"", {}},
    {"    ", {}},
    {"5. .5 -.25 +.75", {5, 0.5, -0.25, 0.75}},
    {"1e3 1E3 1e+3 1e-3 -1.5E2", {1000, 1000, 1000, 0.001, -150}},
    {"007 -000.5", {7, -0.5}},
    {"1e 5", {}},
    {"1e+ 5", {}},
    {"1 . 2", {1}},
    {"1 - 2", {1}},
    {"--1", {}},
    {"+-1", {}},
    {"1-2", {1, -2}},
    {"1+2", {1, 2}},
    {"1.2.3", {1.2, 0.3}},
    {"1,5", {1}},
    {"1;5", {1}},
    {"-12.345", {-12.345}},
    {"1 inf 2", {1}},
    {"nan", {}},
    {"infinity", {}},
    {"0x10", {0}},
    {"1e308 1e309 1", {1e308}},
    {"-1e999", {}},
    {"1 # 2", {1}},
    {"# 1 2", {}},
    {"// 1", {}},
    {"\"1\"", {}},
    {"1\xC2\xA0"
     "2",
     {1}},
    {std::string("1 2\0 3", 6), {1, 2}},
    {"123456789012345678901234567890", {123456789012345678901234567890.0}},
    {"0.1000000000000000055511151231257827", {0.1}},
};

TEST(NumberText, ReadsTheNumbersOfALineUpToTheFirstThatIsNone) {
  const TempFolder folder;
  OwnStream stream;
  for (const LineCase& expected : LineCases) {
    ASSERT_TRUE(stream.Open(folder.Write("line", expected.line + "\n42\n")));
    ASSERT_TRUE(stream.GetLine());
    EXPECT_EQ(stream.Numbers(), expected.numbers) << '"' << expected.line << '"';
    double value = 0.0;
    EXPECT_FALSE(stream.GetDouble(value)) << "a failed line stays failed: " << expected.line;
    float single = 0.0F;
    EXPECT_FALSE(stream.GetSingle(single)) << expected.line;
    ASSERT_TRUE(stream.GetLine());
    EXPECT_THAT(stream.Numbers(), ElementsAre(42.0)) << "after " << expected.line;
    EXPECT_FALSE(stream.GetLine());
  }
}

TEST(NumberText, FailsOnALineForGoodAndStartsAfreshOnTheNext) {
  const TempFolder folder;
  OwnStream stream;
  ASSERT_TRUE(stream.Open(folder.Write("a", "1.5 2e3 x 4\n8\n")));
  ASSERT_TRUE(stream.GetLine());
  double value = 0.0;
  EXPECT_TRUE(stream.GetDouble(value));
  EXPECT_EQ(value, 1.5);
  EXPECT_TRUE(stream.GetDouble(value));
  EXPECT_EQ(value, 2000.0);
  EXPECT_FALSE(stream.GetDouble(value));
  EXPECT_FALSE(stream.GetDouble(value));
  ASSERT_TRUE(stream.GetLine());
  EXPECT_TRUE(stream.GetDouble(value));
  EXPECT_EQ(value, 8.0);
}

TEST(NumberText, DropsWhatIsLeftOnALineAtTheNext) {
  const TempFolder folder;
  OwnStream stream;
  ASSERT_TRUE(stream.Open(folder.Write("a", "1 2 3\n4 5 6\n")));
  double value = 0.0;
  ASSERT_TRUE(stream.GetLine());
  EXPECT_TRUE(stream.GetDouble(value));
  ASSERT_TRUE(stream.GetLine());
  EXPECT_TRUE(stream.GetDouble(value));
  EXPECT_EQ(value, 4.0);
  EXPECT_FALSE(stream.GetLine());
  EXPECT_FALSE(stream.GetDouble(value)) << "the end of the file leaves no line";
}

TEST(NumberText, HasNoNumberBeforeTheFirstLine) {
  const TempFolder folder;
  OwnStream stream;
  double value = 3.0;
  float single = 4.0F;
  EXPECT_FALSE(stream.GetDouble(value));
  ASSERT_TRUE(stream.Open(folder.Write("a", "1\n2\n")));
  EXPECT_FALSE(stream.GetDouble(value));
  EXPECT_FALSE(stream.GetSingle(single));
  EXPECT_EQ(value, 3.0);
  EXPECT_EQ(single, 4.0F);
}

TEST(NumberText, TakesBlankLinesForLinesAndALastLineWithoutItsEnd) {
  const TempFolder folder;
  OwnStream stream;
  using All = std::vector<std::vector<double>>;
  ASSERT_TRUE(stream.Open(folder.Write("a", "\n1\n\n\n2 3")));
  EXPECT_EQ(stream.AllNumbers(), (All{{}, {1}, {}, {}, {2, 3}}));
  ASSERT_TRUE(stream.Open(folder.Write("b", "")));
  EXPECT_EQ(stream.AllNumbers(), All{});
  ASSERT_TRUE(stream.Open(folder.Write("c", "\n")));
  EXPECT_EQ(stream.AllNumbers(), All{{}});
  ASSERT_TRUE(stream.Open(folder.Write("d", "1 2\r\n\r\n3 4\r\n")));
  EXPECT_EQ(stream.AllNumbers(), (All{{1, 2}, {}, {3, 4}}));
  ASSERT_TRUE(stream.Open(folder.Write("e", "1 2\r3 4\r")));
  EXPECT_EQ(stream.AllNumbers(), (All{{1, 2, 3, 4}})) << "a carriage return ends no line";
  EXPECT_FALSE(stream.GetLine()) << "the end of the file is passed once and for all";
}

TEST(NumberText, ReadsSinglesAsSingles) {
  const TempFolder folder;
  OwnStream stream;
  ASSERT_TRUE(stream.Open(folder.Write("a", "0.1 -2.5e3 1e39 7\n1e-50 16777217 .x\n")));
  ASSERT_TRUE(stream.GetLine());
  float value = 0.0F;
  EXPECT_TRUE(stream.GetSingle(value));
  EXPECT_EQ(value, 0.1F);
  EXPECT_TRUE(stream.GetSingle(value));
  EXPECT_EQ(value, -2500.0F);
  EXPECT_FALSE(stream.GetSingle(value)) << "1e39 is too large for a single";
  EXPECT_FALSE(stream.GetSingle(value));
  ASSERT_TRUE(stream.GetLine());
  EXPECT_TRUE(stream.GetSingle(value));
  EXPECT_EQ(value, 0.0F);
  EXPECT_TRUE(stream.GetSingle(value));
  EXPECT_EQ(value, 16777216.0F);
  EXPECT_FALSE(stream.GetSingle(value));
}

// All that can be seen of reading a text, number by number, in bits; a value that a failure leaves
// behind included.
template <class Reader>
std::vector<std::uint64_t> Story(Reader&& reader, unsigned seed) {
  std::mt19937 random(seed);
  std::vector<std::uint64_t> story;
  while (reader.GetLine()) {
    story.push_back(1);
    for (int i = 0; i < 6; ++i) {
      double value = 12345.0;
      float single = 54321.0F;
      story.push_back(random() % 2 == 0 ? reader.GetDouble(value) : reader.GetSingle(single));
      story.push_back(std::bit_cast<std::uint64_t>(value));
      story.push_back(std::bit_cast<std::uint32_t>(single));
    }
  }
  return story;
}

TEST(NumberText, ReadsAnyTextAsTheStandardDoes) {
  const TempFolder folder;
  OwnStream stream;
  const std::string alphabet = "00112345678999+-..eE \t\r\n ,xainf";
  for (unsigned seed = 1; seed <= 400; ++seed) {
    std::mt19937 random(seed);
    std::string text;
    for (int i = Between(random, 0, 300); i > 0; --i) text += alphabet[random() % alphabet.size()];
    ASSERT_TRUE(stream.Open(folder.Write("text", text)));
    reference::NumberText expected;
    expected.Take(text);
    ASSERT_EQ(Story(stream, seed), Story(expected, seed)) << "seed " << seed << ": " << text;
  }
}

std::string Digits(std::mt19937& random, int most) {
  std::string digits;
  for (int i = Between(random, 0, most); i > 0; --i) {
    digits.push_back(static_cast<char>('0' + random() % (random() % 4 == 0 ? 1 : 10)));
  }
  return digits;
}

// A number as texts hold them: few digits or more than any precision, on any scale.
std::string AnyNumber(std::mt19937& random) {
  static const std::vector<std::string> special{"9007199254740993",
                                                "9007199254740992.5",
                                                "18446744073709551615",
                                                "18446744073709551616",
                                                "9223372036854775807",
                                                "9223372036854775808",
                                                "4503599627370497.5",
                                                "1.00000005960464477539",
                                                "16777217",
                                                "16777219",
                                                "0.1",
                                                "1e22",
                                                "1e23",
                                                "123456789e-22",
                                                "8.5e-324",
                                                "2.4703282292e-324",
                                                "1.7976931348623157e308",
                                                "1.7976931348623159e308",
                                                "3.4028235e38",
                                                "3.4028236e38",
                                                "7.006492321624085e-46",
                                                "1e-400",
                                                "0e400",
                                                "0.0000000000000000000000000001",
                                                "-0",
                                                "-0.0e-5"};
  if (random() % 10 == 0) return special[random() % special.size()];
  const int most = random() % 3 == 0 ? 25 : 8;
  std::string number = random() % 4 == 0 ? (random() % 2 == 0 ? "-" : "+") : "";
  number += Digits(random, most);
  if (random() % 2 == 0) number += "." + Digits(random, most);
  if (random() % 3 == 0) {
    number += random() % 2 == 0 ? "e" : "E";
    if (random() % 2 == 0) number += random() % 2 == 0 ? "-" : "+";
    number += std::to_string(Between(random, 0, random() % 2 == 0 ? 25 : 330));
  }
  return number;
}

TEST(NumberText, ReadsEveryNumberToTheNearestValue) {
  const TempFolder folder;
  OwnStream stream;
  std::mt19937 random(2024);
  std::string text;
  for (int i = 0; i < 60000; ++i) text += AnyNumber(random) + (i % 3 == 2 ? "\n" : " ");
  ASSERT_TRUE(stream.Open(folder.Write("numbers", text)));
  reference::NumberText expected;
  expected.Take(text);
  ASSERT_TRUE(Story(stream, 1) == Story(expected, 1));
}

TEST(NumberText, ReadsALineOfTenMegabytes) {
  const TempFolder folder;
  OwnStream stream;
  std::string text;
  for (int i = 0; i < 2500000; ++i) text += "1.5 ";
  ASSERT_TRUE(stream.Open(folder.Write("long", text + "\n2\n" + std::string(10000000, '7'))));
  ASSERT_TRUE(stream.GetLine());
  EXPECT_EQ(stream.Numbers().size(), 2500000U);
  ASSERT_TRUE(stream.GetLine());
  EXPECT_THAT(stream.Numbers(), ElementsAre(2.0));
  ASSERT_TRUE(stream.GetLine());
  double value = 0.0;
  EXPECT_FALSE(stream.GetDouble(value)) << "ten million digits are beyond a double";
  EXPECT_FALSE(stream.GetLine());
}

struct DecimalComma : std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

// A class table in which digits' neighbours and letters count as white space.
struct OtherSpace : std::ctype<char> {
  OtherSpace() : std::ctype<char>(Table()) {}
  static const mask* Table() {
    static std::vector<mask> table(classic_table(), classic_table() + table_size);
    table[static_cast<unsigned char>('x')] = space;
    table[static_cast<unsigned char>(' ')] = punct;
    return table.data();
  }
};

class GlobalLocale {
 public:
  explicit GlobalLocale(const std::locale& locale) : before(std::locale::global(locale)) {}
  ~GlobalLocale() { std::locale::global(before); }
  GlobalLocale(const GlobalLocale&) = delete;
  GlobalLocale& operator=(const GlobalLocale&) = delete;

 private:
  std::locale before;
};

TEST(NumberText, ReadsInTheClassicLocaleWhateverTheHostHasSet) {
  const TempFolder folder;
  const std::string file = folder.Write("a", "-12.345 1.234.567 8\n1x2\n");
  const std::locale comma(std::locale::classic(), new DecimalComma);
  for (const std::locale& locale : {comma, std::locale(comma, new OtherSpace)}) {
    const GlobalLocale global(locale);
    OwnStream stream;  // made under the host's locale...
    ASSERT_TRUE(stream.Open(file));
    EXPECT_EQ(stream.AllNumbers(),
              (std::vector<std::vector<double>>{{-12.345, 1.234, 0.567, 8}, {1}}));
    ASSERT_TRUE(stream.Open(folder.Write("b", "-12.345\n")));
    ASSERT_TRUE(stream.GetLine());
    float single = 0.0F;
    EXPECT_TRUE(stream.GetSingle(single));
    EXPECT_EQ(single, -12.345F);
  }
  OwnStream stream;  // ...or before it
  ASSERT_TRUE(stream.Open(file));
  const GlobalLocale global(comma);
  EXPECT_EQ(stream.AllNumbers(),
            (std::vector<std::vector<double>>{{-12.345, 1.234, 0.567, 8}, {1}}));
}

}  // namespace
}  // namespace tracks
