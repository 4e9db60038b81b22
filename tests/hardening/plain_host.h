#pragma once

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <string_view>

#include "support/library.h"

namespace hardening {

// Host objects that allocate nothing and note no calls: every allocation around them is the
// library's, and hundreds of thousands of short stories are cheap. They count their references
// and the calls that came without one, when a host would have freed the object already.
struct Counted {
  int references = 0;
  int strayCalls = 0;

  void Touch() { strayCalls += references > 0 ? 0 : 1; }
};

// One description of a signal.
struct PlainDescriptor {
  PlainDescriptor();

  const DescriptorSlots* table;
  Counted counted;
  int length = 0;
  double interval_ms = 0.1;
  const char* name = "";
};

// A source of `length` samples, reproducible noise, which are given in order.
struct PlainSource {
  PlainSource();
  PlainSource(const PlainSource&) = delete;
  PlainSource& operator=(const PlainSource&) = delete;

  // Back to the first sample.
  void Rewind() { position = 0; }
  int Remaining() const { return length - position; }

  const SourceSlots* table;
  Counted counted;
  int length = 300;
  int position = 0;
  double interval_ms = 0.1;
  const char* name = "";
  int disposed = 0;

  // How many samples to write, of as many as are wanted and left. Without it: all.
  std::function<int(int wanted)> deliver;
  // What to say of that. Without it: the truth.
  std::function<int(int wanted, int written)> claim;
  // Whether the signal is over. Without it: when nothing remains.
  std::function<bool()> ends;
  // Runs ahead of every TransmitNow; may throw.
  std::function<void()> before;
  // Writes `count` samples of a signal of its own. Without it: Sample's, from `position` on.
  std::function<void(float* buffer, int count)> fill;

  // A fresh one for each caller; a caller holds few at a time.
  std::array<PlainDescriptor, 4> descriptors;

  // Sample `index` of the signal.
  static float Sample(int index);
};

struct PlainConsole {
  PlainConsole();

  const ConsoleSlots* table;
  Counted counted{1};
  double time_s = 0.0;
};

// A host's own reader of number files: the same text for every name.
struct PlainStream {
  PlainStream();

  const NumStreamSlots* table;
  Counted counted{1};
  std::string_view text;
  std::string_view rest;  // lines to come
  std::string_view line;  // what is left of the current one
  bool isOpen = false;
};

// All that a filter is given, as one host has it.
struct PlainHost {
  std::array<PlainSource, 3> sources;
  PlainConsole console;
  PlainStream stream;

  // Describes the same signal to all sources and rewinds them.
  void Describe(int length, double interval_ms, const char* name);
  // Whether everything was given back, and nothing was called after that.
  testing::AssertionResult Balanced() const;
};

}  // namespace hardening
