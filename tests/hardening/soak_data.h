#pragma once

#include <string>

#include "support/library.h"
#include "support/temp_folder.h"

namespace hardening {

// A stretch of a signal's time that has data.
struct Stretch {
  double from_ms = 0.0;
  double to_ms = 0.0;
};

// A signal with the data file of one kind beside it, as long as a day and longer: written piece by
// piece, and never held in memory.
class SoakData {
 public:
  // Events lie in `dense`, and a few ahead of it; pellets and tracks run from 0 to its end.
  SoakData(const support::Kind& kind, Stretch dense);

  const char* Signal() const { return signal.c_str(); }

  // From one event to the next. Each lies 0.05 ms behind a multiple of this.
  static constexpr double EventStep_ms = 100.0;
  // From one pellet record to the next. Records hold 5 mm and 5.009 mm in turn, in every
  // coordinate.
  static constexpr double RecordStep_ms = 6.866;

 private:
  support::TempFolder folder;
  std::string signal;
};

}  // namespace hardening
