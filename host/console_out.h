#ifndef WAVEFILTERS_HOST_CONSOLE_OUT_H
#define WAVEFILTERS_HOST_CONSOLE_OUT_H

#include <string>

#include "frame/interfaces.h"
#include "host/log.h"

namespace wavechain {

/// The console that one filter of a chain reports to: each of its lines goes to the log with
/// the filter's label before it. The clock is steady and starts with the program.
class ConsoleOut : public wavefilters::IConsoleOutC {
 public:
  void PutStr(const char* text) override;
  void Reserved4() override {}
  void NewLine() override;
  void Reserved6() override {}
  /// Fixed notation at any magnitude. Widths and precisions outside 0 to 100 are taken at
  /// the nearer end.
  void PutNum(int width, int precision, double value) override;
  void GetTime(double* seconds) override;

 protected:
  /// The log must outlive the console.
  ConsoleOut(Log& target, std::string lineLabel) : log(target), label(std::move(lineLabel)) {}
  /// A line that was begun and never ended is still reported.
  ~ConsoleOut();

 private:
  Log& log;
  std::string label;
  std::string line;
};

}  // namespace wavechain

#endif
