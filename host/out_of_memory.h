#ifndef WAVEFILTERS_HOST_OUT_OF_MEMORY_H
#define WAVEFILTERS_HOST_OUT_OF_MEMORY_H

namespace wavechain {

/// While it lives, want of memory ends the program in order even where nobody can be told of it: in
/// destructors and other functions that must not throw, of ours and of libraries (std::terminate),
/// and in libraries that end the program for it (std::exit). What is Unfinished goes, one line on
/// standard error says why, and the exit status is 2. Whatever else ends a program so still does.
class LackOfMemory {
 public:
  LackOfMemory();
  ~LackOfMemory();
  LackOfMemory(const LackOfMemory&) = delete;
  LackOfMemory& operator=(const LackOfMemory&) = delete;
};

/// Whether operator new has failed since the LackOfMemory began.
bool MemoryHasFailed();

/// Throws std::bad_alloc where it has: standard streams keep that to themselves, and what they
/// wrote or read is not whole.
void RequireMemory();

/// Says on standard error that memory has run out: in one piece, without asking for memory.
void ReportOutOfMemory();

}  // namespace wavechain

#endif
