#include "e2e/support/program.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <thread>
#include <utility>

#include "e2e/support/terminal.h"

namespace e2e {
namespace {

void Require(bool holds, const char* what) {
  if (!holds) {
    throw std::runtime_error(what);
  }
}

int AnonymousFile() {
  std::FILE* file = std::tmpfile();
  Require(file != nullptr, "no temporary file");
  const int descriptor = ::dup(::fileno(file));
  std::fclose(file);
  return descriptor;
}

std::string ReadAll(int descriptor) {
  std::string all;
  char block[65536];
  ::lseek(descriptor, 0, SEEK_SET);
  for (ssize_t came = 0; (came = ::read(descriptor, block, sizeof block)) > 0;) {
    all.append(block, static_cast<std::size_t>(came));
  }
  return all;
}

int StatusOf(pid_t child) {
  int status = 0;
  Require(::waitpid(child, &status, 0) == child, "waitpid");
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

// In the child, after fork: becomes wavechain or ends.
[[noreturn]] void Become(const std::vector<std::string>& arguments, const Surroundings& around) {
  std::vector<char*> argv = {const_cast<char*>("wavechain")};
  for (const std::string& argument : arguments) {
    argv.push_back(const_cast<char*>(argument.c_str()));
  }
  argv.push_back(nullptr);
  for (const auto& [name, value] : around.variables) {
    ::setenv(name.c_str(), value.c_str(), 1);
  }
  if (!around.folder.empty() && ::chdir(around.folder.c_str()) != 0) {
    ::_exit(126);
  }
  if (around.fileSizeLimit > 0) {
    const auto most = static_cast<rlim_t>(around.fileSizeLimit);
    const struct rlimit limit = {most, most};
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }
  for (const int caught : {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGXFSZ}) {
    std::signal(caught, SIG_DFL);
  }
  ::execv(WAVECHAIN, argv.data());
  ::_exit(127);
}

}  // namespace

std::vector<std::string> Outcome::ErrorLines() const {
  std::vector<std::string> lines;
  std::istringstream stream(err);
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
  }
  return lines;
}

Outcome Wavechain(const std::vector<std::string>& arguments, const Surroundings& around) {
  int pipe[2] = {-1, -1};
  Require(::pipe2(pipe, O_CLOEXEC) == 0, "pipe");
  const int out = around.outputFile.empty()
                      ? AnonymousFile()
                      : ::open(around.outputFile.c_str(), O_RDWR | O_CREAT | O_TRUNC, 0666);
  const int err = AnonymousFile();
  const int in = around.inputFile ? ::open(around.inputFile->c_str(), O_RDONLY) : pipe[0];
  const pid_t child = ::fork();
  Require(child >= 0 && in >= 0 && out >= 0, "fork");
  if (child == 0) {
    ::dup2(in, STDIN_FILENO);
    ::dup2(out, STDOUT_FILENO);
    ::dup2(err, STDERR_FILENO);
    Become(arguments, around);
  }
  ::close(pipe[0]);
  std::signal(SIGPIPE, SIG_IGN);
  std::thread writer([&] {
    std::size_t at = 0;
    while (at < around.input.size()) {
      const ssize_t taken = ::write(pipe[1], around.input.data() + at, around.input.size() - at);
      if (taken <= 0) {
        break;
      }
      at += static_cast<std::size_t>(taken);
    }
    ::close(pipe[1]);
  });
  Outcome outcome;
  outcome.status = StatusOf(child);
  writer.join();
  outcome.out = around.outputFile.empty() ? ReadAll(out) : "";
  outcome.err = ReadAll(err);
  ::close(out);
  ::close(err);
  if (around.inputFile) {
    ::close(in);
  }
  return outcome;
}

std::map<std::string, std::string> Fault(const std::string& call, int error, long after) {
  const char* sanitizer = std::getenv("ASAN_OPTIONS");
  return {{"LD_PRELOAD", FAULTY_SYSTEM},
          {"FAULT_CALL", call},
          {"FAULT_ERRNO", std::to_string(error)},
          {"FAULT_AFTER", std::to_string(after)},
          // A sanitizer wants to be the first of the preloaded libraries, without need here.
          {"ASAN_OPTIONS", (sanitizer == nullptr ? "" : std::string(sanitizer) + ":") +
                               "verify_asan_link_order=0"}};
}

std::map<std::string, std::string> SignalAfter(int signal, long bytes) {
  std::map<std::string, std::string> variables = Fault("signal", 0, bytes);
  variables["FAULT_SIGNAL"] = std::to_string(signal);
  return variables;
}

Outcome WavechainInTerminal(const std::vector<std::string>& arguments) {
  const Terminal terminal = OpenTerminal();
  const pid_t child = ::fork();
  Require(child >= 0, "fork");
  if (child == 0) {
    ::setsid();
    ::ioctl(terminal.program, TIOCSCTTY, 0);
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
      ::dup2(terminal.program, descriptor);
    }
    Become(arguments, {});
  }
  ::close(terminal.program);
  Outcome outcome;
  char block[4096];
  // Reading fails once the last one who had the terminal open is gone.
  for (ssize_t came = 0; (came = ::read(terminal.screen, block, sizeof block)) > 0;) {
    outcome.out.append(block, static_cast<std::size_t>(came));
  }
  outcome.status = StatusOf(child);
  ::close(terminal.screen);
  return outcome;
}

Running::Running(const std::vector<std::string>& arguments) {
  int pipe[2] = {-1, -1};
  Require(::pipe2(pipe, O_CLOEXEC) == 0, "pipe");
  child = ::fork();
  Require(child >= 0, "fork");
  if (child == 0) {
    ::dup2(pipe[0], STDIN_FILENO);
    ::dup2(AnonymousFile(), STDERR_FILENO);
    Become(arguments, {});
  }
  ::close(pipe[0]);
  feed = pipe[1];
}

Running::~Running() {
  if (child > 0) {
    ::kill(child, SIGKILL);
    StatusOf(child);
  }
  ::close(feed);
}

void Running::Feed(const std::string& bytes) const {
  Require(::write(feed, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()), "write");
  for (int waiting = 1; waiting > 0; std::this_thread::yield()) {
    Require(::ioctl(feed, FIONREAD, &waiting) == 0, "ioctl");
  }
}

int Running::EndBy(int signal) {
  ::kill(child, signal);
  return StatusOf(std::exchange(child, -1));
}

std::vector<std::string> FilesIn(const std::string& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::string ReadFile(const std::string& path) {
  if (!std::filesystem::is_regular_file(path)) {
    return "";
  }
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void WriteFile(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

}  // namespace e2e
