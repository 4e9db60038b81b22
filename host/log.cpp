#include "host/log.h"

#include <cstdio>

#include "host/failure.h"

namespace wavechain {

void Log::Report(std::string_view line) {
  if (!quiet) {
    Write(false, line);
  }
}

void Log::Warn(std::string_view line) { Write(true, line); }

void Log::ClearProgress() {
  if (progressShown) {
    std::fputs("\r\x1b[K", stderr);
    std::fflush(stderr);
    progressShown = false;
  }
}

bool Log::ProgressIsDue() {
  using namespace std::chrono_literals;
  if (quiet || !terminal) {
    return false;
  }
  const auto now = std::chrono::steady_clock::now();
  if (now - lastProgress < 100ms) {
    return false;
  }
  lastProgress = now;
  return true;
}

void Log::ShowProgress(const std::string& text) {
  std::fprintf(stderr, "\r%s\x1b[K", OneLine(text).c_str());
  std::fflush(stderr);
  progressShown = true;
}

void Log::Write(bool isWarning, std::string_view line) {
  if (keeps) {
    kept.push_back({isWarning, OneLine(line)});
    return;
  }
  ClearProgress();
  const std::string text = OneLine(line) + "\n";
  std::fwrite(text.data(), 1, text.size(), stderr);
}

}  // namespace wavechain
