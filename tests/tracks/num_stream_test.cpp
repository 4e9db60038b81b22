#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "support/temp_folder.h"
#include "tracks/own_stream.h"

// How the library's own stream opens and closes files, and its slots.
namespace tracks {
namespace {

using support::TempFolder;
using testing::ElementsAre;

TEST(NumStream, OpensRegularFilesOnly) {
  const TempFolder folder;
  OwnStream stream;
  const std::string file = folder.Write("file", "1\n");
  std::filesystem::create_symlink(file, folder.Path("link"));
  std::filesystem::create_symlink("nowhere", folder.Path("dangling"));
  std::filesystem::create_symlink("loop", folder.Path("loop"));
  std::filesystem::create_symlink(".", folder.Path("toFolder"));
  std::filesystem::create_symlink("/dev/zero", folder.Path("toDevice"));
  ASSERT_EQ(mkfifo(folder.Path("pipe").c_str(), 0600), 0);

  EXPECT_TRUE(stream.Open(file));
  EXPECT_TRUE(stream.Open(folder.Path("link")));
  for (const std::string& name :
       {folder.Path("missing"), folder.Path("dangling"), folder.Path("loop"), folder.Path("."),
        folder.Path("toFolder"), folder.Path("toDevice"), folder.Path("pipe"), std::string(),
        std::string("/dev/null"), std::string("/dev/zero"), file + "/below",
        std::string(5000, 'x')}) {
    EXPECT_FALSE(stream.Open(name)) << name;
    EXPECT_FALSE(stream.GetLine()) << name;
    double value = 0.0;
    EXPECT_FALSE(stream.GetDouble(value)) << name;
    EXPECT_FALSE(stream.OpenString(name)) << name;
    EXPECT_FALSE(stream.OpenFromString(name)) << name;
  }
  EXPECT_TRUE(stream.Open(file)) << "a failed opening leaves the stream usable";
  EXPECT_TRUE(stream.GetLine());
}

TEST(NumStream, StartsAtTheFirstLineAtEachOpening) {
  const TempFolder folder;
  OwnStream stream;
  const std::string first = folder.Write("first", "1\n2\n");
  const std::string second = folder.Write("second", "3\n");
  ASSERT_TRUE(stream.Open(first));
  ASSERT_TRUE(stream.GetLine());
  ASSERT_TRUE(stream.Open(first));
  double value = 0.0;
  EXPECT_FALSE(stream.GetDouble(value)) << "an opening forgets the line";
  ASSERT_TRUE(stream.GetLine());
  EXPECT_THAT(stream.Numbers(), ElementsAre(1.0));
  while (stream.GetLine()) {
  }
  ASSERT_TRUE(stream.Open(second)) << "the end of a file is forgotten, too";
  ASSERT_TRUE(stream.GetLine());
  EXPECT_THAT(stream.Numbers(), ElementsAre(3.0));
}

TEST(NumStream, HasNothingAfterClose) {
  const TempFolder folder;
  OwnStream stream;
  ASSERT_TRUE(stream.Open(folder.Write("a", "1 2\n3\n")));
  ASSERT_TRUE(stream.GetLine());
  stream.Close();
  double value = 0.0;
  EXPECT_FALSE(stream.GetDouble(value));
  EXPECT_FALSE(stream.GetLine());
  stream.Close();
  EXPECT_FALSE(stream.GetLine());
}

TEST(NumStream, TakesTheTextOfOpenFromStringForAFileName) {
  const TempFolder folder;
  OwnStream stream;
  EXPECT_FALSE(stream.OpenFromString("1 2 3"));
  EXPECT_FALSE(stream.GetLine());
  folder.Write("1 2 3", "4 5\n");
  ASSERT_TRUE(stream.OpenFromString(folder.Path("1 2 3")));
  ASSERT_TRUE(stream.GetLine());
  EXPECT_THAT(stream.Numbers(), ElementsAre(4.0, 5.0));
  ASSERT_TRUE(stream.OpenString(folder.Path("1 2 3")));
  ASSERT_TRUE(stream.GetLine());
  EXPECT_THAT(stream.Numbers(), ElementsAre(4.0, 5.0));
}

std::vector<std::string> reached;

TEST(NumStream, ReachesItsOwnOperationsThroughTheSlots) {
  const TempFolder folder;
  OwnStream stream;
  const std::string file = folder.Write("a", "1\n");
  reached.clear();
  const auto original = stream.Exchange(
      7, +[](void*) { reached.emplace_back("Close"); });
  EXPECT_TRUE(stream.Open(file));
  EXPECT_THAT(reached, ElementsAre("Close"));
  stream.Exchange(7, original);

  reached.clear();
  const auto open = stream.Exchange(
      3, +[](void*, char* name) {
        reached.push_back(std::string("Open ") + name);
        return true;
      });
  EXPECT_TRUE(stream.OpenString("some name"));
  EXPECT_THAT(reached, ElementsAre("Open some name"));
  EXPECT_TRUE(stream.OpenFromString("other name"));
  EXPECT_THAT(reached, ElementsAre("Open some name", "Open other name"));
  stream.Exchange(3, open);

  reached.clear();
  stream.Exchange(
      8, +[](void*, const void* name) {
        reached.push_back("OpenString " + *static_cast<const std::string*>(name));
        return true;
      });
  EXPECT_TRUE(stream.OpenFromString("third name"));
  EXPECT_THAT(reached, ElementsAre("OpenString third name"));
}

TEST(NumStream, HasNoBytesInTextMode) {
  const TempFolder folder;
  OwnStream stream;
  ASSERT_TRUE(stream.Open(folder.Write("a", "1 2 3\n4\n")));
  void* const object = stream.Object();
  EXPECT_EQ(stream.Slots().BytesRemain(object), 0);
  stream.Slots().SkipBytes(object, 4);
  stream.Slots().SkipBytes(object, -4);
  EXPECT_EQ(stream.Slots().BytesRemain(object), 0);
  char bytes[4] = {'a', 'b', 'c', 'd'};
  EXPECT_EQ(stream.Slots().ReadBytes(object, bytes, 4), 0);
  EXPECT_EQ(std::string(bytes, 4), "abcd");
  EXPECT_EQ(stream.AllNumbers(), (std::vector<std::vector<double>>{{1, 2, 3}, {4}}));
}

TEST(NumStream, AnswersOnlyTheRootInterface) {
  OwnStream stream;
  void* const object = stream.Object();
  void* out = &stream;
  EXPECT_EQ(stream.Slots().QueryInterface(object, &WaveFilterId, &out), NO_INTERFACE_CODE);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(stream.Slots().QueryInterface(object, &UnknownId, &out), 0U);
  EXPECT_EQ(out, object);
  EXPECT_EQ(stream.Slots().AddRef(object), 3U);
  EXPECT_EQ(stream.Slots().Release(object), 2U);
  EXPECT_EQ(stream.Slots().Release(object), 1U);
}

}  // namespace
}  // namespace tracks
