#include "host/console_out.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <new>

namespace wavechain {
namespace {

std::chrono::steady_clock::time_point ClockStart() {
  static const auto start = std::chrono::steady_clock::now();
  return start;
}

}  // namespace

ConsoleOut::~ConsoleOut() {
  if (line.empty()) {
    return;
  }
  try {
    NewLine();
  } catch (const std::bad_alloc&) {
    // A line that was never ended is all that is lost; most likely it is want of memory that ends
    // the filter, and will be reported.
    line.clear();
  }
}

void ConsoleOut::PutStr(const char* text) {
  if (text != nullptr) {
    line += text;
  }
}

void ConsoleOut::NewLine() {
  log.Report(label + line);
  line.clear();
}

void ConsoleOut::PutNum(int width, int precision, double value) {
  line +=
      fmt::format("{:>{}.{}f}", value, std::clamp(width, 0, 100), std::clamp(precision, 0, 100));
}

void ConsoleOut::GetTime(double* seconds) {
  // The start is read first: the first reading of all must not lie before it.
  const auto start = ClockStart();
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
  *seconds = elapsed.count();
}

}  // namespace wavechain
