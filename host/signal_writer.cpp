#include "host/signal_writer.h"

#include "host/audio_writer.h"
#include "host/table_writer.h"

namespace wavechain {

std::unique_ptr<SignalWriter> MakeWriter(int descriptor, const std::string& name,
                                         const OutputFormat& format, const SignalInfo& signal,
                                         const std::string& comment) {
  switch (format.container->kind) {
    case ContainerKind::Csv:
      return std::make_unique<CsvWriter>(descriptor, name, signal);
    case ContainerKind::Npy:
      return std::make_unique<NpyWriter>(descriptor, name, signal);
    case ContainerKind::Audio:
    case ContainerKind::Raw:
      break;
  }
  return std::make_unique<AudioWriter>(descriptor, name, format, signal, comment);
}

}  // namespace wavechain
