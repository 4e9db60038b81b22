#include "host/out_of_memory.h"

#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <new>
#include <string_view>

#include "host/failure.h"
#include "host/file.h"
#include "host/unfinished.h"

namespace wavechain {
namespace {

// Of the process in which a LackOfMemory lives; its children do not report.
constinit pid_t watched = 0;
constinit bool hasFailed = false;
constinit std::terminate_handler usual = nullptr;

[[noreturn]] void End() {
  Unfinished::AbandonAll();
  if (::getpid() == watched) {
    ReportOutOfMemory();
  }
  ::_exit(static_cast<int>(ExitStatus::Input));
}

// Whether what nobody may throw on is want of memory.
bool IsLackOfMemory() {
  if (!std::current_exception()) {
    return false;
  }
  try {
    throw;
  } catch (const std::bad_alloc&) {
    return true;
  } catch (...) {
    return false;
  }
}

[[noreturn]] void Terminate() {
  if (IsLackOfMemory()) {
    End();
  }
  if (usual != nullptr) {
    usual();
  }
  std::abort();
}

// libarchive says why on standard error and ends the program, for want of memory alone.
void EndIfWatched() {
  if (watched != 0) {
    End();
  }
}

[[noreturn]] void NoteFailure() {
  hasFailed = true;
  throw std::bad_alloc();
}

}  // namespace

LackOfMemory::LackOfMemory() {
  static const int registered = std::atexit(EndIfWatched);
  static_cast<void>(registered);
  const std::terminate_handler before = std::set_terminate(Terminate);
  usual = before == Terminate ? usual : before;
  std::set_new_handler(NoteFailure);
  hasFailed = false;
  watched = ::getpid();
}

LackOfMemory::~LackOfMemory() {
  watched = 0;
  std::set_new_handler(nullptr);
  std::set_terminate(usual);
}

bool MemoryHasFailed() { return hasFailed; }

void RequireMemory() {
  if (MemoryHasFailed()) {
    throw std::bad_alloc();
  }
}

void ReportOutOfMemory() {
  constexpr std::string_view Line =
      "wavechain: out of memory; no output was left unfinished. End other programs, or give it a "
      "shorter recording or a simpler chain\n";
  WriteAll(STDERR_FILENO, Line.data(), Line.size());
}

}  // namespace wavechain
