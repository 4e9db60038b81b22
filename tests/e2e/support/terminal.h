#pragma once

namespace e2e {

// A terminal for a program under test: the end that a screen would read, and the program's own.
// Neither is inherited; both are the caller's to close.
struct Terminal {
  int screen = -1;
  int program = -1;
};

// Throws std::runtime_error where the system lends none. A bare root has no terminals under /dev;
// a file system of terminals of our own, which is mounted nowhere, then serves (for root alone).
Terminal OpenTerminal();

}  // namespace e2e
