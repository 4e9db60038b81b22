#pragma once

#include <gtest/gtest.h>

#include <list>
#include <utility>
#include <vector>

#include "reference/two_sources.h"
#include "support/filter.h"
#include "support/twin_source.h"

namespace pairs {

// A two-source filter of the library and its model, given the same sources and parameters.
template <class Model>
struct Twin {
  explicit Twin(const support::Kind& kind) : filter(support::MakeFilter(kind)) {}

  void Set_param_list(const std::vector<double>& p) {
    filter.Set_param_list(p);
    model.Set_param_list(p);
  }

  support::TwinSource& NewSource(support::Samples signal) {
    const std::string name = "source" + std::to_string(sources.size());
    return sources.emplace_back(name, log, calls, std::move(signal));
  }

  void Attach(const std::vector<support::TwinSource*>& given) {
    std::vector<support::SourceMock*> mocks;
    std::vector<reference::ScriptedSource*> models;
    for (support::TwinSource* source : given) {
      mocks.push_back(&source->mock);
      models.push_back(&source->model);
    }
    filter.Set_src_list(mocks);
    model.Set_src_list(models);
    Same();
  }

  void Dispose() {
    filter.Dispose();
    model.Dispose();
    Same();
  }

  support::Samples Pull(int n) {
    const support::Samples actual = filter.Pull(n);
    support::Samples expected(static_cast<std::size_t>(std::max(n, 0)));
    expected.resize(static_cast<std::size_t>(model.TransmitNow(expected.data(), n)));
    EXPECT_TRUE(support::SameBitsOrNaN(actual, expected)) << "a pull of " << n;
    Same();
    return actual;
  }

  int Peek(int n) {
    const int actual = filter.Peek(n);
    EXPECT_EQ(actual, model.TransmitNow(nullptr, n)) << "a peek for " << n;
    Same();
    return actual;
  }

  void Same() {
    EXPECT_EQ(log.Take(), std::exchange(calls, {}));
    EXPECT_EQ(filter.EndOfSrc(), model.EndOfSrc());
    EXPECT_EQ(log.Take(), support::Calls{});  // the end is kept, not asked for
  }

  support::CallLog log;
  reference::CallList calls;
  std::list<support::TwinSource> sources;
  Model model;
  support::Filter filter;
};

struct Mixer : Twin<reference::Mixer> {
  Mixer() : Twin(support::SumSources) {}
};

struct EchoCanceller : Twin<reference::EchoSubtraction> {
  EchoCanceller() : Twin(support::EchoCancel) {}
};

}  // namespace pairs
