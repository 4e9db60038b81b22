/* Preloaded into a program, makes one of its calls to the system fail, as FAULT_CALL says:

     write    writes fail with FAULT_ERRNO once FAULT_AFTER bytes have gone to the file
     signal   sends FAULT_SIGNAL to the program at that point instead, and goes on
     fsync, close, rename   these fail with FAULT_ERRNO
     create   opening a new file fails with FAULT_ERRNO
     fork     no process can be started, with FAULT_ERRNO
     pipe     no pipe can be made after the first FAULT_AFTER ones, with FAULT_ERRNO
     no_renameat2   as on a file system that cannot rename without replacing
     appear   another program makes the file FAULT_PATH while the result is being completed

   Only files with a temporary name (.part) or without any name count, the way the program writes
   its results: not the terminal, not what a test captures. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

static long long gone = 0;
static int sent = 0;

static int Wanted(const char* call) {
  const char* wanted = getenv("FAULT_CALL");
  return wanted != NULL && strcmp(wanted, call) == 0;
}

static int Number(const char* name) {
  const char* value = getenv(name);
  return value == NULL ? 0 : atoi(value);
}

static int IsResult(int descriptor) {
  char link[64];
  char path[4096];
  snprintf(link, sizeof link, "/proc/self/fd/%d", descriptor);
  const ssize_t length = readlink(link, path, sizeof path - 1);
  if (descriptor <= 2 || length < 0) {
    return 0;
  }
  path[length] = '\0';
  return strstr(path, ".part") != NULL || strstr(path, "(deleted)") != NULL;
}

static int Fail(void) {
  errno = Number("FAULT_ERRNO");
  return -1;
}

ssize_t write(int descriptor, const void* bytes, size_t count) {
  ssize_t (*real)(int, const void*, size_t);
  *(void**)&real = dlsym(RTLD_NEXT, "write");
  if (!IsResult(descriptor)) {
    return real(descriptor, bytes, count);
  }
  const long long room = Number("FAULT_AFTER") - gone;
  if (Wanted("signal") && room <= 0 && !sent) {
    sent = 1;
    raise(Number("FAULT_SIGNAL"));
  }
  if (Wanted("write") && (long long)count > room) {
    if (room <= 0) {
      return Fail();
    }
    count = (size_t)room; /* a full disk takes what still fits */
  }
  gone += (long long)count;
  return real(descriptor, bytes, count);
}

int fsync(int descriptor) {
  int (*real)(int);
  *(void**)&real = dlsym(RTLD_NEXT, "fsync");
  if (Wanted("appear")) {
    fclose(fopen(getenv("FAULT_PATH"), "w"));
  }
  return Wanted("fsync") ? Fail() : real(descriptor);
}

int close(int descriptor) {
  int (*real)(int);
  *(void**)&real = dlsym(RTLD_NEXT, "close");
  const int fails = Wanted("close") && IsResult(descriptor);
  const int result = real(descriptor);
  return fails ? Fail() : result;
}

int rename(const char* from, const char* to) {
  int (*real)(const char*, const char*);
  *(void**)&real = dlsym(RTLD_NEXT, "rename");
  return Wanted("rename") ? Fail() : real(from, to);
}

int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) {
  int (*real)(int, const char*, int, const char*, unsigned);
  *(void**)&real = dlsym(RTLD_NEXT, "renameat2");
  if (Wanted("no_renameat2")) {
    errno = EINVAL;
    return -1;
  }
  return Wanted("rename") ? Fail() : real(fromFolder, from, toFolder, to, flags);
}

int open(const char* path, int flags, ...) {
  int (*real)(const char*, int, ...);
  *(void**)&real = dlsym(RTLD_NEXT, "open");
  va_list arguments;
  va_start(arguments, flags);
  /* O_TMPFILE holds O_DIRECTORY, which takes no mode. */
  const int makes = (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
  const int mode = makes ? va_arg(arguments, int) : 0;
  va_end(arguments);
  /* What a build that counts its lines writes about itself is no result either. */
  const int counts = strstr(path, ".gcda") != NULL;
  return Wanted("create") && (flags & O_CREAT) != 0 && !counts ? Fail() : real(path, flags, mode);
}

int pipe2(int ends[2], int flags) {
  static int made = 0;
  int (*real)(int[2], int);
  *(void**)&real = dlsym(RTLD_NEXT, "pipe2");
  return Wanted("pipe") && made++ >= Number("FAULT_AFTER") ? Fail() : real(ends, flags);
}

pid_t fork(void) {
  pid_t (*real)(void);
  *(void**)&real = dlsym(RTLD_NEXT, "fork");
  return Wanted("fork") ? Fail() : real();
}
