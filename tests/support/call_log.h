#pragma once

#include <string>
#include <utility>
#include <vector>

namespace support {

// The one list on which all mocks of a test write what was called, in order, as in
// "source.TransmitNow(8192)". A test takes it and compares it whole.
class CallLog {
 public:
  void Add(std::string call) { calls.push_back(std::move(call)); }

  // What was called since the last Take.
  std::vector<std::string> Take() { return std::exchange(calls, {}); }

  // The same, only the calls to one object, whose name is cut off: Take("console") gives
  // "NewLine()". The calls to other objects are forgotten, too.
  std::vector<std::string> Take(const std::string& object);

  const std::vector<std::string>& Calls() const { return calls; }

 private:
  std::vector<std::string> calls;
};

using Calls = std::vector<std::string>;

// The shortest text that reads back as the same number: 0.1, 2500, nan.
std::string Text(double value);

}  // namespace support
