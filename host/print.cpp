#include "host/print.h"

#include <unistd.h>

#include "host/failure.h"
#include "host/file.h"
#include "host/interrupt.h"
#include "host/out_of_memory.h"

namespace wavechain {

void Print(const std::string& text) {
  if (const int error = WriteAll(STDOUT_FILENO, text.data(), text.size())) {
    StopIfInterrupted();
    Fail(ExitStatus::Output, "standard output: cannot be written: {}", SystemText(error));
  }
}

void PrintStreamed(const std::string& text) {
  RequireMemory();
  Print(text);
}

}  // namespace wavechain
