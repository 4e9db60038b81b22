#pragma once

#include <cstddef>
#include <stdexcept>
#include <utility>
#include <vector>

#include "support/slots.h"

namespace support {

// Gives an object of the library a table of its own, in which a host may exchange slots. The object
// must not be used after the table is gone, unless Restore gave it the library's table back.
class OwnTable {
 public:
  OwnTable(void* object, int slots)
      : cells(Table(object) - Front, Table(object) + slots),
        slotCount(slots),
        owner(object),
        original(Table(object)) {
    Table(object) = cells.data() + Front;
  }
  OwnTable(const OwnTable&) = delete;
  OwnTable& operator=(const OwnTable&) = delete;

  // The object must still be alive.
  void Restore() { Table(owner) = original; }

  // Puts `replacement` into the slot and returns what stood there.
  template <class Function>
  Function Exchange(int slot, Function replacement) {
    if (slot < 0 || slot >= slotCount) {
      throw std::out_of_range("no slot " + std::to_string(slot));
    }
    return reinterpret_cast<Function>(std::exchange(cells[static_cast<std::size_t>(slot + Front)],
                                                    reinterpret_cast<AnySlot>(replacement)));
  }

 private:
  // In front of slot 0 stand two words of type information, which the copy takes along.
  static constexpr int Front = 2;
  static AnySlot*& Table(void* object) { return *static_cast<AnySlot**>(object); }

  std::vector<AnySlot> cells;
  int slotCount;
  void* owner;
  AnySlot* original;
};

}  // namespace support
