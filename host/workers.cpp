#include "host/workers.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <utility>

#include "host/failure.h"

namespace wavechain {
namespace {

[[noreturn]] void Work(pid_t parent, const File& pipe,
                       const std::function<std::string()>& work) noexcept {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (::getppid() == parent) {
    const std::string text = work();
    static_cast<void>(WriteAll(pipe.Descriptor(), text.data(), text.size()));
  }
  // What this process has inherited is the other one's to bring to an end.
  ::_exit(0);
}

std::string EndText(int status) {
  // Its work may end in nothing but a text; it is LackOfMemory that ends the process.
  if (WIFEXITED(status) && WEXITSTATUS(status) == static_cast<int>(ExitStatus::Input)) {
    return "out of memory";
  }
  if (WIFSIGNALED(status)) {
    return fmt::format("its process was ended by signal {} ({})", WTERMSIG(status),
                       ::strsignal(WTERMSIG(status)));
  }
  return fmt::format("its process ended with status {}", WEXITSTATUS(status));
}

}  // namespace

Workers::~Workers() { Workers::Abandon(); }

void Workers::Abandon() noexcept {
  Stop();
  for (Worker& worker : running) {
    // What it still has to say is not waited for.
    worker.pipe.Close();
    Reap(worker);
  }
}

void Workers::Start(std::size_t number, const std::function<std::string()>& work) {
  std::array<int, 2> ends = {-1, -1};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
    Fail(ExitStatus::Input, "no pipe for another process: {}; use fewer --jobs", SystemText(errno));
  }
  File reading(ends[0]);
  const File writing(ends[1]);
  const pid_t parent = ::getpid();
  // A process that is not noted would outlive this object.
  running.reserve(running.size() + 1);
  const pid_t process = ::fork();
  if (process < 0) {
    Fail(ExitStatus::Input, "no other process can be started: {}; use fewer --jobs",
         SystemText(errno));
  }
  if (process == 0) {
    Work(parent, writing, work);
  }
  running.push_back({number, process, std::move(reading), {}});
}

std::vector<Workers::Answer> Workers::Wait(int milliseconds) {
  std::vector<pollfd> pipes;
  pipes.reserve(running.size());
  for (const Worker& worker : running) {
    pipes.push_back({worker.pipe.Descriptor(), POLLIN, 0});
  }
  if (::poll(pipes.data(), pipes.size(), milliseconds) <= 0) {
    return {};
  }
  std::vector<Answer> answers;
  for (std::size_t i = pipes.size(); i-- > 0;) {
    if (pipes[i].revents == 0) {
      continue;
    }
    std::array<char, 4096> block = {};
    const ssize_t came = ::read(pipes[i].fd, block.data(), block.size());
    if (came > 0) {
      running[i].text.append(block.data(), static_cast<std::size_t>(came));
    } else if (came == 0 || errno != EINTR) {
      Worker& ended = running[i];
      const int status = Reap(ended);
      answers.push_back({ended.number, std::move(ended.text), EndText(status)});
      running.erase(running.begin() + static_cast<std::ptrdiff_t>(i));
    }
  }
  return answers;
}

void Workers::Stop() const {
  for (const Worker& worker : running) {
    if (worker.process > 0) {
      ::kill(worker.process, SIGTERM);
    }
  }
}

// Once it is gone, its number may be another's.
int Workers::Reap(Worker& worker) noexcept {
  const pid_t process = std::exchange(worker.process, -1);
  int status = 0;
  while (process > 0 && ::waitpid(process, &status, 0) < 0 && errno == EINTR) {
  }
  return status;
}

}  // namespace wavechain
