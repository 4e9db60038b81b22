// The C library's own checks of buffers would define some of the functions that stand here.
#undef _FORTIFY_SOURCE

#include "hardening/system_faults.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string_view>

#define EXPORTED __attribute__((visibility("default")))

namespace {

hardening::Fault fault;
long gone = 0;
long calls = 0;
long renames = 0;
bool done = false;

bool Wanted(std::string_view call) { return fault.call == call; }

bool Concerns(const char* path) {
  return path != nullptr && !fault.call.empty() && std::strstr(path, fault.path.c_str()) != nullptr;
}

// What the descriptor was opened as; allocates nothing.
struct PathOf {
  explicit PathOf(int descriptor) {
    char link[64];
    std::snprintf(link, sizeof link, "/proc/self/fd/%d", descriptor);
    const ssize_t length = ::readlink(link, text, sizeof text - 1);
    text[std::max<ssize_t>(length, 0)] = '\0';
  }
  char text[PATH_MAX] = {};
};

bool Concerns(int descriptor) { return !fault.call.empty() && Concerns(PathOf(descriptor).text); }

int Failed() {
  errno = fault.error;
  return -1;
}

// The function of that name that the program would have called.
template <class Function>
Function* Real(const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

// How much of `count` may go through, or -1 with the error set.
ssize_t Allowed(std::string_view call, std::size_t count) {
  ++calls;
  if (Wanted("interrupted") && calls % 2 == 1) {
    errno = EINTR;
    return -1;
  }
  if (Wanted("short")) {
    return std::min(static_cast<ssize_t>(count), static_cast<ssize_t>(fault.after));
  }
  if (!Wanted(call)) {
    return static_cast<ssize_t>(count);
  }
  const long room = fault.after - gone;
  return room <= 0 && count > 0 ? Failed() : std::min<ssize_t>(static_cast<ssize_t>(count), room);
}

bool FailsRename(const char* to) {
  return Wanted("rename") && Concerns(to) && renames++ >= fault.after;
}

void Append(const char* path) {
  const int file = ::open(path, O_WRONLY | O_APPEND);
  const auto size = static_cast<ssize_t>(fault.text.size());
  done = Real<ssize_t(int, const void*, std::size_t)>("write")(file, fault.text.data(),
                                                               fault.text.size()) == size;
  ::close(file);
}

void Meddle(const char* path, ssize_t came) {
  if (done) {
    return;
  }
  if (Wanted("grow") && came == 0) {
    Append(path);
  } else if (Wanted("vanish") && gone >= fault.after) {
    done = ::unlink(path) == 0;
  } else if (Wanted("cut") && gone >= fault.after) {
    done = ::truncate(path, 0) == 0;
  }
}

}  // namespace

namespace hardening {

void SetFault(const Fault& wanted) {
  fault = wanted;
  gone = 0;
  calls = 0;
  renames = 0;
  done = false;
}

}  // namespace hardening

extern "C" {

EXPORTED ssize_t read(int descriptor, void* bytes, size_t count) {
  static auto* const real = Real<ssize_t(int, void*, size_t)>("read");
  if (!Concerns(descriptor)) {
    return real(descriptor, bytes, count);
  }
  const ssize_t allowed = Allowed("read", count);
  if (allowed < 0) {
    return allowed;
  }
  const ssize_t came = real(descriptor, bytes, static_cast<size_t>(allowed));
  gone += std::max<ssize_t>(came, 0);
  const bool before = done;
  Meddle(PathOf(descriptor).text, came);
  // What was appended behind the end is there for this call already.
  return done && !before && Wanted("grow") ? real(descriptor, bytes, count) : came;
}

EXPORTED ssize_t write(int descriptor, const void* bytes, size_t count) {
  static auto* const real = Real<ssize_t(int, const void*, size_t)>("write");
  if (!Concerns(descriptor)) {
    return real(descriptor, bytes, count);
  }
  const ssize_t allowed = Allowed("write", count);
  if (allowed < 0) {
    return allowed;
  }
  const ssize_t went = real(descriptor, bytes, static_cast<size_t>(allowed));
  gone += std::max<ssize_t>(went, 0);
  return went;
}

// Without a fault it does nothing: hundreds of runs need not wait for the disk.
EXPORTED int fsync(int descriptor) {
  return Wanted("fsync") && Concerns(descriptor) ? Failed() : 0;
}

EXPORTED int close(int descriptor) {
  static auto* const real = Real<int(int)>("close");
  const bool fails = Wanted("close") && Concerns(descriptor);
  const int result = real(descriptor);
  return fails ? Failed() : result;
}

EXPORTED int rename(const char* from, const char* to) {
  static auto* const real = Real<int(const char*, const char*)>("rename");
  return FailsRename(to) ? Failed() : real(from, to);
}

EXPORTED int symlink(const char* target, const char* link) {
  static auto* const real = Real<int(const char*, const char*)>("symlink");
  return Wanted("symlink") && Concerns(target) ? Failed() : real(target, link);
}

EXPORTED int renameat2(int fromFolder, const char* from, int toFolder, const char* to,
                       unsigned flags) {
  static auto* const real = Real<int(int, const char*, int, const char*, unsigned)>("renameat2");
  return FailsRename(to) ? Failed() : real(fromFolder, from, toFolder, to, flags);
}

EXPORTED int open(const char* path, int flags, ...) {
  static auto* const real = Real<int(const char*, int, ...)>("open");
  va_list arguments;
  va_start(arguments, flags);
  // O_TMPFILE holds O_DIRECTORY, which takes no mode.
  const bool makes = (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
  const unsigned mode = makes ? va_arg(arguments, unsigned) : 0;
  va_end(arguments);
  return Wanted("open") && Concerns(path) ? Failed() : real(path, flags, mode);
}

EXPORTED FILE* fopen64(const char* path, const char* mode) {
  static auto* const real = Real<FILE*(const char*, const char*)>("fopen64");
  if (Wanted("open") && Concerns(path)) {
    Failed();
    return nullptr;
  }
  return real(path, mode);
}

EXPORTED FILE* fopen(const char* path, const char* mode) { return fopen64(path, mode); }
}
