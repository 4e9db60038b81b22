#include <gtest/gtest.h>

#include "support/filter.h"

namespace {

using namespace support;

TEST(SineFilter, AddsAQuarterTurnPerSampleAt250HzAnd1Ms) {
  CallLog log;
  SourceMock source("source", log, Constant(8));
  source.description.interval_ms = 1.0;
  Filter filter = MakeFilter(SineGen);
  filter.Set_param_list({250.0, 2.0});
  filter.Set_src_list(source);
  EXPECT_EQ(log.Take(), (Calls{"source.GetDescriptor()", "source.descriptor.GetPeriod()",
                               "source.descriptor.Release()"}));
  const Samples samples = filter.PullAll({3});
  ASSERT_EQ(samples.size(), 8U);
  for (std::size_t i = 0; i < 8; ++i) {
    const double expected[] = {2.0, 0.0, -2.0, 0.0};
    EXPECT_NEAR(static_cast<double>(samples[i]), expected[i % 4], 1e-12);
  }
}

}  // namespace
