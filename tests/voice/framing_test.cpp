#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <limits>
#include <ostream>

#include "reference/fric_syn.h"
#include "reference/glot_syn.h"
#include "reference/pulse_syn.h"
#include "support/guarded_buffer.h"
#include "support/temp_folder.h"
#include "tracks/twin.h"
#include "voice/random_numbers.h"
#include "voice/voice.h"

// What the three voice sources share: how they come by their events, and what they make of an
// interval, a file or a host that is not as it should be.
namespace voice {
namespace {

using support::Calls;
using support::Constant;
using support::Noise;

struct Source {
  support::Kind kind;
  std::string extension;
  std::string event;  // a line but for its instant, with an amplitude that can be heard
};

void PrintTo(const Source& source, std::ostream* out) { *out << source.kind.entry; }

const Source Sources[] = {{support::GlotSyn, ".gpl", " 0.5 0.1 0.05 0.5 -0.5\n"},
                          {support::FricSyn, ".fla", " 0.5 0.5 -0.5\n"},
                          {support::PulseSyn, ".gpm", " 0.5 anything\n"}};

class Framing : public testing::TestWithParam<Source> {
 protected:
  std::string Event(double time_ms) const { return support::Text(time_ms) + GetParam().event; }

  // All samples that the filter makes of 9000 zeros at 10 kHz, and the calls up to the first pull.
  Samples Run(const std::map<std::string, std::string>& files, double interval_ms = 0.1) {
    log.Take();
    support::NumStreamMock stream("stream", log);
    stream.files = files;
    support::SourceMock source("source", log, Constant(9000));
    source.description.interval_ms = interval_ms;
    support::Filter filter = support::MakeFilter(GetParam().kind);
    filter.Set_num_stream(&stream);
    filter.Set_src_list(source);
    setUp = log.Take();
    return filter.PullAll({1000});
  }

  support::CallLog log;
  Calls setUp;
};

TEST_P(Framing, HoldsBack4096Samples) {
  EXPECT_EQ(support::MakeFilter(GetParam().kind).Call<TrackGetMem>(15), 4096);
}

TEST_P(Framing, OpensTheBareExtensionOnTheHostsStream) {
  EXPECT_TRUE(Sounding(Run({{GetParam().extension, Event(100)}})).end > 0);
  EXPECT_EQ(setUp,
            (Calls{"stream.AddRef()", "stream.Close()", "source.GetDescriptor()",
                   "source.descriptor.GetPeriod()", "stream.Open(\"" + GetParam().extension + "\")",
                   "stream.GetLine()", "stream.GetDouble()", "source.descriptor.Release()"}));
}

TEST_P(Framing, OpensTheFileBesideTheSignalOnAStreamOfItsOwn) {
  const support::TempFolder folder;
  folder.Write("sig" + GetParam().extension, Event(100));
  for (const char* name : {"sig.wav", "sig", "sig.", "sig.w v"}) {
    support::SourceMock source("source", log, Constant(9000));
    source.description.name = folder.Path(name);
    log.Take();
    support::Filter filter = support::MakeFilter(GetParam().kind);
    filter.Set_src_list(source);
    EXPECT_EQ(log.Take(), (Calls{"source.GetDescriptor()", "source.descriptor.GetPeriod()",
                                 "source.GetDescriptor()", "source.descriptor.GetName(512)",
                                 "source.descriptor.Release()", "source.descriptor.Release()"}));
    EXPECT_TRUE(Sounding(filter.PullAll({1000})).end > 0) << name;
  }
}

TEST_P(Framing, OpensTheBareExtensionAgainOnItsOwnStream) {
  const support::TempFolder folder;
  folder.Write(GetParam().extension, Event(300));
  folder.Write("sig" + GetParam().extension, Event(100));
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(folder.Path("."));
  support::SourceMock first("first", log, Constant(9000));
  support::SourceMock second("second", log, Constant(9000));
  first.description.name = second.description.name = "sig.wav";
  support::Filter filter = support::MakeFilter(GetParam().kind);
  filter.Set_src_list(first);
  const Extent early = Sounding(filter.PullAll({1000}));
  filter.Set_src_list(second);
  const Extent late = Sounding(filter.PullAll({1000}));
  std::filesystem::current_path(before);
  EXPECT_TRUE(0 < early.end && early.end < 2900) << early.end;
  EXPECT_TRUE(2000 < late.first && late.first <= 3000) << late.first;
}

TEST_P(Framing, LeavesTheSignalAsItIsWithoutEvents) {
  const std::string extension = GetParam().extension;
  const std::string event = Event(100);
  using Files = std::map<std::string, std::string>;
  for (const Files& files :
       {Files{}, Files{{"sig" + extension, event}}, Files{{extension, ""}},
        Files{{extension, "\n" + event}}, Files{{extension, "  \r\n" + event}},
        Files{{extension, "# pulses\n" + event}}, Files{{extension, ",1 1 1\n" + event}},
        Files{{extension, "nan 1 1 1\n" + event}}, Files{{extension, "1e999 1 1 1\n" + event}},
        Files{{extension, "100\n" + event}}, Files{{extension, "100 x 1 1 1\n" + event}},
        Files{{extension, "100 1e999 1 1\n" + event}},
        Files{{extension, std::string(300, '\0')}}}) {
    EXPECT_TRUE(support::SameBits(Run(files), Constant(9000))) << testing::PrintToString(files);
  }
}

TEST_P(Framing, AsksAStreamThatDidNotOpenForNothing) {
  Run({});
  EXPECT_EQ(setUp.at(4), "stream.Open(\"" + GetParam().extension + "\")");
  EXPECT_EQ(setUp.at(5), "source.descriptor.Release()");
}

TEST_P(Framing, IsSilentWhereTheIntervalCountsNoTime) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  const double tiny = std::numeric_limits<double>::denorm_min();
  for (const double interval_ms : {0.0, -0.0, -0.1, -tiny, -infinity, nan}) {
    for (const double time_ms : {-1.0, 0.0, 100.0}) {
      const Samples signal = Run({{GetParam().extension, Event(time_ms)}}, interval_ms);
      EXPECT_TRUE(support::SameBits(signal, Constant(9000))) << time_ms << " by " << interval_ms;
    }
  }
}

TEST_P(Framing, SoundsAgainAfterAnIntervalThatCountsNoTime) {
  Voice source(GetParam().kind, Event(100), 0.0);
  EXPECT_EQ(Sounding(source.Apply(Constant(4000))), Extent{});
  source.Slots().Init(0.1);
  EXPECT_TRUE(Sounding(source.Apply(Constant(4000))).end > 0);
  source.Slots().Init(-1.0);
  EXPECT_EQ(Sounding(source.Apply(Constant(4000))), Extent{});
}

TEST_P(Framing, DoesNothingBeforeInit) {
  support::Filter filter = support::MakeFilter(GetParam().kind);
  support::GuardedBuffer buffer(4000);
  filter.Call<TrackApply>(16, buffer.data(), 4000, 0);
  buffer.CheckAfter(0);
}

TEST_P(Framing, StopsForGoodAtTheEndOfItsEvents) {
  Voice source(GetParam().kind, Event(1500));
  EXPECT_TRUE(Sounding(source.Apply(Constant(4000))).end > 0);
  EXPECT_EQ(Sounding(source.Apply(Constant(4000))), Extent{});
  source.Slots().Init(1.0);
  EXPECT_TRUE(Sounding(source.Apply(Constant(4000))).end > 0) << "the file is opened again";
}

TEST_P(Framing, TakesNoParametersAndPrintsNothing) {
  const std::map<std::string, std::string> files{{GetParam().extension, Event(100)}};
  std::srand(5);
  const Samples plain = Run(files);
  std::srand(5);
  support::NumStreamMock stream("stream", log);
  stream.files = files;
  support::ConsoleMock console("console", log);
  support::SourceMock source("source", log, Constant(9000));
  support::Filter filter = support::MakeFilter(GetParam().kind);
  filter.Set_param_list({3.0, -4.0, 5.0, 6.0});
  filter.Set_console_out(&console);
  filter.Set_num_stream(&stream);
  filter.Set_src_list(source);
  EXPECT_TRUE(support::SameBits(filter.PullAll({1000}), plain));
  EXPECT_EQ(log.Take("console"), (Calls{"AddRef()"}));
}

// Slots that a host put others in.
double initialised_ms = 0.0;
int applied = 0;
void NoteInit(void*, double interval_ms) { initialised_ms = interval_ms; }
void NoteApply(void*, float*, int, int) { ++applied; }
int SmallReserve(void*) { return 100; }

TEST_P(Framing, ReachesSlotsThatTheHostExchanged) {
  support::SourceMock source("source", log, Constant(3000));
  source.description.interval_ms = 0.3;
  support::Filter filter = support::MakeFilter(GetParam().kind);
  filter.Exchange(14, &NoteInit);
  filter.Exchange(15, &SmallReserve);
  filter.Exchange(16, &NoteApply);
  initialised_ms = 0.0;
  applied = 0;
  filter.Set_src_list(source);
  EXPECT_EQ(initialised_ms, 0.3);
  EXPECT_EQ(filter.Pull(1000).size(), 1000U);
  EXPECT_EQ(applied, 1);
  EXPECT_EQ(source.position, 1100);
}

INSTANTIATE_TEST_SUITE_P(Each, Framing, testing::ValuesIn(Sources),
                         [](const auto& each) { return std::string(each.param.kind.entry); });

// Slot 14 in mid-stream, beside the models: it opens the file again and leaves what is staged.
template <class Model>
void InitInMidStream(tracks::Twin<Model>& twin, const Source& source) {
  std::string text;
  for (int time_ms = 0; time_ms < 3000; time_ms += 97) {
    text += support::Text(time_ms) + source.event;
  }
  twin.Supply({{source.extension, text}});
  tracks::SourceScript script;
  script.samples = Noise(30000);
  script.interval_ms = 0.1;
  twin.Attach(script);
  EXPECT_EQ(twin.Pull(3000).size(), 3000U);
  EXPECT_EQ(twin.Pull(2000).size(), 2000U);
  twin.Init(0.125);
  EXPECT_EQ(twin.LastCalls(), (Calls{"stream0.Open(\"" + source.extension + "\")",
                                     "stream0.GetLine()", "stream0.GetDouble()"}));
  EXPECT_EQ(twin.Pull(1000).size(), 1000U);
  twin.Dispose();
  EXPECT_EQ(twin.LastCalls(), (Calls{"stream0.Close()", "source0.Dispose()", "source0.Release()"}));
  // What was staged can still be had, event or no event.
  EXPECT_EQ(twin.PullAll({5000}).size(), 4096U);
  twin.Init(0.1);
  twin.Attach(script);
  EXPECT_EQ(twin.PullAll().size(), 30000U);
}

TEST(FramingBesideTheModels, GlotSynInitInMidStream) {
  tracks::Twin<reference::GlotSyn> twin(support::GlotSyn);
  InitInMidStream(twin, Sources[0]);
}

TEST(FramingBesideTheModels, FricSynInitInMidStream) {
  tracks::Twin<reference::FricSyn> twin(support::FricSyn);
  RandomNumbers numbers(7);
  twin.Reference().DrawFrom([&numbers] { return numbers.Next(); });
  InitInMidStream(twin, Sources[1]);
  EXPECT_EQ(std::rand(), numbers.Next());
}

TEST(FramingBesideTheModels, PulseSynInitInMidStream) {
  tracks::Twin<reference::PulseSyn> twin(support::PulseSyn);
  InitInMidStream(twin, Sources[2]);
}

}  // namespace
}  // namespace voice
