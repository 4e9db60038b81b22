// Sampling intervals that no recording has: every filter comes to its end with each of them.

#include <gtest/gtest.h>

#include <limits>

#include "hardening/plain_filter.h"
#include "support/filter.h"

namespace hardening {
namespace {

using Limits = std::numeric_limits<double>;

const std::vector<double> Intervals_ms{
    0.0,
    -0.0,
    Limits::denorm_min(),
    -Limits::denorm_min(),
    Limits::min(),
    1e-300,
    1e-6,
    0.0067,
    0.02,
    0.1,
    5.0,
    5.0001,
    1e300,
    -0.1,
    -1e300,
    Limits::infinity(),
    -Limits::infinity(),
    Limits::quiet_NaN(),
};

constexpr int SignalLength = 20000;

const DataFiles& Files() {
  static const DataFiles files(SignalLength * 0.1);
  return files;
}

// SetTrack goes on for as long as it is asked: a host stops at the length.
bool EndsByLength(const Kind& kind) { return Is(kind, support::SetTrack); }

void RunThrough(const Kind& kind, PlainFilter& filter, int length) {
  const auto all = PullToEnd(filter, 3000, EndsByLength(kind) ? length : 1000000);
  EXPECT_TRUE(EndsByLength(kind) || filter.EndOfSrc());
  if (ReadsText(kind) || NeedsSourceToPull(kind) || Peeks(kind)) {
    EXPECT_EQ(all.size(), static_cast<std::size_t>(SignalLength));
  }
}

enum class Data { Own, Supplied, None };

void Try(const Kind& kind, double interval_ms, Data data) {
  SCOPED_TRACE("interval " + std::to_string(interval_ms) + ", data " +
               std::to_string(static_cast<int>(data)));
  PlainHost host;
  host.Describe(SignalLength, interval_ms,
                data == Data::None ? Files().Missing() : Files().Signal());
  host.stream.text = Files().Text(kind);
  {
    PlainFilter filter(kind);
    filter.Set_param_list(UsefulParams(kind));
    filter.Set_console_out(&host.console);
    if (data == Data::Supplied) filter.Set_num_stream(&host.stream);
    filter.Attach(host, SourceCount(kind));
    RunThrough(kind, filter, filter.Length());
    // The bare slot, in mid-stream.
    for (PlainSource& source : host.sources) source.Rewind();
    filter.Attach(host, SourceCount(kind));
    PullGuarded(filter, 5000);
    filter.Slots().Init(filter.Object(), interval_ms);
    for (int i = 0; i < 10; ++i) PullGuarded(filter, 2500);
  }
  EXPECT_TRUE(host.Balanced());
}

class Intervals : public testing::TestWithParam<Kind> {};

INSTANTIATE_TEST_SUITE_P(Kinds, Intervals, testing::ValuesIn(support::Kinds), support::KindName);

TEST_P(Intervals, OfAllSortsComeToAnEnd) {
  for (const double interval_ms : Intervals_ms) {
    for (const Data data : {Data::Own, Data::Supplied, Data::None}) {
      Try(GetParam(), interval_ms, data);
    }
  }
}

}  // namespace
}  // namespace hardening
