#ifndef WAVEFILTERS_FRAME_FACTORY_H
#define WAVEFILTERS_FRAME_FACTORY_H

#include "frame/interfaces.h"
#include "frame/lifetime.h"
#include "frame/ref.h"

namespace wavefilters {

/// What all factories share; a kind adds `GetFilter`. A factory is its count and nothing
/// else, so it may be asked from any thread, one call at a time.
class FilterFactory : public IFilterFactory {
 public:
  void SetStr(char* text) override;
  int GetDialog(IFilterDialog** out) override;
  int GetNamed(char* name, IUnknown** out) override;

 protected:
  FilterFactory() = default;
  ~FilterFactory() = default;
};

/// Makes filters of one kind. `*out` is written last: an allocation that fails stores nothing.
template <class Filter>
class FactoryOf : public FilterFactory {
 public:
  int GetFilter(IWaveFilterC** out) override {
    auto* filter = new Heap<Filter>;
    filter->AddRef();
    *out = filter;
    return 1;
  }

 protected:
  FactoryOf() = default;
  ~FactoryOf() = default;
};

/// Makes pairs of filters: a front, which the host is given, and the partner that it owns.
template <class Front, class Partner>
class FactoryOfPair : public FilterFactory {
 public:
  int GetFilter(IWaveFilterC** out) override {
    auto partner = Ref<Front>::Share(new Heap<Partner>);
    auto* front = new Heap<Front>(std::move(partner));
    front->AddRef();
    *out = front;
    return 1;
  }

 protected:
  FactoryOfPair() = default;
  ~FactoryOfPair() = default;
};

}  // namespace wavefilters

#endif
