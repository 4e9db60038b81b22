// Who an object is and how long it lives: QueryInterface, the counts, the factories.

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "support/filter.h"

namespace {

using namespace support;

struct Answer {
  std::uint64_t code;
  void* object;
};

// Asks an object of any kind: slots 0 to 2 are the same in all tables.
Answer Ask(void* object, const Guid& iid) {
  int marker = 0;
  Answer answer{99, &marker};
  answer.code = SlotsOf<SourceSlots>(object).QueryInterface(object, &iid, &answer.object);
  return answer;
}

std::uint64_t AddRef(void* object) { return SlotsOf<SourceSlots>(object).AddRef(object); }
std::uint64_t Release(void* object) { return SlotsOf<SourceSlots>(object).Release(object); }

void ExpectAccepted(void* object, const Guid& iid) {
  const Answer answer = Ask(object, iid);
  EXPECT_EQ(answer.code, 0U);
  EXPECT_EQ(answer.object, object);
  EXPECT_EQ(AddRef(object), 3U);
  EXPECT_EQ(Release(object), 2U);
  EXPECT_EQ(Release(object), 1U);
}

void ExpectRefused(void* object, const Guid& iid) {
  const Answer answer = Ask(object, iid);
  EXPECT_EQ(answer.code, 0x80004002U);
  EXPECT_EQ(answer.object, nullptr);
  EXPECT_EQ(AddRef(object), 2U);
  EXPECT_EQ(Release(object), 1U);
}

// All identifiers that differ from `iid` in one bit, of 160.
std::vector<Guid> OneBitOff(const Guid& iid) {
  std::vector<Guid> all;
  for (int bit = 0; bit < 64; ++bit) {
    all.push_back(iid);
    all.back().Data1 ^= std::uint64_t{1} << bit;
    all.push_back(iid);
    all.back().Data4[bit / 8] =
        static_cast<std::uint8_t>(all.back().Data4[bit / 8] ^ (1 << (bit % 8)));
  }
  for (int bit = 0; bit < 16; ++bit) {
    all.push_back(iid);
    all.back().Data2 = static_cast<std::uint16_t>(all.back().Data2 ^ (1 << bit));
    all.push_back(iid);
    all.back().Data3 = static_cast<std::uint16_t>(all.back().Data3 ^ (1 << bit));
  }
  return all;
}

class EveryKind : public testing::TestWithParam<Kind> {};

INSTANTIATE_TEST_SUITE_P(Kinds, EveryKind, testing::ValuesIn(Kinds), KindName);

TEST_P(EveryKind, EntryPointReturnsTheFactoryThatItStores) {
  void* stored = nullptr;
  void* const returned = Entry(GetParam())(&stored);
  ASSERT_NE(returned, nullptr);
  EXPECT_EQ(returned, stored);
  EXPECT_EQ(AddRef(stored), 2U);
  EXPECT_EQ(Release(stored), 1U);
  EXPECT_EQ(Release(stored), 0U);
}

TEST_P(EveryKind, EntryPointCalledTwiceGivesTwoFactoriesWithOneReferenceEach) {
  const Factory first(GetParam());
  const Factory second(GetParam());
  EXPECT_NE(first.Object(), second.Object());
  for (const Factory* factory : {&first, &second}) {
    EXPECT_EQ(AddRef(factory->Object()), 2U);
    EXPECT_EQ(Release(factory->Object()), 1U);
  }
}

TEST_P(EveryKind, FactoryAnswersToUnknownAlone) {
  const Factory factory(GetParam());
  ExpectAccepted(factory.Object(), UnknownId);
  ExpectRefused(factory.Object(), WaveFilterId);
  for (const Guid& iid : OneBitOff(UnknownId)) {
    ExpectRefused(factory.Object(), iid);
  }
}

TEST_P(EveryKind, FactoryHasNoDialog) {
  const Factory factory(GetParam());
  int marker = 0;
  void* out = &marker;
  EXPECT_EQ(factory.Slots().GetDialog(factory.Object(), &out), 0);
  EXPECT_EQ(out, nullptr);
}

TEST_P(EveryKind, FactoryIgnoresSetStr) {
  const Factory factory(GetParam());
  char text[] = "whatever";
  factory.Slots().SetStr(factory.Object(), text);
  factory.Slots().SetStr(factory.Object(), nullptr);
  EXPECT_STREQ(text, "whatever");
  EXPECT_EQ(AddRef(factory.Object()), 2U);
  EXPECT_EQ(Release(factory.Object()), 1U);
}

TEST_P(EveryKind, FactoryFindsNothingUnderOtherNames) {
  const Factory factory(GetParam());
  for (const char* name :
       {"FilterDialog", "waveFilterC", "WaveFilterc", "WaveFilter", "WaveFilterC ", " WaveFilterC",
        "WaveFilterCC", "filterDialog", "FilterDialogs", ""}) {
    std::string text = name;
    int marker = 0;
    void* out = &marker;
    EXPECT_EQ(factory.Slots().GetNamed(factory.Object(), text.data(), &out), 0) << name;
    EXPECT_EQ(out, nullptr) << name;
    EXPECT_EQ(text, name);
  }
}

TEST_P(EveryKind, GetFilterSaysOneAndGivesAFilterWithOneReference) {
  const Factory factory(GetParam());
  for (const bool named : {false, true}) {
    char name[] = "WaveFilterC";
    void* out = nullptr;
    const int code = named ? factory.Slots().GetNamed(factory.Object(), name, &out)
                           : factory.Slots().GetFilter(factory.Object(), &out);
    EXPECT_EQ(code, 1);
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(AddRef(out), 2U);
    EXPECT_EQ(Release(out), 1U);
    EXPECT_EQ(Release(out), 0U);
  }
}

TEST_P(EveryKind, FactoryGivesANewFilterEachTime) {
  const Factory factory(GetParam());
  char name[] = "WaveFilterC";
  void* named = nullptr;
  EXPECT_EQ(factory.Slots().GetNamed(factory.Object(), name, &named), 1);
  const Filter first(named, GetParam());
  void* plain = nullptr;
  EXPECT_EQ(factory.Slots().GetFilter(factory.Object(), &plain), 1);
  const Filter second(plain, GetParam());
  EXPECT_NE(first.Object(), second.Object());
  EXPECT_EQ(AddRef(factory.Object()), 2U) << "filters hold no reference to their factory";
  EXPECT_EQ(Release(factory.Object()), 1U);
}

TEST_P(EveryKind, FilterAnswersToItsOwnIdentifierAndToUnknown) {
  const Filter filter = MakeFilter(GetParam());
  ExpectAccepted(filter.Object(), WaveFilterId);
  ExpectAccepted(filter.Object(), UnknownId);
}

TEST_P(EveryKind, FilterRefusesEveryIdentifierThatIsOneBitOff) {
  const Filter filter = MakeFilter(GetParam());
  for (const Guid& known : {UnknownId, WaveFilterId}) {
    for (const Guid& iid : OneBitOff(known)) {
      ExpectRefused(filter.Object(), iid);
    }
  }
  Guid mixed = UnknownId;
  mixed.Data1 = WaveFilterId.Data1;
  ExpectRefused(filter.Object(), mixed);
  mixed = WaveFilterId;
  mixed.Data1 = UnknownId.Data1;
  ExpectRefused(filter.Object(), mixed);
}

TEST_P(EveryKind, IdentifiersAreComparedFieldByFieldWhateverFillsTheirPadding) {
  const Filter filter = MakeFilter(GetParam());
  for (const Guid& known : {UnknownId, WaveFilterId}) {
    Guid dirty[2];
    std::memset(dirty, 0xA5, sizeof dirty);
    dirty[0].Data1 = known.Data1;
    dirty[0].Data2 = known.Data2;
    dirty[0].Data3 = known.Data3;
    std::memcpy(dirty[0].Data4, known.Data4, sizeof known.Data4);
    ExpectAccepted(filter.Object(), dirty[0]);
  }
}

TEST_P(EveryKind, FilterCountsItsReferences) {
  Filter filter = MakeFilter(GetParam());
  for (std::uint64_t count = 2; count <= 5; ++count) {
    EXPECT_EQ(AddRef(filter.Object()), count);
  }
  for (std::uint64_t count = 4; count >= 1; --count) {
    EXPECT_EQ(Release(filter.Object()), count);
  }
  EXPECT_EQ(filter.Release(), 0U);
}

TEST_P(EveryKind, QueryInterfaceAddsItsReferenceThroughTheSlot) {
  static int reached;
  static std::uint64_t (*original)(void*);
  reached = 0;
  Filter filter = MakeFilter(GetParam());
  original = filter.Exchange(
      1, +[](void* self) {
        ++reached;
        return original(self);
      });
  EXPECT_EQ(Ask(filter.Object(), UnknownId).code, 0U);
  EXPECT_EQ(reached, 1);
  EXPECT_EQ(Ask(filter.Object(), WaveFilterId).code, 0U);
  EXPECT_EQ(reached, 2);
  EXPECT_EQ(Ask(filter.Object(), Guid{}).code, NO_INTERFACE_CODE);
  EXPECT_EQ(reached, 2);
  EXPECT_EQ(Release(filter.Object()), 2U);
  EXPECT_EQ(Release(filter.Object()), 1U);
}

TEST(Factory, QueryInterfaceAddsItsReferenceThroughTheSlot) {
  static int reached;
  reached = 0;
  const Factory factory(SineGen);
  OwnTable table(factory.Object(), 7);
  table.Exchange(
      1, +[](void*) {
        ++reached;
        return std::uint64_t{0};
      });
  EXPECT_EQ(Ask(factory.Object(), UnknownId).object, factory.Object());
  EXPECT_EQ(reached, 1);
  EXPECT_EQ(Ask(factory.Object(), WaveFilterId).code, NO_INTERFACE_CODE);
  EXPECT_EQ(reached, 1);
  table.Restore();
}

TEST(Factory, GetNamedGoesThroughItsOwnSlots) {
  static int mark;
  const Factory factory(SquareGen);
  OwnTable table(factory.Object(), 7);
  const auto answer = +[](void*, void** out) {
    *out = &mark;
    return 42;
  };
  char filterName[] = "WaveFilterC";
  char dialogName[] = "FilterDialog";
  void* out = nullptr;

  const auto getFilter = table.Exchange(4, answer);
  EXPECT_EQ(factory.Slots().GetNamed(factory.Object(), filterName, &out), 42);
  EXPECT_EQ(out, &mark);
  EXPECT_EQ(factory.Slots().GetNamed(factory.Object(), dialogName, &out), 0);
  EXPECT_EQ(out, nullptr);
  table.Exchange(4, getFilter);

  table.Exchange(5, answer);
  EXPECT_EQ(factory.Slots().GetNamed(factory.Object(), dialogName, &out), 42);
  EXPECT_EQ(out, &mark);
  table.Restore();
}

}  // namespace
