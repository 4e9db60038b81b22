#ifndef WAVEFILTERS_HOST_LOG_H
#define WAVEFILTERS_HOST_LOG_H

#include <chrono>
#include <string>
#include <string_view>

namespace wavechain {

/// What the program says on standard error, line by line, and its one line of progress,
/// which is shown on a terminal only and gives way to every other line.
class Log {
 public:
  Log(bool isQuiet, bool isTerminal) : quiet(isQuiet), terminal(isTerminal) {}
  ~Log() { ClearProgress(); }
  Log(const Log&) = delete;
  Log& operator=(const Log&) = delete;

  bool Quiet() const { return quiet; }
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
  void Write(std::string_view line);

  bool quiet;
  bool terminal;
  bool progressShown = false;
  std::chrono::steady_clock::time_point lastProgress = {};
};

}  // namespace wavechain

#endif
