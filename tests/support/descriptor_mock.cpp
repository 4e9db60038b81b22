#include "support/descriptor_mock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

namespace support {

DescriptorMock::DescriptorMock(std::string objectName, CallLog& calls, Description description)
    : Mock(std::move(objectName), calls), now(std::move(description)) {
  using Object = decltype(object);
  FillUnknown(object, this);
  DescriptorSlots& slots = object.slots;
  slots.GetLength = [](void* self) {
    Object::Of(self).Note("GetLength()");
    return Object::Of(self).now.length;
  };
  slots.SetLength = [](void* self, int length) {
    Object::Of(self).Note("SetLength(" + std::to_string(length) + ")");
    Object::Of(self).now.length = length;
  };
  slots.GetPeriod = [](void* self, double* interval_ms) {
    Object::Of(self).Note("GetPeriod()");
    *interval_ms = Object::Of(self).now.interval_ms;
  };
  slots.SetPeriod = [](void* self, double interval_ms) {
    Object::Of(self).Note("SetPeriod(" + Text(interval_ms) + ")");
    Object::Of(self).now.interval_ms = interval_ms;
  };
  slots.SetRange = [](void* self, double range) {
    Object::Of(self).Note("SetRange(" + Text(range) + ")");
    Object::Of(self).now.range = range;
  };
  slots.SetUnits = [](void* self, const char* units) {
    Object::Of(self).Note("SetUnits(\"" + std::string(units) + "\")");
    Object::Of(self).now.units = units;
  };
  slots.GetName = [](void* self, char* buffer, int size) {
    Object::Of(self).Note("GetName(" + std::to_string(size) + ")");
    ASSERT_GT(size, 0);
    const std::string& text = Object::Of(self).now.name;
    const auto kept = std::min(text.size(), static_cast<std::size_t>(size) - 1);
    std::fill(buffer, buffer + size, '\0');
    text.copy(buffer, kept);
  };
  for (AnySlot* unused : {&slots.Unused7, &slots.Unused8, &slots.Unused9, &slots.Unused11,
                          &slots.Unused12, &slots.Unused13, &slots.Unused14, &slots.Unused15}) {
    *unused = ForbiddenSlot;
  }
}

void* DescriptorMock::Give() {
  ++count;
  return &object;
}

}  // namespace support
