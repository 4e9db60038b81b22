#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "reference/beam_data.h"
#include "reference/beam_pel.h"
#include "support/filter.h"
#include "support/temp_folder.h"
#include "tracks/pellet_text.h"
#include "tracks/twin.h"

// How the track-driven filters come by their files, and the order in which they use the host's
// objects while they are attached, attached again and let go.
namespace tracks {
namespace {

using support::Calls;
using support::TempFolder;

using Pellet = Twin<reference::BeamPel>;
using Kinematics = Twin<reference::BeamData>;

const std::string Rising = Column(6, std::vector<double>(400, 250.0));

bool Sounds(const Samples& samples) {
  for (const float sample : samples) {
    if (sample != 0.0F) return true;
  }
  return false;
}

TEST(Attachment, OpensTheWholePathOnASuppliedStream) {
  Pellet pellet(support::BeamPel);
  pellet.Supply({{"some.folder/take.xyd", Rising}});
  EXPECT_EQ(pellet.LastCalls(), (Calls{"stream0.AddRef()"}));
  pellet.Attach({Signal(9000, 0.1, "some.folder/take.wav"), Signal(1), Signal(2)});
  EXPECT_EQ(pellet.LastCalls(),
            (Calls{"stream0.Close()", "source1.Release()", "source2.Release()",
                   "source0.GetDescriptor()", "source0.descriptor.GetPeriod()",
                   "source0.descriptor.GetName(512)", "stream0.Open(\"some.folder/take.xyd\")",
                   "stream0.GetLine()", "source0.descriptor.Release()"}));
  EXPECT_TRUE(Sounds(pellet.PullAll()));
  pellet.Release();
  EXPECT_EQ(pellet.LastCalls(), (Calls{"stream0.Close()", "stream0.Release()", "source0.Dispose()",
                                       "source0.Release()"}));
}

TEST(Attachment, LeavesAFileAloneThatDidNotOpen) {
  Pellet pellet(support::BeamPel);
  pellet.Supply({});
  pellet.Attach(Signal(9000));
  EXPECT_EQ(pellet.LastCalls(),
            (Calls{"stream0.Close()", "source0.GetDescriptor()", "source0.descriptor.GetPeriod()",
                   "source0.descriptor.GetName(512)", "stream0.Open(\"take.xyd\")",
                   "source0.descriptor.Release()"}));
  EXPECT_FALSE(Sounds(pellet.PullAll()));
  EXPECT_THAT(pellet.LastCalls(), testing::Not(testing::Contains("stream0.GetDouble()")));
}

TEST(Attachment, CutsTheNameAtTheLastDotOfTheWholePath) {
  struct Case {
    std::string path;
    std::string file;
  };
  for (const Case& name :
       std::vector<Case>{{"take3.wav", "take3.xyd"},
                         {"take3", "take3.xyd"},
                         {"a.b/take3", "a.xyd"},
                         {"take.3.wav", "take.3.xyd"},
                         {".wav", ".xyd"},
                         {"", ".xyd"},
                         {"take.", "take.xyd"},
                         {"c:\\x.y\\take.wav", "c:\\x.y\\take.xyd"},
                         {std::string(600, 'n') + ".wav", std::string(511, 'n') + ".xyd"},
                         {std::string(509, 'n') + ".wav", std::string(509, 'n') + ".xyd"}}) {
    Pellet pellet(support::BeamPel);
    pellet.Supply({{name.file, Rising}});
    pellet.Attach(Signal(6000, 0.1, name.path));
    EXPECT_THAT(pellet.LastCalls(), testing::Contains("stream0.Open(\"" + name.file + "\")"));
    EXPECT_TRUE(Sounds(pellet.PullAll())) << name.path;
  }
}

TEST(Attachment, DoublesTheStemOnAStreamOfItsOwn) {
  const TempFolder folder;
  const std::string stem = folder.Path("sig");
  const std::string twice = folder.Write("sig" + stem + ".xyd", Rising);
  ASSERT_EQ(twice, stem + stem + ".xyd");
  Pellet pellet(support::BeamPel);
  pellet.Attach(Signal(9000, 0.1, stem + ".wav"));
  EXPECT_EQ(pellet.LastCalls(),
            (Calls{"source0.GetDescriptor()", "source0.descriptor.GetPeriod()",
                   "source0.descriptor.GetName(512)", "source0.GetDescriptor()",
                   "source0.descriptor.GetName(512)", "source0.descriptor.Release()",
                   "source0.descriptor.Release()"}));
  EXPECT_TRUE(Sounds(pellet.PullAll()));
}

TEST(Attachment, LooksBesideTheSignalWithTheStreamThatItMadeBefore) {
  const TempFolder folder;
  const std::string stem = folder.Path("sig");
  folder.Write("sig" + stem + ".xyd", Rising);
  folder.Write("sig.xyd", Column(6, std::vector<double>(400, -90.0)));
  Pellet pellet(support::BeamPel);
  pellet.Attach(Signal(9000, 0.1, stem + ".wav"));
  const Samples doubled = pellet.PullAll();
  EXPECT_GT(doubled[1000], 0.0F);
  pellet.Attach(Signal(9000, 0.1, stem + ".wav"));
  EXPECT_EQ(pellet.LastCalls(),
            (Calls{"source0.Dispose()", "source0.Release()", "source1.GetDescriptor()",
                   "source1.descriptor.GetPeriod()", "source1.descriptor.GetName(512)",
                   "source1.descriptor.Release()"}));
  EXPECT_LT(pellet.PullAll()[1000], 0.0F) << "the file beside the signal, now";
}

TEST(Attachment, AttachesItsOwnStreamThroughSlot11) {
  static int attached = 0;
  attached = 0;
  support::CallLog log;
  support::SourceMock source("source", log, support::Noise(10));
  source.description.name = "there is no such file.wav";
  support::Filter filter = support::MakeFilter(support::BeamPel);
  static void (*keep)(void*, void*) = nullptr;
  keep = filter.Exchange(
      11, +[](void* self, void* stream) {
        ++attached;
        keep(self, stream);
      });
  filter.Set_src_list(source);
  EXPECT_EQ(attached, 1);
  filter.SrcSet();
  EXPECT_EQ(attached, 1) << "once it has one, it makes no other";
}

TEST(Attachment, OpensNothingWhereTheHostKeepsTheStreamAway) {
  support::CallLog log;
  support::SourceMock source("source", log, support::Ramp(10));
  source.description.name = "signal.wav";
  support::Filter filter = support::MakeFilter(support::BeamPel);
  // The stream goes where it came from: who takes it first and lets go of it, frees it.
  filter.Exchange(
      11, +[](void*, void* stream) {
        const auto& slots = support::SlotsOf<NumStreamSlots>(stream);
        slots.AddRef(stream);
        EXPECT_EQ(slots.Release(stream), 0U);
      });
  filter.Set_src_list(source);
  EXPECT_EQ(filter.PullAll({10}), support::Constant(10)) << "as without a file";
}

TEST(Attachment, ReleasesTheOldStreamBeforeItTakesTheNew) {
  Pellet pellet(support::BeamPel);
  pellet.Supply({{"take.xyd", Rising}});
  pellet.Supply({{"take.xyd", Column(6, std::vector<double>(400, -90.0))}});
  EXPECT_EQ(pellet.LastCalls(), (Calls{"stream0.Release()", "stream1.AddRef()"}));
  pellet.SupplyAgain(1);
  EXPECT_EQ(pellet.LastCalls(), (Calls{"stream1.Release()", "stream1.AddRef()"}));
  pellet.Attach(Signal(9000));
  pellet.Pull(500);
  pellet.SupplyAgain(0);
  EXPECT_EQ(pellet.LastCalls(), (Calls{"stream1.Release()", "stream0.AddRef()"}));
  pellet.PullAll();
}

TEST(Attachment, ChangesToASuppliedStreamAfterOneOfItsOwn) {
  const TempFolder folder;
  const std::string stem = folder.Path("sig");
  folder.Write("sig" + stem + ".xyd", Rising);
  Pellet pellet(support::BeamPel);
  pellet.Attach(Signal(9000, 0.1, stem + ".wav"));
  pellet.Pull(1000);
  pellet.Supply({{stem + ".xyd", Rising}});
  pellet.Pull(1000);  // the new stream has no file open: the data end
  pellet.Attach(Signal(9000, 0.1, stem + ".wav"));
  EXPECT_TRUE(Sounds(pellet.PullAll()));
}

TEST(Attachment, DropsTheOldSourceFirstAndWithoutANewOneStopsThere) {
  Pellet pellet(support::BeamPel);
  pellet.Supply({{"take.xyd", Rising}});
  pellet.Attach(Signal(9000));
  pellet.Pull(100);
  pellet.Attach(Signal(9000));
  EXPECT_EQ(
      pellet.LastCalls(),
      (Calls{"stream0.Close()", "source0.Dispose()", "source0.Release()", "source1.GetDescriptor()",
             "source1.descriptor.GetPeriod()", "source1.descriptor.GetName(512)",
             "stream0.Open(\"take.xyd\")", "stream0.GetLine()", "source1.descriptor.Release()"}));
  pellet.Pull(100);
  pellet.Attach(std::vector<SourceScript>{});
  EXPECT_EQ(pellet.LastCalls(),
            (Calls{"stream0.Close()", "source1.Dispose()", "source1.Release()"}));
  EXPECT_EQ(pellet.PullAll().size(), 4096U) << "what was staged still leaves";
}

TEST(Attachment, TakesANegativeListForAnEmptyOne) {
  support::CallLog log;
  support::SourceMock source("source", log, support::Noise(10));
  support::Filter filter = support::MakeFilter(support::BeamPel);
  source.description.name = "there is no such file.wav";
  filter.Set_src_list(source);
  log.Take();
  filter.Slots().Set_src_list(filter.Object(), nullptr, -3);
  EXPECT_EQ(log.Take(), (Calls{"source.Dispose()", "source.Release()"}));
  EXPECT_TRUE(filter.EndOfSrc());
}

TEST(Attachment, ReleasesTheConsoleLastAndSaysNothingOnIt) {
  support::CallLog log;
  support::ConsoleMock console("console", log);
  support::NumStreamMock stream("stream", log);
  support::SourceMock source("source", log, support::Noise(100));
  for (const support::Kind& kind : {support::BeamPel, support::BeamData}) {
    support::Filter filter = support::MakeFilter(kind);
    filter.Set_num_stream(&stream);
    filter.Set_console_out(&console);
    filter.Set_src_list(source);
    filter.PullAll();
    source.position = 0;
    log.Take();
    EXPECT_EQ(filter.Release(), 0U);
    EXPECT_EQ(log.Take(), (Calls{"stream.Close()", "stream.Release()", "source.Dispose()",
                                 "source.Release()", "console.Release()"}));
  }
}

std::vector<std::string> reached;

// What a filter reaches of its own operations while it is attached, with `slot` exchanged.
template <class Function>
std::vector<std::string> ReachedWhileAttached(const support::Kind& kind, int slot,
                                              Function replacement) {
  support::CallLog log;
  support::SourceMock source("source", log, support::Noise(10));
  source.description.name = "there is no such file.wav";
  reached.clear();
  support::Filter filter = support::MakeFilter(kind);
  filter.Exchange(slot, replacement);
  filter.Set_src_list(source);
  return reached;
}

TEST(Attachment, ReachesItsOwnOperationsThroughTheSlots) {
  using testing::ElementsAre;
  for (const support::Kind& kind : {support::SetTrack, support::BeamPel, support::BeamData}) {
    EXPECT_THAT(ReachedWhileAttached(
                    kind, 5, +[](void*) { reached.emplace_back("Dispose"); }),
                ElementsAre("Dispose"));
    EXPECT_THAT(ReachedWhileAttached(
                    kind, 12, +[](void*) { reached.emplace_back("SrcSet"); }),
                ElementsAre("SrcSet"));
    EXPECT_THAT(ReachedWhileAttached(
                    kind, 13, +[](void*, void*) { reached.emplace_back("Init"); }),
                ElementsAre("Init"));
    EXPECT_THAT(ReachedWhileAttached(
                    kind, 14,
                    +[](void*, double interval_ms) {
                      reached.push_back("Init " + support::Text(interval_ms));
                    }),
                ElementsAre("Init 0.1"));
  }
}

TEST(Attachment, HandsOutTheSourcesDescriptorAmended) {
  Pellet pellet(support::BeamPel);
  pellet.Supply({});
  pellet.Attach(Signal(10));
  pellet.GetDescriptor();
  EXPECT_EQ(pellet.LastCalls(),
            (Calls{"source0.GetDescriptor()", "source0.descriptor.SetUnits(\"mm\")",
                   "source0.descriptor.SetRange(100)", "source0.descriptor.Release()"}));

  support::CallLog log;
  support::DescriptorMock shared("shared", log, {10, 0.1, "take.wav", 1.0, ""});
  support::SourceMock source("source", log, support::Noise(10));
  source.shared = &shared;
  support::Filter filter = support::MakeFilter(support::BeamPel);
  filter.Set_src_list(source);
  const support::Description said = filter.GetDescriptor(source);
  EXPECT_EQ(said.units, "mm");
  EXPECT_EQ(said.range, 100.0);
  EXPECT_EQ(said.length, 10);
  EXPECT_EQ(said.interval_ms, 0.1);
  EXPECT_EQ(said.name, "take.wav");
}

TEST(Attachment, NamesUnitAndFullScaleByTheMode) {
  struct Case {
    double mode;
    std::string units;
    std::string range;
  };
  for (const Case& measure : std::vector<Case>{{0, "mm", "150"},
                                               {1, "mm", "150"},
                                               {2, "mm", "150"},
                                               {3, "mm/s", "500"},
                                               {5, "mm", "150"},
                                               {4, "mm/s^2", "50000"},
                                               {6, "mm", "150"},
                                               {7, "mm", "150"},
                                               {8, "mm/s", "100"},
                                               {9, "mm", "150"},
                                               {-4, "mm", "150"},
                                               {4.9, "mm/s^2", "50000"},
                                               {3.99, "mm/s", "500"},
                                               {8.5, "mm/s", "100"}}) {
    Kinematics kinematics(support::BeamData);
    kinematics.Set_param_list({measure.mode});
    kinematics.Supply({});
    kinematics.Attach(Signal(10));
    kinematics.GetDescriptor();
    EXPECT_EQ(
        kinematics.LastCalls(),
        (Calls{"source0.GetDescriptor()", "source0.descriptor.SetUnits(\"" + measure.units + "\")",
               "source0.descriptor.SetRange(" + measure.range + ")",
               "source0.descriptor.Release()"}))
        << measure.mode;
  }
  Kinematics fresh(support::BeamData);
  fresh.Attach(Signal(10));
  fresh.GetDescriptor();
  EXPECT_THAT(fresh.LastCalls(), testing::Contains("source0.descriptor.SetRange(150)"));
}

TEST(Attachment, AsksTheKinematicsReadersSignalNameTwice) {
  const TempFolder folder;
  folder.Write("x.wavpal.dat", "0 0\n1 1\n");
  const std::string stem = folder.Path("x");
  Kinematics kinematics(support::BeamData);
  kinematics.Supply({{stem + ".xyd", Rising}});
  kinematics.Attach(Signal(100, 0.1, stem + ".wav"));
  EXPECT_EQ(kinematics.LastCalls(),
            (Calls{"stream0.Close()", "source0.GetDescriptor()", "source0.descriptor.GetPeriod()",
                   "source0.descriptor.GetName(512)", "source0.descriptor.GetName(512)",
                   "stream0.Open(\"" + stem + ".xyd\")", "stream0.GetLine()",
                   "source0.descriptor.Release()"}));

  Kinematics alone(support::BeamData);
  alone.Attach(Signal(100, 0.1, stem + ".wav"));
  EXPECT_EQ(alone.LastCalls(),
            (Calls{"source0.GetDescriptor()", "source0.descriptor.GetPeriod()",
                   "source0.descriptor.GetName(512)", "source0.descriptor.GetName(512)",
                   "source0.GetDescriptor()", "source0.descriptor.GetName(512)",
                   "source0.descriptor.Release()", "source0.descriptor.Release()"}));
}

TEST(Attachment, DoesNotOpenThePelletFileWithoutAPalate) {
  Kinematics kinematics(support::BeamData);
  kinematics.Set_param_list({1});
  kinematics.Supply({{"take.xyd", Rising}});
  kinematics.Attach(Signal(9000));
  EXPECT_EQ(kinematics.LastCalls(),
            (Calls{"stream0.Close()", "source0.GetDescriptor()", "source0.descriptor.GetPeriod()",
                   "source0.descriptor.GetName(512)", "source0.descriptor.Release()"}));
  EXPECT_FALSE(Sounds(kinematics.PullAll()));
}

TEST(Attachment, PassesTheHintToTheSourceAndKeepsNothing) {
  support::CallLog log;
  support::SourceMock source("source", log, support::Noise(10));
  source.description.name = "there is no such file.wav";
  for (const support::Kind& kind : {support::SetTrack, support::BeamPel, support::BeamData}) {
    support::Filter filter = support::MakeFilter(kind);
    log.Take();
    filter.EnableInPlace(true);
    EXPECT_EQ(log.Take(), Calls{});
    filter.Set_src_list(source);
    log.Take();
    filter.EnableInPlace(true);
    filter.EnableInPlace(false);
    EXPECT_EQ(log.Take(), (Calls{"source.EnableInPlace(true)", "source.EnableInPlace(false)"}));
  }
}

}  // namespace
}  // namespace tracks
