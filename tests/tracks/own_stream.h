#pragma once

#include <memory>
#include <string>
#include <vector>

#include "support/filter.h"

namespace tracks {

// The library's own reader of numbers in text mode. A filter that has none makes one and attaches
// it through slot 11, where this class takes a reference to it; the filter is gone afterwards.
class OwnStream {
 public:
  OwnStream();
  ~OwnStream();
  OwnStream(const OwnStream&) = delete;
  OwnStream& operator=(const OwnStream&) = delete;

  void* Object() const { return object; }
  const NumStreamSlots& Slots() const { return support::SlotsOf<NumStreamSlots>(object); }

  bool Open(std::string name) { return Slots().Open(object, name.data()); }
  bool OpenString(const std::string& name) { return Slots().OpenString(object, &name); }
  bool OpenFromString(const std::string& text) { return Slots().OpenFromString(object, &text); }
  bool GetLine() { return Slots().GetLine(object); }
  bool GetDouble(double& value) { return Slots().GetDouble(object, &value); }
  bool GetSingle(float& value) { return Slots().GetSingle(object, &value); }
  void Close() { Slots().Close(object); }

  // The numbers on the current line, as doubles, up to the first that is none.
  std::vector<double> Numbers();
  // The numbers on every line that is left.
  std::vector<std::vector<double>> AllNumbers();

  // As support::Filter's.
  template <class Function>
  Function Exchange(int slot, Function replacement) {
    return reinterpret_cast<Function>(ExchangeAny(slot, reinterpret_cast<AnySlot>(replacement)));
  }

 private:
  AnySlot ExchangeAny(int slot, AnySlot replacement);

  void* object = nullptr;
  std::unique_ptr<std::vector<AnySlot>> ownTable;
};

}  // namespace tracks
