#ifndef WAVEFILTERS_HOST_MAKE_H
#define WAVEFILTERS_HOST_MAKE_H

#include <utility>

#include "frame/lifetime.h"
#include "frame/ref.h"

namespace wavechain {

/// A new counted object of the host's, with one reference.
template <class T, class... Arguments>
wavefilters::Ref<T> Make(Arguments&&... arguments) {
  return wavefilters::Ref<T>::Share(
      new wavefilters::Heap<T>(std::forward<Arguments>(arguments)...));
}

}  // namespace wavechain

#endif
