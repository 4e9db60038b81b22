#ifndef WAVEFILTERS_HOST_INTERRUPT_H
#define WAVEFILTERS_HOST_INTERRUPT_H

namespace wavechain {

/// From here on SIGINT, SIGTERM and SIGHUP only leave a note, so that what is going on can
/// come to a clean end: temporary files are removed on the way out like after any failure.
/// Writes to a closed pipe and beyond a file size limit become errors instead of signals.
void CatchInterrupts();

/// Whether one of the three has come.
bool Interrupted();

/// Fails (interrupted) when one of the three has come.
void StopIfInterrupted();

}  // namespace wavechain

#endif
