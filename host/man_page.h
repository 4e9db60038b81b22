#ifndef WAVEFILTERS_HOST_MAN_PAGE_H
#define WAVEFILTERS_HOST_MAN_PAGE_H

#include <string>

#include "host/command_table.h"

namespace wavechain {

/// The manual page wavechain(1), in the macros that man(7) describes: every command with its
/// options, every filter with its parameters. It bears no date, so that it is the same wherever
/// it is made.
std::string ManPage(const CommandTable& table);

}  // namespace wavechain

#endif
