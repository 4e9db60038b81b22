#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "support/filter.h"

namespace {

using support::Samples;

// One line of the vectors: its name, then its numbers.
std::vector<double> Line(std::istream& in, const std::string& name) {
  std::string line;
  std::getline(in, line);
  std::istringstream words(line);
  std::string first;
  words >> first;
  if (first != name) throw std::runtime_error("expected " + name + ", found " + first);
  std::vector<double> numbers;
  for (double number = 0.0; words >> number;) numbers.push_back(number);
  return numbers;
}

// The vectors come from scipy.signal.upfirdn and a kernel in double precision
// (tools/make_upfirdn_vectors.py): an account of the same thing that shares no line with ours.
TEST(ResamplerFromOutside, EqualsUpfirdnOfSciPy) {
  std::ifstream vectors(UPFIRDN_VECTORS);
  ASSERT_TRUE(vectors) << UPFIRDN_VECTORS;
  int cases = 0;
  while (vectors.peek() != std::ifstream::traits_type::eof()) {
    const std::vector<double> p = Line(vectors, "parameters");
    const std::vector<double> x = Line(vectors, "x");
    const std::vector<double> y = Line(vectors, "y");
    SCOPED_TRACE("case " + std::to_string(++cases));
    support::CallLog log;
    support::SourceMock source("source", log, Samples(x.begin(), x.end()));
    support::Filter filter = support::MakeFilter(support::Resample);
    filter.Set_param_list(p);
    filter.Set_src_list(source);
    const Samples out = filter.PullAll({100, 1, 37});
    ASSERT_EQ(out.size(), y.size());
    for (std::size_t i = 0; i < out.size(); ++i) EXPECT_NEAR(out[i], y[i], 1e-6) << "output " << i;
  }
  EXPECT_EQ(cases, 12);
}

}  // namespace
