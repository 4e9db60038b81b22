#ifndef WAVEFILTERS_HOST_LOG_H
#define WAVEFILTERS_HOST_LOG_H

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

namespace wavechain {

/// A line that a log kept.
struct LogLine {
  bool isWarning = false;
  std::string text = {};
};

/// What the program says on standard error, line by line, and its one line of progress,
/// which is shown on a terminal only and gives way to every other line.
class Log {
 public:
  Log(bool isQuiet, bool isTerminal) : quiet(isQuiet), terminal(isTerminal) {}
  /// Keeps its lines instead of writing them; a quiet one keeps warnings only.
  explicit Log(bool isQuiet = false) : quiet(isQuiet), keeps(true) {}
  ~Log() { ClearProgress(); }
  Log(const Log&) = delete;
  Log& operator=(const Log&) = delete;

  bool Quiet() const { return quiet; }
  /// The lines so far, of a log that keeps them.
  const std::vector<LogLine>& Kept() const { return kept; }
  /// A line that -q keeps back.
  void Report(std::string_view line);
  /// A line about something the user must know, with -q too.
  void Warn(std::string_view line);
  /// Replaces the line of progress, a few times a second at most; `text` is only asked for
  /// when it will be shown.
  template <class Text>
  void Progress(Text text) {
    if (ProgressIsDue()) {
      ShowProgress(text());
    }
  }
  void ClearProgress();

 private:
  bool ProgressIsDue();
  void ShowProgress(const std::string& text);
  void Write(bool isWarning, std::string_view line);

  bool quiet = false;
  bool terminal = false;
  bool keeps = false;
  std::vector<LogLine> kept;
  bool progressShown = false;
  std::chrono::steady_clock::time_point lastProgress = {};
};

}  // namespace wavechain

#endif
