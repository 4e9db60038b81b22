#pragma once

#include "support/mock.h"

namespace support {

// A host's console: IConsoleOutC. All calls are noted. Its clock starts at `time_s` and moves on by
// `step_s` after each reading, so that every figure in a report can be foretold.
class ConsoleMock : public Mock {
 public:
  ConsoleMock(std::string objectName, CallLog& calls);

  // The object, for Set_console_out, which adds a reference of its own.
  void* Lend() { return &object; }

  double time_s = 0.0;
  double step_s = 0.0;

 private:
  SlotObject<ConsoleSlots, ConsoleMock> object;
};

}  // namespace support
