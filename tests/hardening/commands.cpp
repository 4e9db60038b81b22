// Runs command lines of wavechain, hundreds in one process, with faults of the system and of memory
// on demand. A test written in Python gives one request a line, as JSON, and gets one answer a
// line. From the request to "stand by" on, one that ends the process is answered by "ended", and
// the next one finds everything as it was at "stand by".

#include <dlfcn.h>
#include <execinfo.h>
#include <fcntl.h>
#include <linux/capability.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "hardening/filter_request.h"
#include "hardening/memory.h"
#include "hardening/system_faults.h"
#include "host/command_line.h"

namespace {

using Json = nlohmann::json;

// A command that needs longer hangs, and is ended by the signal, which also tells where.
constexpr unsigned DefaultPatience_s = 300;

// Root reads everything; this process shall be refused what others are.
void BeLikeOthers() {
  __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
  __user_cap_data_struct sets[2] = {};
  ::syscall(SYS_capget, &header, sets);
  const unsigned dropped = (1U << CAP_DAC_OVERRIDE) | (1U << CAP_DAC_READ_SEARCH);
  sets[0].effective &= ~dropped;
  sets[0].permitted &= ~dropped;
  sets[0].inheritable &= ~dropped;
  ::syscall(SYS_capset, &header, sets);
}

// What lies at a place: the file that it is of, and where in that file.
struct Place {
  const char* file;
  std::ptrdiff_t offset;
};

Place PlaceOf(const void* at) {
  Dl_info found = {};
  if (::dladdr(at, &found) == 0) {
    return {"?", 0};
  }
  return {found.dli_fname,
          static_cast<const char*>(at) - static_cast<const char*>(found.dli_fbase)};
}

void Write(int file, const char* what, const hardening::Trace& trace) {
  for (const void* const at : trace) {
    if (at != nullptr) {
      const Place place = PlaceOf(at);
      ::dprintf(file, "%s %s %tx\n", what, place.file, place.offset);
    }
  }
}

// Where the process is about to end, in the file that ENDED_AT names: a line for each function on
// the way there, and on the way to the last allocation that was refused; innermost first, with the
// file that it is of and its place there.
void TellWhere() {
  static hardening::Trace refused = {};
  static hardening::Trace here = {};
  refused = hardening::LastRefusal();  // dprintf() asks for memory, too
  const char* const path = std::getenv("ENDED_AT");
  const int file = path == nullptr ? -1 : ::open(path, O_WRONLY | O_CREAT | O_TRUNC, 0600);
  if (file >= 0) {
    Write(file, "refused", refused);
    // Where a jump has spoiled the stack, it ends here.
    ::backtrace(here.data(), static_cast<int>(here.size()));
    Write(file, "ended", here);
    ::close(file);
  }
}

[[noreturn]] void Aborted() {
  TellWhere();
  std::signal(SIGABRT, SIG_DFL);
  std::abort();
}

void TellOfCrash(int signal) {
  TellWhere();
  std::signal(signal, SIG_DFL);
}

// The stack itself may be what is spoilt.
void WatchForCrashes() {
  static std::array<char, 1 << 16> stack = {};
  const stack_t other = {stack.data(), 0, stack.size()};
  ::sigaltstack(&other, nullptr);
  struct sigaction action = {};
  action.sa_handler = TellOfCrash;
  action.sa_flags = SA_ONSTACK;
  ::sigaction(SIGSEGV, &action, nullptr);
  ::sigaction(SIGABRT, &action, nullptr);
}

void TellOfHang(int signal) {
  TellWhere();
  std::signal(signal, SIG_DFL);
  ::raise(signal);  // it is blocked while it is handled, and comes on the way back
}

Json PathOf(const hardening::Trace& trace) {
  Json path = Json::array();
  for (const void* const at : trace) {
    if (at != nullptr) {
      const Place place = PlaceOf(at);
      path.push_back({place.file, place.offset});
    }
  }
  return path;
}

// The ways to the blocks that are kept.
Json PathsOfKept() {
  Json paths = Json::array();
  for (const hardening::Trace& trace : hardening::TracesOfKept()) {
    paths.push_back(PathOf(trace));
  }
  return paths;
}

// A file in memory, of a name that faults may tell; with a path that one, which outlasts the
// process.
int CaptureFile(int captured, const char* path) {
  const std::string name = "captured-" + std::to_string(captured);
  return path == nullptr ? ::memfd_create(name.c_str(), MFD_CLOEXEC)
                         : ::open(path, O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
}

// A descriptor of the process, led to a file until the end of the scope.
class Captured {
 public:
  explicit Captured(int captured, const char* path = nullptr)
      : descriptor(captured), kept(::dup(captured)), file(CaptureFile(captured, path)) {
    ::dup2(file, descriptor);
  }
  ~Captured() { Restore(); }
  Captured(const Captured&) = delete;
  Captured& operator=(const Captured&) = delete;

  std::string Text() {
    std::fflush(stdout);
    std::fflush(stderr);
    Restore();
    const off_t size = ::lseek(file, 0, SEEK_END);
    std::string text(static_cast<std::size_t>(size), '\0');
    const ssize_t came = ::pread(file, text.data(), text.size(), 0);
    ::close(file);
    text.resize(came < 0 ? 0 : static_cast<std::size_t>(came));
    return text;
  }

 private:
  void Restore() {
    if (kept >= 0) {
      ::dup2(kept, descriptor);
      ::close(kept);
      kept = -1;
    }
  }

  int descriptor;
  int kept;
  int file;
};

hardening::Fault FaultIn(const Json& request) {
  const Json fault = request.value("fault", Json::object());
  return {fault.value("call", ""), fault.value("path", ""), fault.value("error", 0),
          fault.value("after", 0L), fault.value("text", "")};
}

// At most so many files may be open while it lives.
class FewFiles {
 public:
  explicit FewFiles(int most) {
    ::getrlimit(RLIMIT_NOFILE, &before);
    const struct rlimit limit = {most > 0 ? static_cast<rlim_t>(most) : before.rlim_cur,
                                 before.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &limit);
  }
  ~FewFiles() { ::setrlimit(RLIMIT_NOFILE, &before); }
  FewFiles(const FewFiles&) = delete;
  FewFiles& operator=(const FewFiles&) = delete;

 private:
  struct rlimit before = {};
};

struct Outcome {
  int status = -1;
  bool threw = false;
  long asked = 0;
  long live = 0;
};

Outcome Run(const std::vector<std::string>& arguments, const Json& request) {
  std::vector<const char*> argv = {"wavechain"};
  for (const std::string& argument : arguments) {
    argv.push_back(argument.c_str());
  }
  const hardening::Fault fault = FaultIn(request);
  const long refused = request.value("refuse", 0L);
  const bool fromThereOn = request.value("from_there_on", false);
  const FewFiles limit(request.value("files", 0));
  Outcome outcome;
  hardening::SetFault(fault);
  const long before = hardening::LiveBlocks();
  try {
    const hardening::Shortage shortage(refused, fromThereOn, request.value("trace", false),
                                       request.value("tell", false) ? TellWhere : nullptr);
    outcome.status = wavechain::CommandLine(static_cast<int>(argv.size()), argv.data());
    outcome.asked = hardening::Shortage::Asked();
  } catch (...) {
    outcome.threw = true;
  }
  outcome.live = hardening::LiveBlocks() - before;
  hardening::SetFault({});
  return outcome;
}

Json AnswerCommand(const Json& request) {
  Captured out(STDOUT_FILENO);
  Captured err(STDERR_FILENO, std::getenv("ERR_AT"));
  ::alarm(request.value("patience_s", DefaultPatience_s));
  const Outcome outcome = Run(request.at("arguments"), request);
  ::alarm(0);
  return {{"status", outcome.status},
          {"threw", outcome.threw},
          {"asked", outcome.asked},
          {"live", outcome.live},
          {"out", out.Text()},
          {"err", err.Text()},
          {"refused", PathOf(hardening::LastRefusal())},
          {"kept", request.value("trace", false) ? PathsOfKept() : Json()}};
}

void Print(const Json& answer) {
  std::cout << answer.dump(-1, ' ', true, Json::error_handler_t::replace) << std::endl;
}

// Returns in a process that begins with all that this one has: what libraries keep once they were
// used takes long to come by. Where that one ends before its time, it is said for it, and the next
// one returns.
void StandBy() {
  // Before there are two: the next request shall find nobody who has read half of it.
  Print(Json::object());
  for (;;) {
    const pid_t next = ::fork();
    if (next == 0) {
      return;
    }
    if (next < 0) {
      std::perror("fork");
      ::_exit(1);
    }
    int status = -1;
    ::waitpid(next, &status, 0);
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0) {
      ::_exit(0);  // the end of the requests
    }
    Print({{"ended", WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status)}});
  }
}

}  // namespace

int main() {
  BeLikeOthers();
  std::array<void*, 1> warm = {};
  ::backtrace(warm.data(), 1);  // its first call takes memory
  std::set_terminate(Aborted);
  WatchForCrashes();
  std::signal(SIGALRM, TellOfHang);
  for (std::string line; std::getline(std::cin, line);) {
    const Json request = Json::parse(line);
    if (request.contains("stand by")) {
      StandBy();
    } else {
      Print(request.contains("arguments") ? AnswerCommand(request)
                                          : hardening::AnswerFilterRequest(request));
    }
  }
  return 0;
}
