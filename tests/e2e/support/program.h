#pragma once

#include <sys/types.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace e2e {

// How wavechain ended and what it said.
struct Outcome {
  int status = -1;  // exit status; 128 + n where signal n ended it
  std::string out;
  std::string err;

  // Standard error line by line.
  std::vector<std::string> ErrorLines() const;
};

struct Surroundings {
  std::string input = {};                             // what standard input gives, through a pipe
  std::optional<std::string> inputFile = {};          // a file that is standard input instead
  std::map<std::string, std::string> variables = {};  // environment
  std::string folder = {};                            // to run in
  long fileSizeLimit = 0;                             // bytes; 0 for none
  std::string outputFile = {};  // where standard output goes instead of Outcome::out
};

// Runs wavechain to its end.
Outcome Wavechain(const std::vector<std::string>& arguments, const Surroundings& around = {});

// Environment in which a call of the program fails (see faulty_system.c).
std::map<std::string, std::string> Fault(const std::string& call, int error, long after = 0);
// Environment in which the program gets a signal once it has written that many bytes.
std::map<std::string, std::string> SignalAfter(int signal, long bytes);

// wavechain in a terminal of its own: what it shows there, and its exit status.
Outcome WavechainInTerminal(const std::vector<std::string>& arguments);

// wavechain left running, with a pipe that stays open as its standard input.
class Running {
 public:
  explicit Running(const std::vector<std::string>& arguments);
  ~Running();
  Running(const Running&) = delete;
  Running& operator=(const Running&) = delete;

  // Gives it more to read, and returns once the program has taken all of it.
  void Feed(const std::string& bytes) const;
  // Sends the signal and waits for the end.
  int EndBy(int signal);

 private:
  pid_t child = -1;
  int feed = -1;
};

// Names of all files in a folder, hidden ones too, sorted.
std::vector<std::string> FilesIn(const std::string& folder);

// The bytes of a file; none where there is no file.
std::string ReadFile(const std::string& path);
void WriteFile(const std::string& path, const std::string& bytes);

}  // namespace e2e
