// The two FIR designs through their slot, and how parameters and the interval reach them.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "reference/fir.h"
#include "support/filter.h"
#include "support/guarded_buffer.h"

namespace {

using namespace support;

constexpr double NaN = std::numeric_limits<double>::quiet_NaN();
constexpr double Infinity = std::numeric_limits<double>::infinity();
constexpr int Lowest = -2147483647 - 1;

// The first n coefficients; nothing else may be written.
Samples Design(Filter& filter, int n, double T = 0.0001) {
  GuardedBuffer coef(n);
  filter.Call<FirCalcCoef>(16, coef.data(), n, T);
  coef.CheckAfter(n);
  return coef.First(n);
}

// What a filter's Init asks of CalcCoef, which is replaced by one that fills in zeros.
struct Request {
  int n = -1;
  double T = -1.0;
};
Request request;

void WatchCalcCoef(Filter& filter) {
  request = {};
  filter.Exchange(
      16, +[](void*, float* coef, int n, double T) {
        request = {n, T};
        std::fill(coef, coef + n, 0.0F);
      });
}

TEST(FIRFilterDesign, IsThePublishedHammingWindowWithASumOfOne) {
  // The window of 12 points as NumPy's manual prints it; its sum is 6.02.
  const double window[] = {0.08,       0.15302337, 0.34890909, 0.60546483, 0.84123594, 0.98136677,
                           0.98136677, 0.84123594, 0.60546483, 0.34890909, 0.15302337, 0.08};
  Filter filter = MakeFilter(FIRFilter);
  const Samples coef = Design(filter, 12);
  for (std::size_t i = 0; i < 12; ++i) {
    EXPECT_NEAR(static_cast<double>(coef[i]) * 6.02, window[i], 1e-7) << i;
  }
}

TEST(FIRFilterDesign, HalfLengthOneHasTheThreeHammingTaps) {
  Filter filter = MakeFilter(FIRFilter);
  const Samples coef = Design(filter, 3);
  EXPECT_FLOAT_EQ(coef[0], static_cast<float>(0.08 / 1.16));
  EXPECT_FLOAT_EQ(coef[1], static_cast<float>(1.0 / 1.16));
  EXPECT_FLOAT_EQ(coef[2], static_cast<float>(0.08 / 1.16));
}

TEST(FIRFilterDesign, KeepsAConstantAtEachHalfLength) {
  Filter filter = MakeFilter(FIRFilter);
  for (const int n : {3, 5, 41, 401, 4097}) {
    double sum = 0.0;
    for (const float tap : Design(filter, n)) {
      sum += static_cast<double>(tap);
    }
    EXPECT_NEAR(sum, 1.0, 1e-6) << n;
  }
}

TEST(FIRFilterDesign, HasTheBitsOfTheDoublePrecisionDesign) {
  Filter filter = MakeFilter(FIRFilter);
  for (int n = 2; n < 200; ++n) {
    EXPECT_TRUE(SameBits(Design(filter, n, NaN), reference::HammingAverage(n))) << n;
  }
  for (const int n : {1000, 4096, 4097, 10001}) {
    EXPECT_TRUE(SameBits(Design(filter, n), reference::HammingAverage(n))) << n;
  }
}

TEST(FIRFilterDesign, OfOneTapIsNotANumber) {
  Filter filter = MakeFilter(FIRFilter);
  const Samples coef = Design(filter, 1);
  EXPECT_TRUE(std::isnan(coef.at(0)));
}

TEST(FIRFilterDesign, WritesNothingForNoTaps) {
  Filter filter = MakeFilter(FIRFilter);
  for (const int n : {0, -1, -2, -4097, Lowest}) {
    Design(filter, n);
  }
}

TEST(FIRFilterDesign, PrintsNothing) {
  CallLog log;
  ConsoleMock console("console", log);
  Filter filter = MakeFilter(FIRFilter);
  filter.Set_console_out(&console);
  log.Take();
  Design(filter, 5);
  EXPECT_EQ(log.Take(), Calls{});
}

// The gain at a frequency in cycles per sample, of a design that is symmetric around its middle.
double Gain(const Samples& coef, double cycles) {
  const int h = static_cast<int>(coef.size()) / 2;
  double sum = 0.0;
  for (int k = -h; k <= h; ++k) {
    sum += static_cast<double>(coef[static_cast<std::size_t>(k + h)]) *
           std::cos(2.0 * 3.141592653589793 * cycles * k);
  }
  return sum;
}

TEST(FIRNotchDesign, RemovesFiveBinsAndLeavesTheEdgesAsTheirWeightSays) {
  // Cosines that lie on bins of 1/n are orthogonal over the n taps, so the gain on each bin is
  // known exactly: 0 at the notch and two bins around it, 1 - weight at the third, else 1.
  constexpr int N = 101;
  constexpr int Centre = 25;
  Filter filter = MakeFilter(FIRNotch);
  for (const double weight : {0.5, 0.0, 1.0, 0.25, -0.5}) {
    filter.Set_param_list({50.0, 10000.0 * Centre / N, weight});
    const Samples coef = Design(filter, N);
    for (int bin = 1; bin <= N / 2; ++bin) {
      const int distance = std::abs(bin - Centre);
      const double expected = distance < 3 ? 0.0 : distance == 3 ? 1.0 - weight : 1.0;
      EXPECT_NEAR(Gain(coef, static_cast<double>(bin) / N), expected, 1e-5) << "bin " << bin;
    }
  }
}

TEST(FIRNotchDesign, OfOneTapIsOneMinusTwiceTheSumOfItsWeights) {
  Filter filter = MakeFilter(FIRNotch);
  EXPECT_TRUE(SameBits(Design(filter, 1), {-11.0F})) << "1 - 2 (5 + 2 x 0.5)";
  filter.Set_param_list({0.0, 1000.0, 0.25});
  EXPECT_TRUE(SameBits(Design(filter, 1), {-10.0F}));
}

TEST(FIRNotchDesign, HasTheBitsOfTheDoublePrecisionDesign) {
  Filter filter = MakeFilter(FIRNotch);
  struct Case {
    double frequency, weight, T;
  };
  const Case cases[] = {
      {2500.0, 0.5, 0.0001},  {50.0, 0.7, 1.0 / 44100.0}, {-300.0, -0.25, 0.000125},
      {0.0, 0.5, 0.0000625},  {1e6, 1e3, 1.0 / 48000.0},  {3000.0, 1.0, 0.0},
      {440.123, 0.1, -0.001}, {2500.0, 1e300, 0.0001},    {1e-300, 0.5, 1e-5}};
  for (const Case& c : cases) {
    filter.Set_param_list({0.0, c.frequency, c.weight});
    for (const int n : {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 21, 64, 401, 4096, 4097}) {
      EXPECT_TRUE(
          SameBitsOrNaN(Design(filter, n, c.T), reference::Notch(n, c.frequency, c.weight, c.T)))
          << n << " taps at " << c.frequency << " Hz";
    }
  }
}

TEST(FIRNotchDesign, TakesParametersThatAreNotFinite) {
  Filter filter = MakeFilter(FIRNotch);
  for (const double odd : {NaN, Infinity, -Infinity}) {
    for (int index = 0; index < 3; ++index) {
      double values[] = {2500.0, 0.5, 0.0001};
      values[index] = odd;
      filter.Set_param_list({0.0, values[0], values[1]});
      EXPECT_TRUE(SameBitsOrNaN(Design(filter, 9, values[2]),
                                reference::Notch(9, values[0], values[1], values[2])));
    }
  }
}

TEST(FIRNotchDesign, WritesNothingForNoTaps) {
  Filter filter = MakeFilter(FIRNotch);
  for (const int n : {0, -1, -2, -3, -4097, Lowest}) {
    Design(filter, n);
  }
}

TEST(FIRNotchDesign, PrintsItsFrequencyInRadiansPerSample) {
  CallLog log;
  ConsoleMock console("console", log);
  Filter filter = MakeFilter(FIRNotch);
  filter.Set_console_out(&console);
  log.Take();
  for (const int n : {0, -3, 1, 8, 9}) {
    Design(filter, n, 0.00003);
    EXPECT_EQ(
        log.Take("console"),
        (Calls{"PutNum(10, 6, " + Text(6.283185307179586 * 2500.0 * 0.00003) + ")", "NewLine()"}));
  }
}

TEST(FIRNotchDesign, PrintsOncePerSourceBeforeTheDescriptorIsReleased) {
  CallLog log;
  SourceMock source("source", log, Ramp(10));
  source.description.interval_ms = 0.07;
  ConsoleMock console("console", log);
  Filter filter = MakeFilter(FIRNotch);
  filter.Set_param_list({4.0, 1234.5});
  filter.Set_console_out(&console);
  for (int i = 0; i < 2; ++i) {
    filter.Dispose();
    log.Take();
    filter.Set_src_list(source);
    EXPECT_EQ(log.Take(), (Calls{"source.GetDescriptor()", "source.descriptor.GetPeriod()",
                                 "console.PutNum(10, 6, " +
                                     Text(6.283185307179586 * 1234.5 * (0.07 * 0.001)) + ")",
                                 "console.NewLine()", "source.descriptor.Release()"}));
  }
}

class FirInit : public testing::TestWithParam<Kind> {
 protected:
  CallLog log;
  SourceMock source{"source", log, Noise(9000)};
  Filter filter = MakeFilter(GetParam());
};

INSTANTIATE_TEST_SUITE_P(Kinds, FirInit, testing::Values(FIRFilter, FIRNotch), KindName);

TEST_P(FirInit, AsksForItsTapsAndTheIntervalInSeconds) {
  WatchCalcCoef(filter);
  filter.Set_param_list({20.0});
  for (const double interval_ms : {0.1, 0.07, 1000.0 / 44100.0, 0.0, -3.0, 1e300}) {
    filter.Init(interval_ms);
    EXPECT_EQ(request.n, 41);
    EXPECT_EQ(request.T, interval_ms * 0.001);
  }
}

TEST_P(FirInit, TruncatesAndLimitsTheHalfLength) {
  struct Case {
    double given;
    int used;
  };
  const Case cases[] = {{0.0, 0},
                        {0.99, 0},
                        {1.0, 1},
                        {2.9, 2},
                        {2048.0, 2048},
                        {2048.9, 2048},
                        {2049.0, 2048},
                        {1e300, 2048},
                        {Infinity, 2048},
                        {4294967297., 2048},
                        {2147483648.0, 2048},
                        {-0.9, 0},
                        {-1.0, 0},
                        {-2.9, 0},
                        {-2049.0, 0},
                        {-1e300, 0},
                        {-Infinity, 0},
                        {-2147483649.0, 0},
                        {-4294967295.0, 0},
                        {NaN, 0}};
  WatchCalcCoef(filter);
  for (const Case& c : cases) {
    source.position = 0;
    filter.Set_param_list({c.given});
    filter.Set_src_list(source);
    EXPECT_EQ(request.n, 2 * c.used + 1) << c.given;
    log.Take();
    EXPECT_EQ(filter.Pull(0).size(), 0U);
    const std::string expected = c.used == 0 ? "" : "TransmitNow(" + std::to_string(c.used) + ")";
    const Calls calls = log.Take("source");
    EXPECT_EQ(calls.size() > 1 ? calls[1] : "", expected) << c.given;
  }
}

TEST_P(FirInit, HasNoMarginsBeforeAHalfLengthWasGiven) {
  WatchCalcCoef(filter);
  filter.Init(0.1);
  EXPECT_EQ(request.n, 1);
}

TEST_P(FirInit, KeepsTheHalfLengthWhereTheListIsEmpty) {
  WatchCalcCoef(filter);
  filter.Set_param_list({7.0});
  double unused[] = {3.0, 3.0, 3.0};
  filter.Slots().Set_param_list(filter.Object(), unused, 0);
  filter.Slots().Set_param_list(filter.Object(), unused, -1);
  filter.Slots().Set_param_list(filter.Object(), unused, Lowest);
  filter.Slots().Set_param_list(filter.Object(), nullptr, 0);
  filter.Init(0.1);
  EXPECT_EQ(request.n, 15);
}

TEST_P(FirInit, IgnoresFurtherParameters) {
  WatchCalcCoef(filter);
  filter.Set_param_list({7.0, 100.0, 0.5, 33.0, 34.0});
  filter.Init(0.1);
  EXPECT_EQ(request.n, 15);
}

TEST_P(FirInit, TakesAHalfLengthOverAtTheNextInitOnly) {
  WatchCalcCoef(filter);
  filter.Set_param_list({7.0});
  filter.Set_src_list(source);
  request = {};
  filter.Set_param_list({100.0});
  EXPECT_EQ(request.n, -1);
  log.Take();
  filter.Pull(10);
  EXPECT_EQ(log.Take("source").at(1), "TransmitNow(17)") << "10 + 2 x 7 wanted, 7 there";
  filter.Set_src_list(source);
  EXPECT_EQ(request.n, 201);
}

TEST_P(FirInit, WritesItsTapsIntoTheFilterInOrder) {
  // A design that is not symmetric shows that the taps are not reversed: the first tap meets the
  // oldest sample.
  filter.Exchange(
      16, +[](void*, float* coef, int n, double) {
        for (int i = 0; i < n; ++i) {
          coef[i] = static_cast<float>(i + 1);
        }
      });
  source.samples = {0.0F, 0.0F, 1.0F, 0.0F, 0.0F, 0.0F};
  filter.Set_param_list({2.0});
  filter.Set_src_list(source);
  EXPECT_TRUE(SameBits(filter.PullAll({6}), {5.0F, 4.0F, 3.0F, 2.0F, 1.0F, 0.0F}));
}

TEST(FIRNotchParameters, AreATaggedListWithDefaults) {
  Filter filter = MakeFilter(FIRNotch);
  EXPECT_TRUE(SameBits(Design(filter, 9), reference::Notch(9, 2500.0, 0.5, 0.0001)));
  filter.Set_param_list({4.0, 1000.0, 0.75});
  EXPECT_TRUE(SameBits(Design(filter, 9), reference::Notch(9, 1000.0, 0.75, 0.0001)));
  filter.Set_param_list({5.0});
  EXPECT_TRUE(SameBits(Design(filter, 9), reference::Notch(9, 1000.0, 0.75, 0.0001)));
  filter.Set_param_list({5.0, 1100.0});
  EXPECT_TRUE(SameBits(Design(filter, 9), reference::Notch(9, 1100.0, 0.75, 0.0001)));
  filter.Set_param_list({});
  EXPECT_TRUE(SameBits(Design(filter, 9), reference::Notch(9, 1100.0, 0.75, 0.0001)));
}

}  // namespace
