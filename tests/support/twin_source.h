#pragma once

#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "reference/host_script.h"
#include "support/source_mock.h"

namespace support {

// Random numbers that are the same on every machine and in every run.
class Dice {
 public:
  explicit Dice(std::uint32_t seed) : bits(seed) {}

  // Between the two, both included.
  std::int64_t Between(std::int64_t low, std::int64_t high) {
    const auto span = static_cast<std::uint64_t>(high - low) + 1;
    const std::uint64_t high32 = bits();
    return low + static_cast<std::int64_t>(((high32 << 32) | bits()) % span);
  }
  int Int(int low, int high) { return static_cast<int>(Between(low, high)); }
  bool OneIn(int n) { return Between(1, n) == 1; }
  double Real(double low, double high) {
    return low + (high - low) * (static_cast<double>(bits()) / 4294967296.0);
  }
  template <class Value>
  Value OneOf(const std::vector<Value>& values) {
    return values[static_cast<std::size_t>(
        Between(0, static_cast<std::int64_t>(values.size()) - 1))];
  }
  std::uint32_t Seed() { return static_cast<std::uint32_t>(bits()); }

 private:
  std::mt19937 bits;
};

// The same source twice: for the filter of the library, and for the model of it. Each keeps a state
// of its own and a list of calls of its own.
struct TwinSource {
  TwinSource(const std::string& name, CallLog& log, reference::CallList& list, Samples signal)
      : mock(name, log, signal), model(name, list, std::move(signal)) {}

  void Describe(int length, double interval_ms) {
    mock.description.length = model.length = length;
    mock.description.interval_ms = model.interval_ms = interval_ms;
  }
  void Deliver(const std::function<int(int)>& rule) { mock.deliver = model.deliver = rule; }
  void Claim(const std::function<int(int, int)>& rule) { mock.claim = model.claim = rule; }

  using Samples = std::vector<float>;
  SourceMock mock;
  reference::ScriptedSource model;
};

}  // namespace support
