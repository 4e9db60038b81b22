#ifndef WAVEFILTERS_FRAME_LIFETIME_H
#define WAVEFILTERS_FRAME_LIFETIME_H

#include <cstdint>
#include <utility>

namespace wavefilters {

/// An object that lives on the heap and frees itself at its last `Release`.
///
/// This is the only `Release` that frees anything. The class is final, so static and
/// dynamic type agree: the right destructor runs and the right size is given back,
/// also for classes that are both concrete and bases. What an object lets go of at
/// its end stands in its destructor, and nowhere else.
template <class T>
class Heap final : public T {
 public:
  template <class... Arguments>
  explicit Heap(Arguments&&... arguments) : T(std::forward<Arguments>(arguments)...) {}

  unsigned long Release() override {
    const std::int32_t left = this->DropReference();
    if (left > 0) {
      return static_cast<unsigned long>(left);
    }
    delete this;
    return 0;
  }

 private:
  ~Heap() = default;
};

/// An object that is a member of another one: it counts, but ends with its owner.
template <class T>
class Embedded final : public T {
 public:
  template <class... Arguments>
  explicit Embedded(Arguments&&... arguments) : T(std::forward<Arguments>(arguments)...) {}
  ~Embedded() = default;

  unsigned long Release() override {
    const std::int32_t left = this->DropReference();
    return left > 0 ? static_cast<unsigned long>(left) : 0;
  }
};

}  // namespace wavefilters

#endif
