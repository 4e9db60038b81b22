#pragma once

#include <cstdint>
#include <string>

#include "support/call_log.h"
#include "support/slots.h"

namespace support {

// What all mocks of host objects share: a name for the log and the count of references.
//
// A mock is a local object of the test. Its count holds the references that others have, so it
// must be back where it began when the mock goes. Every call needs a reference: a call (or a
// Release) at a count of 0 fails the test, as a host would have freed the object by then.
class Mock {
 public:
  Mock(const Mock&) = delete;
  Mock& operator=(const Mock&) = delete;

  int References() const { return count; }
  const std::string& Name() const { return name; }

  // The reference that the test itself holds, for objects that are lent rather than given away.
  void Hold() { ++count; }

  std::uint64_t AddRef();
  std::uint64_t Release();
  std::uint64_t QueryInterface(const Guid& iid, void** out);

 protected:
  Mock(std::string objectName, CallLog& calls) : log(&calls), name(std::move(objectName)) {}
  ~Mock();

  // Notes a call, as in Note("SetLength", 5).
  void Note(const std::string& call);

  CallLog* log;
  std::string name;
  int count = 0;
  int lent = 0;
};

// The object as its slots see it: the table pointer first, then the way back to the mock. It keeps
// a table per object, so that a test may replace a slot of one.
template <class Slots, class Owner>
struct SlotObject {
  const Slots* table = nullptr;
  Owner* owner = nullptr;
  Slots slots{};

  static Owner& Of(void* self) { return *static_cast<SlotObject*>(self)->owner; }
};

// Slots 0 to 2, the same in each table.
template <class Slots, class Owner>
void FillUnknown(SlotObject<Slots, Owner>& object, Owner* owner) {
  using Object = SlotObject<Slots, Owner>;
  object.owner = owner;
  object.table = &object.slots;
  object.slots.QueryInterface = [](void* self, const Guid* iid, void** out) {
    return Object::Of(self).QueryInterface(*iid, out);
  };
  object.slots.AddRef = [](void* self) { return Object::Of(self).AddRef(); };
  object.slots.Release = [](void* self) { return Object::Of(self).Release(); };
}

// Stands in a slot that the library must not call: fails the test.
void ForbiddenSlot();

}  // namespace support
