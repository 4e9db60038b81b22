#include "host/interrupt.h"

#include <csignal>

#include "host/failure.h"

namespace wavechain {
namespace {

volatile std::sig_atomic_t noted = 0;

void Note(int /*signal*/) { noted = 1; }

}  // namespace

void CatchInterrupts() {
  struct sigaction action = {};
  action.sa_handler = Note;
  // Without SA_RESTART: a read that waits for a pipe must come back.
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction before = {};
    ::sigaction(signal, nullptr, &before);
    // nohup and shells without job control start programs that are to ignore one of them.
    if (before.sa_handler != SIG_IGN) {
      ::sigaction(signal, &action, nullptr);
    }
  }
  action.sa_handler = SIG_IGN;
  ::sigaction(SIGPIPE, &action, nullptr);
  ::sigaction(SIGXFSZ, &action, nullptr);
}

bool Interrupted() { return noted != 0; }

void StopIfInterrupted() {
  if (Interrupted()) {
    Fail(ExitStatus::Interrupted, "interrupted; no output was left unfinished");
  }
}

}  // namespace wavechain
