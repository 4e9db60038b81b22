// When drawing ends: before the picture has its name. fontconfig may have been refused memory
// without a word, and then crash as it gives back what it holds.

#include "host/plot_picture.h"

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/temp_folder.h"

namespace {

// What the folder of pictures has held each time that fontconfig was ended.
std::string watchedFolder;
std::vector<std::vector<std::string>> heldAtEnd;

std::vector<std::string> NamesIn(const std::string& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    names.push_back(entry.path().filename());
  }
  return names;
}

}  // namespace

// The program calls this one, in place of the library's.
extern "C" void FcFini() {
  heldAtEnd.push_back(NamesIn(watchedFolder));
  reinterpret_cast<void (*)()>(::dlsym(RTLD_NEXT, "FcFini"))();
}

namespace wavechain {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(WritePicture, EndsDrawingOnceAndBeforeThePictureHasItsName) {
  const support::TempFolder folder;
  watchedFolder = folder.Path("");
  heldAtEnd.clear();
  {
    Drawing drawing;
    EXPECT_GT(Canvas::TextWidth("loads the fonts"), 0.0);
    Log log(true);
    WritePicture(drawing, {.path = folder.Path("picture.png")}, "", {}, {.size = {200, 200}}, "",
                 log);
  }
  EXPECT_THAT(heldAtEnd, ElementsAre(IsEmpty()));
  EXPECT_THAT(NamesIn(watchedFolder), ElementsAre("picture.png"));
}

}  // namespace
}  // namespace wavechain
