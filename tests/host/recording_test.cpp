#include <gtest/gtest.h>
#include <sndfile.h>

#include "host/failure.h"
#include "host/make.h"
#include "host/recording_source.h"
#include "support/samples.h"
#include "support/slots.h"
#include "support/temp_folder.h"

namespace {

using support::SameBits;
using support::Samples;
using wavechain::AudioInput;
using wavechain::Make;
using wavechain::RecordingSource;

class Recording : public testing::Test {
 protected:
  std::string Write(const Samples& samples, int channels = 1) {
    SF_INFO info = {};
    info.samplerate = 8000;
    info.channels = channels;
    info.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    const std::string path = folder.Path("in.wav");
    SNDFILE* file = ::sf_open(path.c_str(), SFM_WRITE, &info);
    ::sf_write_float(file, samples.data(), static_cast<sf_count_t>(samples.size()));
    ::sf_close(file);
    return path;
  }

  support::TempFolder folder;
};

TEST_F(Recording, EndsExactlyWithItsLastSample) {
  for (const int length : {1, 2, 4096, 10000}) {
    const Samples samples = support::Noise(length);
    for (const int pull : {1, 7, 4096, 20000}) {
      AudioInput input(Write(samples), std::nullopt, false);
      const auto source = Make<RecordingSource>(input);
      Samples got;
      while (!source->EndOfSrc()) {
        Samples block(static_cast<std::size_t>(pull));
        int produced = -1;
        source->TransmitNow(block.data(), pull, produced);
        // Never an end that still has to be found out by an empty delivery.
        ASSERT_GT(produced, 0);
        ASSERT_LE(produced, pull);
        got.insert(got.end(), block.begin(), block.begin() + produced);
      }
      EXPECT_TRUE(SameBits(got, samples)) << length << " " << pull;
      int produced = -1;
      float more = 7.0F;
      source->TransmitNow(&more, 1, produced);
      EXPECT_EQ(produced, 0);
      EXPECT_EQ(more, 7.0F);
    }
  }
}

TEST_F(Recording, AnEmptyOneHasEndedFromTheStart) {
  AudioInput input(Write({}), std::nullopt, false);
  const auto source = Make<RecordingSource>(input);
  EXPECT_TRUE(source->EndOfSrc());
  EXPECT_EQ(source->Info().length, 0);
}

TEST_F(Recording, RequestsOfNothingGetNothing) {
  AudioInput input(Write(support::Noise(10)), std::nullopt, false);
  const auto source = Make<RecordingSource>(input);
  for (const int count : {0, -1, -4096, std::numeric_limits<int>::min()}) {
    float untouched = 7.0F;
    int produced = -1;
    source->TransmitNow(&untouched, count, produced);
    EXPECT_EQ(produced, 0);
    EXPECT_EQ(untouched, 7.0F);
    source->TransmitNow(nullptr, count, produced);
    EXPECT_EQ(produced, 0);
  }
  EXPECT_FALSE(source->EndOfSrc());
}

TEST_F(Recording, DescribesItselfAnewToEachCaller) {
  AudioInput input(Write(support::Noise(10)), std::nullopt, false);
  const auto source = Make<RecordingSource>(input);
  wavefilters::IWaveDescriptorC* first = nullptr;
  wavefilters::IWaveDescriptorC* second = nullptr;
  source->GetDescriptor(&first);
  first->SetLength(3);
  first->SetPeriod(9.0);
  source->GetDescriptor(&second);
  EXPECT_NE(first, second);
  EXPECT_EQ(second->GetLength(), 10);
  double interval_ms = 0.0;
  second->GetPeriod(&interval_ms);
  EXPECT_EQ(interval_ms, 0.125);
  char name[512];
  second->GetName(name, 512);
  EXPECT_EQ(std::string(name), folder.Path("in.wav"));
  EXPECT_EQ(first->Release(), 0U);
  second->Release();
}

TEST_F(Recording, ReadsItsChannelAcrossBlocks) {
  const Samples both = support::Noise(2 * 10000);
  AudioInput input(Write(both, 2), 2, false);
  Samples right;
  for (std::size_t i = 1; i < both.size(); i += 2) {
    right.push_back(both[i]);
  }
  Samples got(10000);
  EXPECT_EQ(input.Read(got.data(), 20000), 10000);
  EXPECT_TRUE(SameBits(got, right));
  EXPECT_TRUE(input.AtEnd());
}

TEST_F(Recording, HasAllSlotsOfAFilter) {
  AudioInput input(Write(support::Noise(10)), std::nullopt, false);
  const auto source = Make<RecordingSource>(input);
  const auto other = Make<RecordingSource>(input);
  void* object = source.Get();
  const auto* slots = *static_cast<FilterSlots**>(object);
  slots->EnableInPlace(object, true);
  slots->Set_param_list(object, nullptr, 0);
  slots->Set_console_out(object, nullptr);
  slots->Set_num_stream(object, nullptr);
  EXPECT_EQ(slots->SrcSet(object), 0);
  slots->InitFrom(object, nullptr);
  slots->Init(object, 1.0);
  // References that are handed over are given back.
  other->AddRef();
  void* sources[] = {other.Get()};
  slots->Set_src_list(object, sources, 1);
  EXPECT_EQ(other->AddRef(), 2U);
  other->Release();
  float buffer[10];
  int produced = 0;
  slots->TransmitNow(object, buffer, 10, &produced);
  EXPECT_EQ(produced, 10);
  EXPECT_TRUE(slots->EndOfSrc(object));
}

TEST_F(Recording, CountsSamplesThatAreNotFinite) {
  Samples samples = support::Noise(9000);
  samples[0] = std::numeric_limits<float>::quiet_NaN();
  samples[5000] = std::numeric_limits<float>::infinity();
  samples[8999] = -std::numeric_limits<float>::infinity();
  samples[100] = std::numeric_limits<float>::max();
  samples[101] = std::numeric_limits<float>::denorm_min();
  AudioInput input(Write(samples), std::nullopt, false);
  const auto source = Make<RecordingSource>(input);
  std::vector<float> block(9000);
  int produced = 0;
  source->TransmitNow(block.data(), 4000, produced);
  EXPECT_EQ(source->NonFinite(), 1);
  source->TransmitNow(block.data(), 9000, produced);
  EXPECT_EQ(source->NonFinite(), 3);
}

}  // namespace
