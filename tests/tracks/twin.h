#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "support/filter.h"
#include "support/guarded_buffer.h"
#include "tracks/model_host.h"

namespace tracks {

// A filter of the library beside its model. Every operation is done to both: the samples must have
// the same bits (any not-a-number counts as any other), and the calls that reach the host's objects
// must be the same in the same order.
template <class Model>
class Twin {
 public:
  explicit Twin(const support::Kind& newKind) : kind(newKind), filter(support::MakeFilter(kind)) {}

  ~Twin() { Release(); }
  Twin(const Twin&) = delete;
  Twin& operator=(const Twin&) = delete;

  // The filter's handle, for what has no counterpart in the model (an exchanged slot, say).
  support::Filter& Product() { return filter; }
  Model& Reference() { return model; }

  // The calls of the last operation.
  const support::Calls& LastCalls() const { return calls; }

  void Attach(const std::vector<SourceScript>& scripts) {
    std::vector<support::SourceMock*> given;
    std::vector<reference::Source*> modelGiven;
    for (const SourceScript& script : scripts) {
      given.push_back(&NewSource(script));
      modelGiven.push_back(&modelSources.back());
    }
    filter.Set_src_list(given);
    model.Set_src_list(modelGiven);
    CompareCalls("Set_src_list");
  }
  void Attach(const SourceScript& script) { Attach(std::vector<SourceScript>{script}); }

  // Supplies a number stream over the given files.
  void Supply(const std::map<std::string, std::string>& files) {
    const std::string name = "stream" + std::to_string(streams.size());
    streams.emplace_back(name, log).files = files;
    modelStreams.emplace_back(name, expected).files = files;
    SupplyAgain(streams.size() - 1);
  }

  // Supplies a stream that it had before, counted from 0.
  void SupplyAgain(std::size_t index) {
    filter.Set_num_stream(&*std::next(streams.begin(), static_cast<std::ptrdiff_t>(index)));
    model.Set_num_stream(&*std::next(modelStreams.begin(), static_cast<std::ptrdiff_t>(index)));
    CompareCalls("Set_num_stream");
  }

  void Set_param_list(const std::vector<double>& values) {
    filter.Set_param_list(values);
    model.Set_param_list(values);
    CompareCalls("Set_param_list");
  }

  void SrcSet() {
    filter.SrcSet();
    model.SrcSet();
    CompareCalls("SrcSet");
  }

  void Init(double interval_ms) {
    filter.Init(interval_ms);
    model.Init(interval_ms);
    CompareCalls("Init");
  }

  void GetDescriptor() {
    void* descriptor = nullptr;
    filter.Slots().GetDescriptor(filter.Object(), &descriptor);
    support::SlotsOf<DescriptorSlots>(descriptor).Release(descriptor);
    reference::Descriptor* modelDescriptor = nullptr;
    model.GetDescriptor(modelDescriptor);
    modelDescriptor->Release();
    CompareCalls("GetDescriptor");
  }

  // The room given is smaller than the largest requests, of which no filter can fill all.
  Samples Pull(int count) {
    const int room = std::clamp(count, 0, 65536);
    support::GuardedBuffer buffer(room);
    int got = -12345;
    filter.Slots().TransmitNow(filter.Object(), buffer.data(), count, &got);
    buffer.CheckAfter(got);
    EXPECT_GE(got, 0);
    Samples produced = buffer.First(got);
    Samples wanted(static_cast<std::size_t>(room));
    wanted.resize(static_cast<std::size_t>(model.TransmitNow(wanted.data(), count)));
    ExpectSame(support::SameBitsOrNaN(produced, wanted), "Pull " + std::to_string(count));
    CompareCalls("TransmitNow");
    return produced;
  }

  bool EndOfSrc() {
    const bool ended = filter.EndOfSrc();
    ExpectSame(testing::AssertionResult(ended == model.EndOfSrc()), "EndOfSrc");
    CompareCalls("EndOfSrc");
    return ended;
  }

  // Whether filter and model have been the same in everything so far.
  bool Agrees() const { return agrees; }

  // Pulls the sizes, over and over, to the end; gives up after a difference and after `most` pulls.
  Samples PullAll(const std::vector<int>& sizes = {1024}, int most = 100000) {
    Samples all;
    for (int pull = 0; pull < most && !EndOfSrc() && agrees; ++pull) {
      const Samples block = Pull(sizes[static_cast<std::size_t>(pull) % sizes.size()]);
      all.insert(all.end(), block.begin(), block.end());
    }
    return all;
  }

  void Dispose() {
    filter.Dispose();
    model.Dispose();
    CompareCalls("Dispose");
  }

  // Slot 16 on its own, over `samples`, told that they are `count` from `start` on.
  Samples Apply(const Samples& samples, int count, int start) {
    support::GuardedBuffer buffer(static_cast<int>(samples.size()));
    std::copy(samples.begin(), samples.end(), buffer.data());
    filter.Call<TrackApply>(16, buffer.data(), count, start);
    Samples wanted = samples;
    model.Apply(wanted.data(), count, start);
    buffer.CheckAfter(static_cast<int>(samples.size()));
    Samples rendered = buffer.First(static_cast<int>(samples.size()));
    ExpectSame(support::SameBitsOrNaN(rendered, wanted),
               "Apply " + std::to_string(count) + " from " + std::to_string(start));
    CompareCalls("Apply");
    return rendered;
  }

  // The last release, after which only the calls can be looked at.
  void Release() {
    if (released) return;
    released = true;
    EXPECT_EQ(filter.Release(), 0U);
    model.LastRelease();
    CompareCalls("Release");
  }

 private:
  support::SourceMock& NewSource(const SourceScript& script) {
    const std::string name = "source" + std::to_string(sources.size());
    modelSources.emplace_back(name, expected, script);
    support::SourceMock& source = sources.emplace_back(name, log, script.samples);
    source.description.interval_ms = script.interval_ms;
    source.description.name = script.path;
    source.deliver = script.deliver;
    source.claim = script.claim;
    if (script.end) {
      source.end = [&source, end = script.end] { return end(source.Remaining()); };
    }
    return source;
  }

  void ExpectSame(const testing::AssertionResult& same, const std::string& operation) {
    EXPECT_TRUE(same) << operation;
    agrees = agrees && same;
  }

  void CompareCalls(const char* operation) {
    calls = log.Take();
    const support::Calls wanted = expected.Take();
    EXPECT_EQ(calls, wanted) << operation;
    agrees = agrees && calls == wanted;
  }

  support::Kind kind;
  CallLog log;
  CallLog expected;
  support::Calls calls;
  std::list<support::SourceMock> sources;
  std::list<ModelSource> modelSources;
  std::list<support::NumStreamMock> streams;
  std::list<ModelStream> modelStreams;
  Model model;
  bool agrees = true;
  bool released = false;
  support::Filter filter;
};

}  // namespace tracks
