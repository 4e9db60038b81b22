#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "reference/beam_pel.h"
#include "support/filter.h"
#include "tracks/pellet_text.h"
#include "tracks/twin.h"

// The staging and the pull loop that the track-driven filters share, seen on the pellet filter.
namespace tracks {
namespace {

using support::Calls;
using support::InBlocksOf;
using testing::ElementsAre;

using Pellet = Twin<reference::BeamPel>;

// Enough records of one column for a minute at 0.1 ms.
std::string ManyRecords() {
  std::vector<double> steps(9000, 7.0);
  return Column(6, steps);
}

void AttachWithRecords(Pellet& pellet, SourceScript script) {
  pellet.Supply({{"take.xyd", ManyRecords()}});
  pellet.Attach(script);
}

TEST(PullLoop, HoldsTheReserveBackWhileTheSourceRuns) {
  Pellet pellet(support::BeamPel);
  SourceScript script = Signal(20000);
  script.deliver = InBlocksOf({1000});
  AttachWithRecords(pellet, script);
  std::vector<std::size_t> produced;
  for (int pull = 0; pull < 8; ++pull) produced.push_back(pellet.Pull(1024).size());
  EXPECT_THAT(produced, ElementsAre(0, 0, 0, 0, 904, 1000, 1000, 1000));
}

// All calls of one pull, the filter's own operations included.
support::CallLog* ownCalls = nullptr;

int NoReserve(void*) {
  ownCalls->Add("Get_mem()");
  return 0;
}

int SomeReserve(void*) {
  ownCalls->Add("Get_mem()");
  return 4096;
}

void NoteApply(void*, float*, int count, int start) {
  ownCalls->Add("Apply(" + std::to_string(count) + "," + std::to_string(start) + ")");
}

// The bare loop: a filter whose own slots 15 and 16 were exchanged, so that its input passes.
struct BareLoop {
  explicit BareLoop(support::Samples signal, int (*reserve)(void*) = SomeReserve)
      : source("source", log, std::move(signal)) {
    source.description.name = "there is no such file.wav";
    ownCalls = &log;
    filter.Exchange(15, reserve);
    filter.Exchange(16, &NoteApply);
    filter.Set_src_list(source);
    log.Take();
  }

  support::CallLog log;
  support::SourceMock source;
  support::Filter filter = support::MakeFilter(support::BeamPel);
};

TEST(PullLoop, AsksInTheOrderOfItsSteps) {
  BareLoop bare(support::Noise(10000));
  EXPECT_EQ(bare.filter.Pull(1024), support::Slice(bare.source.samples, 0, 1024));
  EXPECT_EQ(bare.log.Take(), (Calls{"source.EndOfSrc()", "Get_mem()", "source.TransmitNow(5120)",
                                    "Apply(5120,0)", "source.EndOfSrc()", "Get_mem()"}));
  EXPECT_EQ(bare.filter.Pull(5000), support::Slice(bare.source.samples, 1024, 4096));
  EXPECT_EQ(bare.log.Take(), (Calls{"source.EndOfSrc()", "Get_mem()", "source.TransmitNow(4096)",
                                    "Apply(8192,1024)", "source.EndOfSrc()", "Get_mem()"}));
  EXPECT_FALSE(bare.filter.EndOfSrc());
  EXPECT_EQ(bare.log.Take(), Calls{}) << "staged samples answer for the source";
  EXPECT_EQ(bare.filter.Pull(1000), support::Slice(bare.source.samples, 5120, 1000));
  EXPECT_EQ(bare.log.Take(), (Calls{"source.EndOfSrc()", "Get_mem()", "source.TransmitNow(1000)",
                                    "Apply(4880,5120)", "source.EndOfSrc()"}));
  EXPECT_EQ(bare.filter.Pull(3000), support::Slice(bare.source.samples, 6120, 3000));
  EXPECT_EQ(bare.log.Take(), (Calls{"source.EndOfSrc()", "source.EndOfSrc()"}))
      << "no Apply follows the end";
  EXPECT_EQ(bare.filter.Pull(3000), support::Slice(bare.source.samples, 9120, 880));
  bare.log.Take();
  EXPECT_TRUE(bare.filter.EndOfSrc());
  EXPECT_EQ(bare.log.Take(), (Calls{"source.EndOfSrc()"}));
  EXPECT_TRUE(bare.filter.Pull(10).empty());
  EXPECT_EQ(bare.log.Take(), (Calls{"source.EndOfSrc()", "source.EndOfSrc()"}));
}

TEST(PullLoop, PassesOneSourceBlockPerCallWithoutAReserve) {
  BareLoop bare(support::Noise(5000), &NoReserve);
  bare.source.deliver = InBlocksOf({100, 0, 3000});
  EXPECT_EQ(bare.filter.Pull(2000), support::Slice(bare.source.samples, 0, 100));
  EXPECT_TRUE(bare.filter.Pull(2000).empty());
  EXPECT_EQ(bare.filter.Pull(2000), support::Slice(bare.source.samples, 100, 2000));
  EXPECT_EQ(bare.log.Take(),
            (Calls{"source.EndOfSrc()", "Get_mem()", "source.TransmitNow(2000)", "Apply(100,0)",
                   "source.EndOfSrc()", "Get_mem()", "source.EndOfSrc()", "Get_mem()",
                   "source.TransmitNow(2000)", "source.EndOfSrc()", "Get_mem()",
                   "source.EndOfSrc()", "Get_mem()", "source.TransmitNow(2000)", "Apply(2000,100)",
                   "source.EndOfSrc()", "Get_mem()"}));
}

// The reserve may change from call to call where it is another's operation.
int falling = 0;
int FallingReserve(void*) {
  ownCalls->Add("Get_mem()");
  return falling;
}

TEST(PullLoop, RequestsZeroAndLessAllTheSame) {
  BareLoop bare(support::Noise(30000), &FallingReserve);
  falling = 4000;
  EXPECT_TRUE(bare.filter.Pull(0).empty());
  EXPECT_EQ(bare.log.Take(), (Calls{"source.EndOfSrc()", "Get_mem()", "source.TransmitNow(4000)",
                                    "Apply(4000,0)", "source.EndOfSrc()", "Get_mem()"}));
  EXPECT_TRUE(bare.filter.Pull(0).empty());
  EXPECT_EQ(bare.log.Take(), (Calls{"source.EndOfSrc()", "Get_mem()", "source.TransmitNow(0)",
                                    "source.EndOfSrc()", "Get_mem()"}));
  falling = 1000;
  EXPECT_EQ(bare.filter.Pull(500), support::Slice(bare.source.samples, 0, 500));
  EXPECT_EQ(bare.log.Take(), (Calls{"source.EndOfSrc()", "Get_mem()", "source.TransmitNow(-2500)",
                                    "source.EndOfSrc()", "Get_mem()"}));
  EXPECT_TRUE(bare.filter.Pull(-7000).empty());
  EXPECT_EQ(bare.log.Take(), (Calls{"source.EndOfSrc()", "Get_mem()", "source.TransmitNow(-9500)",
                                    "source.EndOfSrc()", "Get_mem()"}));
  EXPECT_EQ(bare.filter.Pull(7192), support::Slice(bare.source.samples, 500, 7192))
      << "1000 + 7192 just fit the buffer";
  EXPECT_EQ(bare.log.Take(), (Calls{"source.EndOfSrc()", "Get_mem()", "source.TransmitNow(4692)",
                                    "Apply(8192,500)", "source.EndOfSrc()", "Get_mem()"}));
}

TEST(PullLoop, FormsItsRequestInFullWidth) {
  Pellet pellet(support::BeamPel);
  AttachWithRecords(pellet, Signal(40000));
  EXPECT_TRUE(pellet.Pull(std::numeric_limits<int>::min()).empty());
  EXPECT_THAT(pellet.LastCalls(), testing::Contains("source0.TransmitNow(-2147479552)"));
  EXPECT_EQ(pellet.Pull(std::numeric_limits<int>::max()).size(), 4096U);
  EXPECT_THAT(pellet.LastCalls(), testing::Contains("source0.TransmitNow(8192)"));
  EXPECT_EQ(pellet.Pull(1).size(), 1U);
  EXPECT_TRUE(pellet.Pull(std::numeric_limits<int>::min()).empty());
  EXPECT_THAT(pellet.LastCalls(), testing::Contains("source0.TransmitNow(-2147483648)"));
  EXPECT_TRUE(pellet.Pull(-1).empty());
  EXPECT_TRUE(pellet.Pull(0).empty());
  EXPECT_EQ(pellet.Pull(8192).size(), 4096U) << "the buffer holds no more than 8192";
}

TEST(PullLoop, LimitsARequestBelowTheRange) {
  BareLoop bare(support::Noise(30000), &FallingReserve);
  falling = 8000;
  bare.filter.Pull(0);
  falling = 1000;
  bare.log.Take();
  EXPECT_TRUE(bare.filter.Pull(std::numeric_limits<int>::min()).empty());
  EXPECT_THAT(bare.log.Take(), testing::Contains("source.TransmitNow(-2147483648)"));
}

TEST(PullLoop, CapsTheRequestAtTheBuffersRoom) {
  Pellet pellet(support::BeamPel);
  AttachWithRecords(pellet, Signal(100000));
  for (const int size : {4096, 4097, 5000, 9000, 1 << 30}) {
    EXPECT_EQ(pellet.Pull(size).size(), 4096U) << size;
  }
  EXPECT_EQ(pellet.Pull(4095).size(), 4095U);
}

TEST(PullLoop, LetsTheReserveLeaveAtTheEnd) {
  Pellet pellet(support::BeamPel);
  AttachWithRecords(pellet, Signal(5000));
  EXPECT_EQ(pellet.Pull(500).size(), 500U);
  EXPECT_EQ(pellet.Pull(1000).size(), 1000U) << "the source ends in this very call";
  EXPECT_EQ(pellet.Pull(2000).size(), 2000U);
  EXPECT_FALSE(pellet.EndOfSrc());
  EXPECT_EQ(pellet.Pull(2000).size(), 1500U);
  EXPECT_TRUE(pellet.EndOfSrc());
  EXPECT_TRUE(pellet.Pull(2000).empty());
}

TEST(PullLoop, TakesClaimsAtTheBoundsOfTheRequest) {
  for (const int more : {1, 5000, std::numeric_limits<int>::max() / 2}) {
    Pellet pellet(support::BeamPel);
    SourceScript script = Signal(60000);
    script.claim = [more](int count, int written) {
      return written == count && count > 0 ? count + more : written;
    };
    AttachWithRecords(pellet, script);
    EXPECT_EQ(pellet.PullAll({1000, 9000, 0, 1}).size(), 60000U);
  }
  Pellet denier(support::BeamPel);
  SourceScript script = Signal(60000);
  script.claim = [calls = 0](int, int written) mutable {
    return ++calls % 3 == 0 ? -1 - calls : written;
  };
  AttachWithRecords(denier, script);
  EXPECT_FALSE(denier.PullAll({1000, 9000}).empty());
}

TEST(PullLoop, BelievesNoClaimWhenNothingWasAskedFor) {
  BareLoop bare(support::Noise(20000), &FallingReserve);
  falling = 4000;
  bare.filter.Pull(0);
  bare.source.claim = [](int, int) { return 3000; };
  EXPECT_TRUE(bare.filter.Pull(0).empty());
  EXPECT_TRUE(bare.filter.Pull(-1).empty());
  bare.source.claim = nullptr;
  bare.log.Take();
  EXPECT_EQ(bare.filter.Pull(100), support::Slice(bare.source.samples, 0, 100));
  EXPECT_THAT(bare.log.Take(), testing::Contains("Apply(4100,0)"));
}

TEST(PullLoop, AsksForTheEndAgainAfterTheRead) {
  // The source changes its mind between the two questions of a pull, both ways.
  Pellet pellet(support::BeamPel);
  SourceScript script = Signal(30000);
  script.end = [calls = 0](int) mutable {
    static constexpr bool answers[] = {false, true, true, false, false, false, true, true};
    return answers[calls++ % 8];
  };
  AttachWithRecords(pellet, script);
  std::vector<std::size_t> produced;
  for (int pull = 0; pull < 8; ++pull) produced.push_back(pellet.Pull(1000).size());
  EXPECT_THAT(produced, ElementsAre(1000, 0, 1000, 1000, 1000, 0, 1000, 1000));
}

TEST(PullLoop, DrainsWhatIsStagedWithoutASource) {
  Pellet pellet(support::BeamPel);
  EXPECT_TRUE(pellet.EndOfSrc());
  EXPECT_TRUE(pellet.Pull(100).empty()) << "never attached";
  AttachWithRecords(pellet, Signal(20000));
  EXPECT_EQ(pellet.Pull(1000).size(), 1000U);
  pellet.Dispose();
  EXPECT_EQ(pellet.LastCalls(),
            (Calls{"stream0.Close()", "source0.Dispose()", "source0.Release()"}));
  EXPECT_FALSE(pellet.EndOfSrc());
  EXPECT_EQ(pellet.Pull(3000).size(), 3000U);
  EXPECT_TRUE(pellet.Pull(-5).empty());
  EXPECT_EQ(pellet.Pull(3000).size(), 1096U);
  EXPECT_TRUE(pellet.EndOfSrc());
  EXPECT_TRUE(pellet.Pull(3000).empty());
  pellet.Dispose();
  EXPECT_EQ(pellet.LastCalls(), (Calls{"stream0.Close()"}));
}

TEST(PullLoop, RestartsItsTimeAtEachSrcSet) {
  BareLoop bare(support::Noise(30000));
  bare.filter.Pull(2000);
  bare.filter.SrcSet();
  bare.log.Take();
  EXPECT_EQ(bare.filter.Pull(100), support::Slice(bare.source.samples, 6096, 100))
      << "what was staged is forgotten";
  EXPECT_THAT(bare.log.Take(), testing::Contains("Apply(4196,0)"));
}

TEST(PullLoop, GivesEverySampleItsPlaceWhateverTheSplit) {
  // The same signal in every split of pulls and deliveries: the same samples.
  Samples whole;
  for (const std::vector<int>& pulls :
       {std::vector<int>{8192}, {1}, {1024}, {9000, 1, 777}, {4095, 4097}}) {
    for (const std::vector<int>& deliveries :
         {std::vector<int>{8192}, {1000}, {1, 2, 3000}, {4096, 0, 17}}) {
      Pellet pellet(support::BeamPel);
      SourceScript script = Signal(9000, 0.37);
      script.deliver = InBlocksOf(deliveries);
      AttachWithRecords(pellet, script);
      const Samples all = pellet.PullAll(pulls);
      EXPECT_EQ(all.size(), 9000U);
      if (whole.empty()) whole = all;
      EXPECT_TRUE(support::SameBits(all, whole));
    }
  }
}

}  // namespace
}  // namespace tracks
