#pragma once

#include <string>

namespace hardening {

// Makes calls to the system fail for files whose path holds `path`, in a program that is linked
// with system_faults.cpp:
//   open         fails with `error`
//   read, write  fail with `error` once `after` bytes of the file have gone through
//   short        reads and writes move at most `after` bytes
//   interrupted  every second read and write fails with EINTR
//   fsync, close, rename  fail with `error`; rename, once it went well `after` times
//   symlink      fails with `error` for a link to the file
//   grow         a read that meets the end of the file appends `text` to it, once
//   vanish       the file loses its name when `after` bytes have been read
//   cut          it loses its contents at that point
struct Fault {
  std::string call;
  std::string path;
  int error = 0;
  long after = 0;
  std::string text;
};

// In force until the next one; an empty call ends it.
void SetFault(const Fault& fault);

}  // namespace hardening
