#include "tracks/signal_path.h"

#include <cstring>

namespace wavefilters {

std::string SignalPath(IWaveDescriptorC* descriptor) {
  constexpr int NameSize = 512;
  char name[NameSize] = {};
  descriptor->GetName(name, NameSize);
  return std::string(name, ::strnlen(name, NameSize));
}

std::string StemOf(std::string path) {
  const auto dot = path.rfind('.');
  if (dot != std::string::npos) {
    path.erase(dot);
  }
  return path;
}

}  // namespace wavefilters
