#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "host/console_out.h"
#include "host/make.h"
#include "support/slots.h"

namespace {

using testing::EndsWith;
using testing::StartsWith;
using wavechain::ConsoleOut;
using wavechain::Log;
using wavechain::Make;

// What the console writes to standard error in the course of `use`.
template <class Use>
std::string Written(Use use, bool quiet = false) {
  testing::internal::CaptureStderr();
  {
    Log log(quiet, false);
    const auto console = Make<ConsoleOut>(log, "label: ");
    use(*console.Get());
  }
  return testing::internal::GetCapturedStderr();
}

TEST(ConsoleOut, WritesLinesWithTheirLabel) {
  EXPECT_EQ(Written([](ConsoleOut& console) {
              console.PutStr("Avg MACC (ns) =");
              console.PutNum(10, 3, 0.25);
              console.NewLine();
              console.NewLine();
              console.PutStr("and");
              console.PutStr(nullptr);
            }),
            "label: Avg MACC (ns) =     0.250\nlabel: \nlabel: and\n");
}

TEST(ConsoleOut, NumbersOfAnySizeAreWritten) {
  const auto number = [](int width, int precision, double value) {
    return Written([=](ConsoleOut& console) { console.PutNum(width, precision, value); });
  };
  // 10^308 is not a binary fraction: its digits begin 1.0 or 9.9.
  const std::string huge = number(10, 3, 1e308);
  EXPECT_THAT(huge, testing::AnyOf(StartsWith("label: 1000000"), StartsWith("label: 999999")));
  EXPECT_THAT(huge, EndsWith(".000\n"));
  EXPECT_GE(huge.size(), 308U + 4U);
  EXPECT_THAT(number(10, 3, -1.7976931348623157e308), StartsWith("label: -17976931348623157"));
  EXPECT_EQ(number(6, 1, std::numeric_limits<double>::infinity()), "label:    inf\n");
  EXPECT_EQ(number(6, 1, std::numeric_limits<double>::quiet_NaN()), "label:    nan\n");
  EXPECT_EQ(number(-3, -3, 2.0), "label: 2\n");
  EXPECT_EQ(number(2'000'000'000, 2, 0.5).size(), 7U + 100U + 1U);
  EXPECT_EQ(number(0, 2'000'000'000, 0.5).size(), 7U + 2U + 100U + 1U);
}

TEST(ConsoleOut, QuietWritesNothing) {
  EXPECT_EQ(Written(
                [](ConsoleOut& console) {
                  console.PutStr("text");
                  console.NewLine();
                },
                true),
            "");
}

TEST(ConsoleOut, TheClockNeverGoesBack) {
  Written([](ConsoleOut& console) {
    double before = -1.0;
    for (int i = 0; i < 1000; ++i) {
      double now = -1.0;
      console.GetTime(&now);
      EXPECT_GE(now, before);
      EXPECT_GE(now, 0.0);
      EXPECT_LT(now, 1e6);
      before = now;
    }
  });
}

TEST(ConsoleOut, IsReachedBySlotNumber) {
  EXPECT_EQ(Written([](ConsoleOut& console) {
              void* object = &console;
              const auto* slots = *static_cast<ConsoleSlots**>(object);
              slots->PutStr(object, "n =");
              slots->PutNum(object, 5, 1, 2.5);
              slots->NewLine(object);
              double seconds = -1.0;
              slots->GetTime(object, &seconds);
              EXPECT_GE(seconds, 0.0);
            }),
            "label: n =  2.5\n");
}

}  // namespace
