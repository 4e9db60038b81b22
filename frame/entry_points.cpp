#include "frame/kinds.h"

// Exported by the attribute and by exports.map both: neither list alone can leak a name.
#define WAVEFILTERS_EXPORT extern "C" __attribute__((visibility("default")))

namespace wavefilters {
namespace {

template <class Factory>
IFilterFactory* MakeFactory(IFilterFactory** out) {
  auto* factory = new Heap<Factory>;
  factory->AddRef();
  *out = factory;
  return factory;
}

}  // namespace
}  // namespace wavefilters

#define WAVEFILTERS_ENTRY_POINT(EntryName, Factory)                                              \
  WAVEFILTERS_EXPORT wavefilters::IFilterFactory* EntryName(wavefilters::IFilterFactory** out) { \
    return wavefilters::MakeFactory<wavefilters::Factory>(out);                                  \
  }

WAVEFILTERS_KINDS(WAVEFILTERS_ENTRY_POINT)
