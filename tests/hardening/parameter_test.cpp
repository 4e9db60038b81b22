// Parameter lists that nobody means: every value that conversions and clamps may stumble over, at
// every place, in every pair of places, in lists of every length.

#include <gtest/gtest.h>

#include <iterator>
#include <random>

#include "hardening/plain_filter.h"
#include "support/filter.h"
#include "support/odd_numbers.h"

namespace hardening {
namespace {

constexpr int MostValues = 9;  // one more than any kind reads
constexpr int SignalLength = 1500;

struct List {
  std::vector<double> values;
  int count;  // what the filter is told: at most as many as there are
};

// As many parameters as the kind has.
std::size_t ParameterCount(const Kind& kind) {
  if (Is(kind, support::Resample)) return 8;
  if (Is(kind, support::SumSources)) return 2;
  if (Is(kind, support::BeamData) || Is(kind, support::FIRNotch) || Is(kind, support::SineGen) ||
      Is(kind, support::SquareGen)) {
    return 3;
  }
  return UsefulParams(kind).size();
}

std::vector<double> Base(const Kind& kind) {
  std::vector<double> base = UsefulParams(kind);
  base.resize(MostValues, 1.0);
  return base;
}

void AddSingles(const Kind& kind, std::vector<List>& lists) {
  for (std::size_t index = 0; index < MostValues; ++index) {
    for (const double value : support::OddNumbers) {
      List list{Base(kind), 0};
      list.values[index] = value;
      for (list.count = -1; list.count <= MostValues; ++list.count) {
        lists.push_back(list);
      }
    }
  }
}

void AddPairs(const Kind& kind, std::vector<List>& lists) {
  for (std::size_t second = 1; second < ParameterCount(kind); ++second) {
    for (std::size_t first = 0; first < second; ++first) {
      for (const double one : support::OddNumbers) {
        for (const double other : support::OddNumbers) {
          List list{Base(kind), MostValues};
          list.values[first] = one;
          list.values[second] = other;
          lists.push_back(list);
        }
      }
    }
  }
}

// Values of all sorts at all places at once.
void AddMixtures(const Kind& kind, std::vector<List>& lists) {
  std::mt19937 random(static_cast<std::uint32_t>(kind.entry[0]));
  for (int i = 0; i < 200; ++i) {
    List list{Base(kind), static_cast<int>(random() % (MostValues + 1))};
    for (double& value : list.values) {
      value = support::OddNumbers[random() % std::size(support::OddNumbers)];
    }
    lists.push_back(list);
  }
}

std::vector<List> ListsFor(const Kind& kind) {
  std::vector<List> lists;
  AddSingles(kind, lists);
  AddPairs(kind, lists);
  AddMixtures(kind, lists);
  return lists;
}

std::string Text(const List& list) {
  std::string text = "count " + std::to_string(list.count) + " of";
  for (const double value : list.values) {
    text += " " + std::to_string(value);
  }
  return text;
}

const DataFiles& Files() {
  static const DataFiles files(SignalLength * 0.1);
  return files;
}

void Give(PlainFilter& filter, const List& list) {
  // No longer than it says: a sanitizer sees who reads on.
  std::vector<double> exact(list.values);
  exact.resize(static_cast<std::size_t>(std::max(list.count, 0)));
  filter.Slots().Set_param_list(filter.Object(), exact.data(), list.count);
}

void Try(const Kind& kind, const List& list) {
  PlainHost host;
  host.Describe(SignalLength, 0.1, Files().Signal());
  host.stream.text = Files().Text(kind);
  {
    PlainFilter filter(kind);
    Give(filter, list);
    if (ReadsText(kind)) filter.Set_num_stream(&host.stream);
    filter.Attach(host, SourceCount(kind));
    filter.Length();
    PullGuarded(filter, 100);
    // In mid-stream, where some parameters take effect at once.
    Give(filter, list);
    if (Peeks(kind)) filter.Peek(50);
    PullGuarded(filter, 1);
    PullGuarded(filter, 700);
    PullGuarded(filter, 0);
    // Once more from the start, with what the filter has made of them.
    for (PlainSource& source : host.sources) source.Rewind();
    filter.Attach(host, SourceCount(kind));
    PullGuarded(filter, 300);
  }
  EXPECT_TRUE(host.Balanced());
}

class Parameters : public testing::TestWithParam<Kind> {};

INSTANTIATE_TEST_SUITE_P(Kinds, Parameters, testing::ValuesIn(support::Kinds), support::KindName);

TEST_P(Parameters, MayBeAnything) {
  for (const List& list : ListsFor(GetParam())) {
    Try(GetParam(), list);
    if (HasFailure()) {
      FAIL() << Text(list);
    }
  }
}

TEST(ParameterLists, AreFiftyThousandAndMore) {
  std::size_t lists = 0;
  for (const Kind& kind : support::Kinds) {
    lists += ListsFor(kind).size();
  }
  EXPECT_GE(lists, 50000U);
}

}  // namespace
}  // namespace hardening
