#include "host/text.h"

#include <gtest/gtest.h>

#include <clocale>
#include <limits>
#include <locale>

#include "host/audio_input.h"
#include "host/failure.h"
#include "host/make.h"
#include "host/number_stream.h"
#include "support/temp_folder.h"

namespace {

using wavechain::FindShortfall;
using wavechain::Nearest;
using wavechain::ParseNumber;

TEST(Numbers, AreTheWholeTextInAnyUsualNotation) {
  EXPECT_EQ(ParseNumber("200"), 200.0);
  EXPECT_EQ(ParseNumber("-0.5"), -0.5);
  EXPECT_EQ(ParseNumber("+3"), 3.0);
  EXPECT_EQ(ParseNumber(".25"), 0.25);
  EXPECT_EQ(ParseNumber("2e3"), 2000.0);
  EXPECT_EQ(ParseNumber("1E-3"), 0.001);
}

TEST(Numbers, AreNotFoundInAnythingElse) {
  for (const char* text : {"", " ", " 1", "1 ", "1Hz", "1,5", "0x10", "+-1", "--1", "nan", "inf",
                           "-inf", "1e999", "one", "1e", "+"}) {
    EXPECT_EQ(ParseNumber(text), std::nullopt) << text;
  }
}

TEST(Numbers, AreWrittenSoThatTheyReadBack) {
  EXPECT_EQ(wavechain::NumberText(200.0), "200");
  EXPECT_EQ(wavechain::NumberText(0.52), "0.52");
  for (const double value : {0.1, 1.0 / 3.0, 1e300, -2.5e-9, std::numeric_limits<double>::min()}) {
    EXPECT_EQ(ParseNumber(wavechain::NumberText(value)), value);
  }
}

// What a global locale says of numbers; it may be that of a library that the program loads.
class DecimalComma : public std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST(Numbers, AreTheSameUnderADecimalComma) {
  const support::TempFolder folder;
  const std::string path = folder.Write("events", "-12.345 1.5 2,5\n");
  const std::locale before =
      std::locale::global(std::locale(std::locale::classic(), new DecimalComma));
  const auto stream = wavechain::Make<wavechain::NumberStream>();
  double first = 0.0;
  float second = 0.0F;
  double third = 0.0;
  EXPECT_TRUE(stream->Open(path) && stream->GetLine() && stream->GetDouble(first) &&
              stream->GetSingle(second) && stream->GetDouble(third));
  const std::string written = wavechain::NumberText(12345.5);
  const auto read = ParseNumber("12345.5");
  std::locale::global(before);
  EXPECT_EQ(first, -12.345);
  EXPECT_EQ(second, 1.5F);
  EXPECT_EQ(third, 2.0);
  EXPECT_EQ(written, "12345.5");
  EXPECT_EQ(read, 12345.5);
}

TEST(NearestName, IsTheOneWithTheFewestDifferences) {
  EXPECT_EQ(Nearest("frequncy", {"half_length", "frequency", "edge_weight"}), "frequency");
  EXPECT_EQ(Nearest("FREQUENCY", {"half_length", "frequency"}), "frequency");
  EXPECT_EQ(Nearest("gain3", {"gain1", "gain2"}), "gain1");
}

TEST(NearestName, IsNoneWhereNothingIsClose) {
  EXPECT_EQ(Nearest("volume", {"half_length", "frequency"}), "");
  EXPECT_EQ(Nearest("xy", {"a", "b"}), "");
  EXPECT_EQ(Nearest("", {"a", "run"}), "");
  EXPECT_EQ(Nearest("word", {}), "");
}

TEST(Messages, AreOneLineWithoutControlCharacters) {
  EXPECT_EQ(wavechain::OneLine("a\xc2\x9b"
                               "2J\xc2\x80\xc2\x9f"),
            "a\\x9b2J\\x80\\x9f");
  EXPECT_EQ(wavechain::OneLine("\xc2\xa0\xc3\x9b\xc2"), "\xc2\xa0\xc3\x9b\xc2");
  const wavechain::Failure failure(wavechain::ExitStatus::Usage, "a\nb\tc\x1b[1m\x7f \xc3\xa4");
  EXPECT_STREQ(failure.what(), "a\\nb\\tc\\x1b[1m\\x7f \xc3\xa4");
}

TEST(HeaderLog, TellsOfAudioThatIsMissing) {
  const auto found = FindShortfall(
      "RIFF : 137126 (should be 59992)\nWAVE\n"
      "data : 137090 (should be 59956)\nEnd\n");
  ASSERT_TRUE(found.has_value());
  EXPECT_EQ(found->announced, 137090);
  EXPECT_EQ(found->present, 59956);
  EXPECT_TRUE(FindShortfall(" SSND : 137098 (should be 59920)\n"));
  EXPECT_TRUE(FindShortfall("  Data Size   : 137090 (should be 59956)\n"));
  EXPECT_TRUE(FindShortfall("riff : 137194 (should be 60000)\nwave\n"));
  EXPECT_TRUE(FindShortfall("ds64 : 28\n  Riff size : 80120 (should be 29992)\n"));
  EXPECT_TRUE(FindShortfall("riff : 6000000000 (should be 4000)\n"));
}

TEST(HeaderLog, OfAWholeFileTellsOfNothing) {
  EXPECT_FALSE(FindShortfall(""));
  EXPECT_FALSE(FindShortfall("RIFF : 137126\nWAVE\ndata : 137090\nEnd\n"));
  // More than announced, a rounded size, other fields.
  EXPECT_FALSE(FindShortfall("data : 100 (should be 200)\n"));
  EXPECT_FALSE(FindShortfall("riff : 1008 (should be 1001)\n"));
  EXPECT_FALSE(FindShortfall("  Bytes/sec     : 24333 (should be 24332)\n"));
  EXPECT_FALSE(FindShortfall("RIFF : 137126 (should be 59992)\n"));
}

TEST(HeaderLog, TakesSizesThatStandForUnknownAsNoAnnouncement) {
  EXPECT_FALSE(FindShortfall("data : 4294967295 (should be 137090)\n"));
  EXPECT_FALSE(FindShortfall("data : 2147483647 (should be 137090)\n"));
  EXPECT_FALSE(FindShortfall("data : 2147479552 (should be 137090)\n"));
  EXPECT_FALSE(FindShortfall("riff : 9223372036854775807 (should be 137090)\n"));
  EXPECT_FALSE(FindShortfall("riff : 18446744073709551615 (should be 137090)\n"));
}

}  // namespace
