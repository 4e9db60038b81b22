#pragma once

#include <algorithm>
#include <array>
#include <initializer_list>
#include <string>
#include <vector>

#include "hardening/plain_host.h"
#include "support/samples.h"
#include "support/temp_folder.h"

namespace hardening {

using support::Kind;

// A filter of the library beside a PlainHost. It adds no allocation to its calls; what it is made
// from is released by Release, or at the end of the scope.
class PlainFilter {
 public:
  // Takes over the reference.
  explicit PlainFilter(void* made) : object(made) {}
  explicit PlainFilter(const Kind& kind);
  ~PlainFilter();
  PlainFilter(const PlainFilter&) = delete;
  PlainFilter& operator=(const PlainFilter&) = delete;

  const FilterSlots& Slots() const { return support::SlotsOf<FilterSlots>(object); }
  void* Object() const { return object; }

  // Hands over the first `count` sources of the host.
  void Attach(PlainHost& host, int count);
  void Set_param_list(std::vector<double> values) {
    Slots().Set_param_list(object, values.data(), static_cast<int>(values.size()));
  }
  void Set_console_out(PlainConsole* console) { Slots().Set_console_out(object, console); }
  void Set_num_stream(PlainStream* stream) { Slots().Set_num_stream(object, stream); }
  // The announced length; the descriptor is released.
  int Length();
  bool EndOfSrc() { return Slots().EndOfSrc(object); }
  void Dispose() { Slots().Dispose(object); }
  std::uint64_t Release();

  // Up to `count` samples into a buffer that has room for as many; returns how many came.
  int Pull(float* buffer, int count);
  int Peek(int count) { return Pull(nullptr, count); }

 private:
  void* object = nullptr;
};

// Pulls into a guarded buffer: nothing may be written but what is announced.
support::Samples PullGuarded(PlainFilter& filter, int count);

// The same from sources that may claim anything; returns how many samples were announced. A
// generator lets its source write into the caller's room: what a liar wrote there may be more than
// that. The room itself is never left.
int PullFromLiars(const Kind& kind, PlainFilter& filter, int count);

// Pulls `count` at a time until the end, or until `most` samples have come.
support::Samples PullToEnd(PlainFilter& filter, int count, int most);

bool Is(const Kind& kind, const Kind& other);

// Sources that the kind combines.
int SourceCount(const Kind& kind);

// True for the kinds that read text files, which keep a number stream.
bool ReadsText(const Kind& kind);

// True for the two-source and FIR kinds, where a null buffer is a peek.
bool Peeks(const Kind& kind);

// True for the generators, which must not be pulled without a source.
bool NeedsSourceToPull(const Kind& kind);

// Parameters with which the kind does its work.
std::vector<double> UsefulParams(const Kind& kind);

// A signal's path with the data files of all kinds beside it, for filters that read them
// themselves.
class DataFiles {
 public:
  // Data for some `duration_ms`; here and there a line is far longer than those before it.
  explicit DataFiles(double duration_ms);

  // Of the signal that the files belong to.
  const char* Signal() const { return signal.c_str(); }
  // Of a signal that has none.
  const char* Missing() const { return missing.c_str(); }
  // What the kind reads, for a stream of the host's.
  const std::string& Text(const Kind& kind) const;

 private:
  support::TempFolder folder;
  std::string signal;
  std::string missing;
  std::string pellets;
  std::string glottal;
  std::string fricative;
  std::string impulses;
};

}  // namespace hardening
