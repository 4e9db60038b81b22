#ifndef WAVEFILTERS_FRAME_UNKNOWN_H
#define WAVEFILTERS_FRAME_UNKNOWN_H

#include <cstdint>

#include "frame/guid.h"

#if !defined(__GXX_ABI_VERSION)
#error \
    "WaveFilters crosses its boundary with vtables of the Itanium C++ ABI; this compiler uses another one"
#endif

namespace wavefilters {

/// Root of the component model: slots 0 to 2 of every object on either side of the boundary.
///
/// There is no virtual destructor, here or below: destructors take slots, and the
/// slot order is the contract. Objects end in `Release` and nowhere else.
class IUnknown {
 public:
  /// Slot 0. On a match stores the object's own address in `*out`, adds one reference
  /// (the caller's) and returns `ResultOk`; otherwise stores null and returns `ResultNoInterface`.
  virtual unsigned long QueryInterface(const _GUID& iid, void** out) = 0;
  /// Slot 1. Adds one reference and returns the new count.
  virtual unsigned long AddRef() = 0;
  /// Slot 2. Gives one reference back and returns what is left; at 0 the object frees itself.
  virtual unsigned long Release() = 0;

 protected:
  ~IUnknown() = default;
};

/// The one reference count of the library, and what needs nothing but the count.
///
/// An object is born with 0 and whoever first keeps it adds the first reference:
/// one rule for factories, filters, partners and streams. The count is a plain
/// integer: one object belongs to one thread at a time. `Release` stays open
/// until `Heap` or `Embedded` (lifetime.h) says how the object lives.
class TUnknown : public IUnknown {
 public:
  /// Answers `IUnknown` only; filters widen this.
  unsigned long QueryInterface(const _GUID& iid, void** out) override {
    return Answer(iid == IID_IUnknown, out);
  }

  unsigned long AddRef() override {
    ++references;
    return static_cast<unsigned long>(references);
  }

 protected:
  ~TUnknown() = default;

  // Counts through the object's own AddRef slot, so that a host that exchanged
  // the slot still sees every reference.
  unsigned long Answer(bool known, void** out) {
    if (!known) {
      *out = nullptr;
      return ResultNoInterface;
    }
    AddRef();
    *out = this;
    return ResultOk;
  }

  // Counts one reference down and returns what is left.
  std::int32_t DropReference() { return --references; }

 private:
  std::int32_t references = 0;
};

}  // namespace wavefilters

#endif
