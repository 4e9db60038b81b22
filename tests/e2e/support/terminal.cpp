#include "e2e/support/terminal.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>

namespace e2e {
namespace {

int OpenScreenOfOurOwn() {
  const int system = ::fsopen("devpts", FSOPEN_CLOEXEC);
  int screen = -1;
  if (system >= 0 && ::fsconfig(system, FSCONFIG_SET_STRING, "ptmxmode", "0666", 0) == 0 &&
      ::fsconfig(system, FSCONFIG_CMD_CREATE, nullptr, nullptr, 0) == 0) {
    const int mount = ::fsmount(system, FSMOUNT_CLOEXEC, 0);
    if (mount >= 0) {
      screen = ::openat(mount, "ptmx", O_RDWR | O_NOCTTY | O_CLOEXEC);
      ::close(mount);
    }
  }
  if (system >= 0) {
    ::close(system);
  }
  return screen;
}

}  // namespace

Terminal OpenTerminal() {
  Terminal terminal;
  terminal.screen = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (terminal.screen < 0) {
    terminal.screen = OpenScreenOfOurOwn();
  }
  if (terminal.screen >= 0 && ::unlockpt(terminal.screen) == 0) {
    // By its other end, not by a name under /dev.
    terminal.program = ::ioctl(terminal.screen, TIOCGPTPEER, O_RDWR | O_NOCTTY | O_CLOEXEC);
  }
  if (terminal.program < 0) {
    throw std::runtime_error(std::string("no terminal: ") + std::strerror(errno));
  }
  return terminal;
}

}  // namespace e2e
