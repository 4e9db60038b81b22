#ifndef WAVEFILTERS_FRAME_REF_H
#define WAVEFILTERS_FRAME_REF_H

#include <utility>

namespace wavefilters {

/// One owned reference to a counted object, or none.
///
/// Ownership is spoken where it changes hands: `Adopt` takes a reference over that
/// the caller already holds, `Share` adds one. Nothing else touches a count: there is
/// no copy, and no conversion from or to a plain pointer.
template <class T>
class Ref {
 public:
  Ref() = default;
  Ref(Ref&& other) noexcept : object(other.Detach()) {}
  Ref& operator=(Ref&& other) noexcept {
    if (this != &other) {
      Reset();
      object = other.Detach();
    }
    return *this;
  }
  Ref(const Ref&) = delete;
  Ref& operator=(const Ref&) = delete;
  ~Ref() { Reset(); }

  /// Takes over a reference that the caller holds; null gives an empty Ref.
  static Ref Adopt(T* held) {
    Ref ref;
    ref.object = held;
    return ref;
  }
  /// Adds a reference of its own; null gives an empty Ref.
  static Ref Share(T* other) {
    if (other != nullptr) {
      other->AddRef();
    }
    return Adopt(other);
  }

  T* Get() const { return object; }
  T* operator->() const { return object; }
  explicit operator bool() const { return object != nullptr; }

  /// Hands the reference to the caller, who must release it.
  [[nodiscard]] T* Detach() { return std::exchange(object, nullptr); }
  /// Releases the reference, if any. The Ref is already empty while the object's
  /// Release runs, so a release that leads back here finds nothing to release twice.
  void Reset() {
    if (T* held = Detach()) {
      held->Release();
    }
  }

 private:
  T* object = nullptr;
};

}  // namespace wavefilters

#endif
