#ifndef WAVEFILTERS_HOST_COMPLETION_H
#define WAVEFILTERS_HOST_COMPLETION_H

#include <string>

#include "host/command_table.h"

namespace wavechain {

// Scripts that complete the program's command line in a shell: commands, options, the words and
// files that they take, names of filters, and behind -f names of parameters, too.

std::string BashCompletion(const CommandTable& table);
std::string ZshCompletion(const CommandTable& table);
std::string FishCompletion(const CommandTable& table);

}  // namespace wavechain

#endif
