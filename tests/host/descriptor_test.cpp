#include <gtest/gtest.h>

#include <cstring>
#include <limits>

#include "host/make.h"
#include "host/signal_descriptor.h"
#include "support/slots.h"

namespace {

using wavechain::Make;
using wavechain::SignalDescriptor;
using wavechain::SignalInfo;

const SignalInfo Take = {.length = 1000,
                         .interval_ms = 0.0625,
                         .fullScale = 1.0,
                         .units = "",
                         .name = "folder/take 3.wav"};

TEST(SignalDescriptor, AnswersAndTakesAmendments) {
  const auto descriptor = Make<SignalDescriptor>(Take);
  double interval_ms = 0.0;
  descriptor->GetPeriod(&interval_ms);
  EXPECT_EQ(interval_ms, 0.0625);
  EXPECT_EQ(descriptor->GetLength(), 1000);
  descriptor->SetPeriod(0.125);
  descriptor->SetLength(500);
  descriptor->SetRange(150.0);
  descriptor->SetUnits("mm");
  EXPECT_EQ(descriptor->Info().interval_ms, 0.125);
  EXPECT_EQ(descriptor->Info().length, 500);
  EXPECT_EQ(descriptor->Info().fullScale, 150.0);
  EXPECT_EQ(descriptor->Info().units, "mm");
  EXPECT_EQ(descriptor->Info().name, "folder/take 3.wav");
  descriptor->SetUnits(nullptr);
  EXPECT_EQ(descriptor->Info().units, "");
}

TEST(SignalDescriptor, NamesAreCutToTheBuffer) {
  SignalInfo info = Take;
  info.name = std::string(600, 'n');
  const auto descriptor = Make<SignalDescriptor>(info);
  char buffer[520];
  std::memset(buffer, '?', sizeof buffer);
  descriptor->GetName(buffer, 512);
  EXPECT_EQ(std::string(buffer), std::string(511, 'n'));
  EXPECT_EQ(buffer[512], '?');
  descriptor->GetName(buffer, 1);
  EXPECT_STREQ(buffer, "");
  buffer[0] = '?';
  descriptor->GetName(buffer, 0);
  descriptor->GetName(buffer, -5);
  EXPECT_EQ(buffer[0], '?');
  const auto exact = Make<SignalDescriptor>(Take);
  exact->GetName(buffer, static_cast<int>(Take.name.size()) + 1);
  EXPECT_EQ(std::string(buffer), Take.name);
}

TEST(SignalDescriptor, LongSignalsAreAnnouncedAtTheLimitAndKeepTheirLength) {
  SignalInfo info = Take;
  info.length = 5'000'000'000;
  const auto descriptor = Make<SignalDescriptor>(info);
  EXPECT_EQ(descriptor->GetLength(), std::numeric_limits<int>::max());
  descriptor->SetLength(descriptor->GetLength());
  EXPECT_EQ(descriptor->Info().length, 5'000'000'000);
  descriptor->SetLength(-3);
  EXPECT_EQ(descriptor->Info().length, 0);
}

TEST(SignalDescriptor, IsReachedBySlotNumber) {
  const auto descriptor = Make<SignalDescriptor>(Take);
  void* object = descriptor.Get();
  const auto* slots = *static_cast<DescriptorSlots**>(object);
  EXPECT_EQ(slots->GetLength(object), 1000);
  slots->SetLength(object, 7);
  slots->SetPeriod(object, 2.0);
  slots->SetRange(object, 3.0);
  slots->SetUnits(object, "mm/s");
  double interval_ms = 0.0;
  slots->GetPeriod(object, &interval_ms);
  EXPECT_EQ(interval_ms, 2.0);
  char name[512];
  slots->GetName(object, name, 512);
  EXPECT_STREQ(name, "folder/take 3.wav");
  EXPECT_EQ(descriptor->Info().length, 7);
  EXPECT_EQ(descriptor->Info().fullScale, 3.0);
  EXPECT_EQ(descriptor->Info().units, "mm/s");
  EXPECT_EQ(slots->AddRef(object), 2U);
  EXPECT_EQ(slots->Release(object), 1U);
}

}  // namespace
