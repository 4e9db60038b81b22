#include "support/mock.h"

#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <utility>

namespace support {

std::vector<std::string> CallLog::Take(const std::string& object) {
  std::vector<std::string> of;
  for (const std::string& call : Take()) {
    if (call.compare(0, object.size() + 1, object + ".") == 0) {
      of.push_back(call.substr(object.size() + 1));
    }
  }
  return of;
}

std::string Text(double value) {
  if (std::isnan(value)) {
    return "nan";
  }
  char text[64];
  const auto end = std::to_chars(text, text + sizeof text, value).ptr;
  return std::string(text, end);
}

Mock::~Mock() {
  EXPECT_EQ(count, lent) << name << " ends with references that were not given back";
}

void Mock::Note(const std::string& call) {
  log->Add(name + "." + call);
  EXPECT_GT(count, 0) << name << "." << call << " was called without a reference";
}

std::uint64_t Mock::AddRef() {
  Note("AddRef()");
  return static_cast<std::uint64_t>(++count);
}

std::uint64_t Mock::Release() {
  Note("Release()");
  return static_cast<std::uint64_t>(--count);
}

std::uint64_t Mock::QueryInterface(const Guid&, void** out) {
  Note("QueryInterface()");
  *out = nullptr;
  return NO_INTERFACE_CODE;
}

void ForbiddenSlot() { ADD_FAILURE() << "an unused slot was called"; }

}  // namespace support
