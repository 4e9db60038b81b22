#include "frame/factory.h"

#include <string_view>

namespace wavefilters {

void FilterFactory::SetStr(char* /*text*/) {}

int FilterFactory::GetDialog(IFilterDialog** out) {
  *out = nullptr;
  return 0;
}

int FilterFactory::GetNamed(char* name, IUnknown** out) {
  // Interfaces inherit singly, so a place for an IUnknown holds any of them unchanged; the
  // caller's own place is passed on, and whatever the slot does to it, the caller sees.
  const std::string_view wanted = name;
  if (wanted == "WaveFilterC") {
    return GetFilter(reinterpret_cast<IWaveFilterC**>(out));
  }
  if (wanted == "FilterDialog") {
    return GetDialog(reinterpret_cast<IFilterDialog**>(out));
  }
  *out = nullptr;
  return 0;
}

}  // namespace wavefilters
