#include "support/console_mock.h"

#include <utility>

namespace support {

ConsoleMock::ConsoleMock(std::string objectName, CallLog& calls)
    : Mock(std::move(objectName), calls) {
  count = lent = 1;
  using Object = decltype(object);
  FillUnknown(object, this);
  ConsoleSlots& slots = object.slots;
  slots.PutStr = [](void* self, const char* text) {
    Object::Of(self).Note("PutStr(\"" + std::string(text) + "\")");
  };
  slots.NewLine = [](void* self) { Object::Of(self).Note("NewLine()"); };
  slots.PutNum = [](void* self, int width, int precision, double value) {
    Object::Of(self).Note("PutNum(" + std::to_string(width) + ", " + std::to_string(precision) +
                          ", " + Text(value) + ")");
  };
  slots.GetTime = [](void* self, double* seconds) {
    ConsoleMock& console = Object::Of(self);
    console.Note("GetTime()");
    *seconds = console.time_s;
    console.time_s += console.step_s;
  };
  slots.Unused4 = slots.Unused6 = ForbiddenSlot;
}

}  // namespace support
