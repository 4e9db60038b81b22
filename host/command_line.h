#ifndef WAVEFILTERS_HOST_COMMAND_LINE_H
#define WAVEFILTERS_HOST_COMMAND_LINE_H

namespace wavechain {

/// The program: understands its command line, does what it says, reports what failed in one
/// line on standard error, and returns the exit status.
int CommandLine(int argc, const char* const* argv);

}  // namespace wavechain

#endif
