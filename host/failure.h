#ifndef WAVEFILTERS_HOST_FAILURE_H
#define WAVEFILTERS_HOST_FAILURE_H

#include <fmt/format.h>

#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace wavechain {

/// What the program hands back to its caller.
enum class ExitStatus : int {
  Done = 0,
  Usage = 1,   // wrong usage, or a chain that cannot be built
  Input = 2,   // the input could not be processed
  Output = 3,  // the output could not be written
  Interrupted = 130,
};

/// Why the program gives up: one line that says what, where, and what would be right.
class Failure : public std::runtime_error {
 public:
  Failure(ExitStatus exitStatus, const std::string& message);
  ExitStatus Status() const { return status; }

 private:
  ExitStatus status;
};

/// Throws a Failure with a message put together by fmt.
template <class... Values>
[[noreturn]] void Fail(ExitStatus status, fmt::format_string<Values...> text, Values&&... values) {
  throw Failure(status, fmt::format(text, std::forward<Values>(values)...));
}

/// The text with each control character written as an escape such as \n or \x1b: file names
/// and arguments may hold any byte, a message stays one line and leaves the terminal alone.
std::string OneLine(std::string_view text);

/// The system's words for an errno value.
std::string SystemText(int error);

}  // namespace wavechain

#endif
