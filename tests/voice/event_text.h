#pragma once

#include <random>
#include <string>

#include "support/filter.h"

namespace voice {

// A random event file as people and programs write them: mostly sensible events at mostly rising
// times, of orders up to 260, among lines that lack a number, hold a word, are blank, go back in
// time or far beyond the signal, and end in "\n" or "\r\n"; the last line may lack its end.
std::string RandomEvents(const support::Kind& kind, double interval_ms, int length,
                         std::mt19937& random);

}  // namespace voice
