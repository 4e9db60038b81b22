#pragma once

#include <new>

namespace hardening {

// What operator new has handed out in this process and not got back, the library's blocks included.
// A test that asks is linked with allocations.cpp, which replaces the global operator new; the
// library's own calls bind to it, as to any host's.
long LiveAllocations();

// Refuses allocations during the calls that are made through it: number `first` of them, counted
// from 1 over all those calls, or, if `fromThereOn`, that one and all later ones.
class Refusal {
 public:
  Refusal(long first, bool fromThereOn);
  ~Refusal() { SetActive(false); }
  Refusal(const Refusal&) = delete;
  Refusal& operator=(const Refusal&) = delete;

  // False where std::bad_alloc comes out of the call. Anything else passes.
  template <class Call>
  bool During(Call call) {
    SetActive(true);
    try {
      call();
      SetActive(false);
      return true;
    } catch (const std::bad_alloc&) {
      SetActive(false);
      return false;
    }
  }

  // Whether an allocation has been refused.
  bool Happened() const;

 private:
  static void SetActive(bool wanted);
};

}  // namespace hardening
