// Who may include whom: a folder sees those to its left, and a host sees the interfaces alone.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Names = std::set<std::string>;

const Names Library{"frame", "numstream", "tracks", "voice", "dsp"};

const std::map<std::string, Names> Visible{{"frame", {"frame"}},
                                           {"numstream", {"frame", "numstream"}},
                                           {"tracks", {"frame", "numstream", "tracks"}},
                                           {"voice", {"frame", "numstream", "tracks", "voice"}},
                                           {"dsp", {"frame", "dsp"}}};

// The composition root: the one place that sees every filter.
const Names SeeEverything{"frame/kinds.h", "frame/entry_points.cpp"};

const Names ForHosts{"frame/interfaces.h", "frame/guid.h", "frame/unknown.h", "frame/lifetime.h",
                     "frame/ref.h"};

// What the library takes from the system beside C++'s own headers, which have no "." in their name.
const Names FromTheSystem{"math.h",  "sys/stat.h",          "fcntl.h",    "unistd.h",
                          "cpuid.h", "ext/stdio_filebuf.h", "immintrin.h"};

// Tests of single pieces, which no entry point reaches; all others are black-box tests.
const Names TestsOfPieces{"tests/unit/",
                          "tests/host/",
                          "tests/fuzz/number_line.cpp",
                          "tests/fuzz/number_stream.cpp",
                          "tests/fuzz/chain.cpp",
                          "tests/fuzz/recording.cpp",
                          "tests/hardening/commands.cpp"};

std::string Folder(const std::string& path) {
  const auto slash = path.find('/');
  return slash == std::string::npos ? "" : path.substr(0, slash);
}

// Whether the file, named from the project's root, may include the header.
bool MayInclude(const std::string& file, const std::string& header) {
  const std::string from = Folder(file);
  const std::string to = Folder(header);
  if (Library.count(from) == 1) {
    if (Library.count(to) == 1) {
      return SeeEverything.count(file) == 1 || Visible.at(from).count(to) == 1;
    }
    const bool standard = header.find_first_of("./") == std::string::npos && header != "iostream";
    return standard || FromTheSystem.count(header) == 1;
  }
  if (from == "host" || from == "examples") {
    return Library.count(to) == 0 || ForHosts.count(header) == 1;
  }
  if (file.rfind("tests/reference/", 0) == 0) {
    return header.rfind("tests/reference/", 0) == 0 ||
           header.find_first_of("./") == std::string::npos;
  }
  const auto isNamed = [&file](const std::string& name) { return file.rfind(name, 0) == 0; };
  if (from == "tests" && std::ranges::none_of(TestsOfPieces, isNamed)) {
    return Library.count(to) == 0 && to != "host";
  }
  return true;
}

std::vector<std::string> HeadersIn(const fs::path& file) {
  std::vector<std::string> headers;
  std::ifstream text(file);
  for (std::string line; std::getline(text, line);) {
    const auto open = line.find_first_of("<\"");
    const auto close = line.find_first_of(">\"", open + 1);
    if (line.rfind("#include", 0) == 0 && close != std::string::npos) {
      headers.push_back(line.substr(open + 1, close - open - 1));
    }
  }
  return headers;
}

TEST(IncludeRules, HoldInEveryFile) {
  const fs::path root = PROJECT_ROOT;
  int headers = 0;
  for (const char* folder :
       {"frame", "numstream", "tracks", "voice", "dsp", "host", "examples", "tests"}) {
    if (!fs::exists(root / folder)) {
      continue;
    }
    for (const auto& entry : fs::recursive_directory_iterator(root / folder)) {
      static const Names sources{".h", ".cpp", ".c"};
      if (sources.count(entry.path().extension().string()) == 0) {
        continue;
      }
      const std::string file = fs::relative(entry.path(), root).generic_string();
      for (const std::string& header : HeadersIn(entry.path())) {
        ++headers;
        // Tests of a folder share headers under the folder's name: those are none of the product.
        const bool ofTheTests = fs::exists(root / "tests" / header) && !fs::exists(root / header);
        EXPECT_TRUE(MayInclude(file, ofTheTests ? "tests/" + header : header))
            << file << " includes " << header;
      }
    }
  }
  EXPECT_GT(headers, 200) << "too few files were looked at";
}

TEST(IncludeRules, AreBrokenByWhatTheyForbid) {
  EXPECT_FALSE(MayInclude("frame/params.h", "dsp/design.h"));
  EXPECT_FALSE(MayInclude("numstream/num_stream.h", "tracks/add_track.h"));
  EXPECT_FALSE(MayInclude("tracks/add_track.h", "voice/tract.h"));
  EXPECT_FALSE(MayInclude("dsp/design.h", "numstream/num_stream.h"));
  EXPECT_FALSE(MayInclude("frame/params.h", "iostream"));
  EXPECT_FALSE(MayInclude("frame/params.h", "gtest/gtest.h"));
  EXPECT_FALSE(MayInclude("frame/params.h", "pthread.h"));
  EXPECT_FALSE(MayInclude("host/main.cpp", "frame/numeric.h"));
  EXPECT_FALSE(MayInclude("examples/host.cpp", "dsp/design.h"));
  EXPECT_FALSE(MayInclude("tests/reference/fir.h", "frame/numeric.h"));
  EXPECT_FALSE(MayInclude("tests/reference/fir.h", "support/filter.h"));
  EXPECT_FALSE(MayInclude("tests/blocks/engine_test.cpp", "dsp/non_causal.h"));
  EXPECT_TRUE(MayInclude("tests/tracks/apply_test.cpp", "tests/tracks/twin.h"));
  EXPECT_TRUE(MayInclude("frame/entry_points.cpp", "dsp/fir_filter.h"));
  EXPECT_TRUE(MayInclude("voice/glot_syn.h", "tracks/add_track.h"));
  EXPECT_TRUE(MayInclude("host/main.cpp", "frame/ref.h"));
  EXPECT_TRUE(MayInclude("tests/unit/numeric_test.cpp", "frame/numeric.h"));
}

}  // namespace
