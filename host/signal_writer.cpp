#include "host/signal_writer.h"

#include "host/audio_writer.h"
#include "host/track_writer.h"

namespace wavechain {

std::unique_ptr<SignalWriter> MakeWriter(int descriptor, const std::string& name,
                                         const OutputFormat& format, const SignalInfo& signal,
                                         const std::optional<Gaps>& gaps,
                                         const std::string& comment) {
  if (format.IsSound()) {
    return std::make_unique<AudioWriter>(descriptor, name, format, signal, comment);
  }
  return std::make_unique<TrackWriter>(descriptor, name, format.container->kind, signal, gaps,
                                       comment);
}

}  // namespace wavechain
