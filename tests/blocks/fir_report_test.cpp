// The timing report of the FIR filters, call for call.

#include <gtest/gtest.h>

#include "support/filter.h"

namespace {

using namespace support;

class FirReport : public testing::TestWithParam<Kind> {
 protected:
  // Five taps, a console whose clock steps, and an empty log.
  void Attach(int samples, double step_s) {
    source.samples = Ramp(samples);
    source.position = 0;
    console.step_s = step_s;
    filter.Set_param_list({2.0});
    filter.Set_console_out(&console);
    filter.Set_src_list(source);
    log.Take();
  }

  static Calls Report(double average) {
    return {"GetTime()", "GetTime()", "PutStr(\"Avg MACC (ns) =\")",
            "PutNum(10, 3, " + Text(average) + ")", "NewLine()"};
  }

  CallLog log;
  SourceMock source{"source", log};
  ConsoleMock console{"console", log};
  Filter filter = MakeFilter(GetParam());
};

INSTANTIATE_TEST_SUITE_P(Kinds, FirReport, testing::Values(FIRFilter, FIRNotch), KindName);

TEST_P(FirReport, TimesEachBlockAndReportsTheAverageWithTheLast) {
  Attach(10, 0.0007);
  filter.Pull(3);
  EXPECT_EQ(log.Take(), (Calls{"source.EndOfSrc()", "source.TransmitNow(5)", "source.EndOfSrc()",
                               "console.GetTime()", "console.GetTime()"}));
  filter.Pull(7);
  const double clock[] = {0.0, 0.0007, 0.0007 + 0.0007, 0.0007 + 0.0007 + 0.0007};
  const double sum = (clock[1] - clock[0]) * 1e9 / (3 * 5) + (clock[3] - clock[2]) * 1e9 / (7 * 5);
  EXPECT_EQ(log.Take(),
            (Calls{"source.EndOfSrc()", "source.TransmitNow(7)", "source.EndOfSrc()",
                   "console.GetTime()", "console.GetTime()", "console.PutStr(\"Avg MACC (ns) =\")",
                   "console.PutNum(10, 3, " + Text(sum / 2) + ")", "console.NewLine()"}));
}

TEST_P(FirReport, ReportsAgainWithEveryBlockAfterTheEnd) {
  Attach(4, 1.0);
  filter.Pull(4);
  EXPECT_EQ(log.Take("console"), Report(1e9 / 20));
  filter.Pull(2);
  EXPECT_EQ(log.Take("console"), Report((1e9 / 20 + 1e9 / 10) / 2));
  filter.Pull(4);
  EXPECT_EQ(log.Take("console"), Report((1e9 / 20 + 1e9 / 10 + 1e9 / 20) / 3));
}

TEST_P(FirReport, IsSilentForAnEmptyInputAndForEmptyPulls) {
  Attach(0, 1.0);
  EXPECT_TRUE(filter.Pull(10).empty());
  EXPECT_TRUE(filter.EndOfSrc());
  EXPECT_TRUE(filter.Pull(0).empty());
  EXPECT_TRUE(filter.Pull(-5).empty());
  EXPECT_EQ(log.Take("console"), Calls{});
}

TEST_P(FirReport, IsSilentForAPeekEvenOneThatBringsTheEnd) {
  Attach(6, 1.0);
  EXPECT_EQ(filter.Peek(10), 6);
  EXPECT_TRUE(filter.EndOfSrc());
  EXPECT_EQ(log.Take("console"), Calls{});
  filter.Pull(3);
  EXPECT_EQ(log.Take("console"), Report(1e9 / 15));
}

TEST_P(FirReport, KeepsSumAndCountForTheNextSource) {
  Attach(4, 1.0);
  filter.Pull(4);
  Attach(2, 1.0);
  filter.Pull(2);
  EXPECT_EQ(log.Take("console"), Report((1e9 / 20 + 1e9 / 10) / 2));
}

TEST_P(FirReport, CountsBlocksOfNoTimeWithoutAConsole) {
  Attach(8, 1.0);
  filter.Set_console_out(nullptr);
  log.Take();
  filter.Pull(4);
  EXPECT_EQ(log.Take("console"), Calls{});
  filter.Set_console_out(&console);
  log.Take();
  filter.Pull(4);
  EXPECT_EQ(log.Take("console"), Report((0.0 + 1e9 / 20) / 2));
}

TEST_P(FirReport, WritesNothingWithoutAConsole) {
  Attach(8, 1.0);
  filter.Set_console_out(nullptr);
  log.Take();
  filter.PullAll({3});
  filter.Pull(5);
  EXPECT_EQ(log.Take("console"), Calls{});
}

TEST_P(FirReport, MeasuresFromZeroWhereTheConsoleComesAndGoes) {
  console.time_s = 1000.0;
  Attach(6, 0.0);
  filter.Pull(2);
  filter.Set_console_out(nullptr);
  filter.Pull(2);
  filter.Set_console_out(&console);
  log.Take();
  filter.Pull(2);
  EXPECT_EQ(log.Take("console"), Report(0.0));
}

TEST_P(FirReport, AsksItsOwnSlotWhetherTheEndCame) {
  Attach(20, 0.0);
  filter.Exchange(
      6, +[](void*) { return true; });
  filter.Pull(2);
  EXPECT_EQ(log.Take("console"), Report(0.0));
}

TEST_P(FirReport, DoesNotTimeABlockOfNothing) {
  Attach(20, 1.0);
  float in[8] = {};
  for (const int count : {0, -1, -4096, -2147483647 - 1}) {
    filter.Call<BlockApply>(15, in, nullptr, count);
    EXPECT_EQ(log.Take("console"), Calls{"GetTime()"}) << count;
  }
  filter.Exchange(
      6, +[](void*) { return true; });
  filter.Call<BlockApply>(15, in, nullptr, 0);
  EXPECT_EQ(log.Take("console"), (Calls{"GetTime()", "PutStr(\"Avg MACC (ns) =\")", "NewLine()"}));
}

TEST_P(FirReport, DividesByOperationsBeyondAFloatsWholeNumbers) {
  Attach(20, 1.0);
  filter.Set_param_list({2048.0});
  filter.Init(0.1);
  filter.Exchange(
      6, +[](void*) { return true; });
  log.Take();
  Samples in = Constant(2 * 4097);
  Samples out = Constant(4097);
  filter.Call<BlockApply>(15, in.data(), out.data(), 4097);
  EXPECT_EQ(log.Take("console"), Report(1e9 / (4097.0 * 4097.0)));
}

}  // namespace
