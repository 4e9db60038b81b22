#pragma once

#include <initializer_list>
#include <memory>
#include <vector>

#include "support/console_mock.h"
#include "support/library.h"
#include "support/num_stream_mock.h"
#include "support/own_table.h"
#include "support/samples.h"
#include "support/source_mock.h"

namespace support {

// A filter of the library, driven through its slots. It holds the one reference that it was made
// with; its end releases that reference and expects the filter to be gone by it. Declare the mocks
// that it gets before it, so that they outlive it.
class Filter {
 public:
  // Takes over the reference. `kind` says how many slots the object has.
  Filter(void* newObject, const Kind& newKind);
  ~Filter();
  Filter(Filter&&) noexcept;
  Filter& operator=(Filter&&) = delete;

  void* Object() const { return object; }
  const FilterSlots& Slots() const { return SlotsOf<FilterSlots>(object); }

  void Set_src_list(const std::vector<SourceMock*>& sources);  // gives a reference to each
  void Set_src_list(SourceMock& source) { Set_src_list(std::vector<SourceMock*>{&source}); }
  void Set_param_list(std::vector<double> values);
  void Set_console_out(ConsoleMock* console);
  void Set_num_stream(NumStreamMock* stream);
  void SrcSet() { Slots().SrcSet(object); }
  void Init(double interval_ms) { Slots().Init(object, interval_ms); }
  void InitFrom(DescriptorMock& descriptor);  // lends it for the call
  void EnableInPlace(bool flag) { Slots().EnableInPlace(object, flag); }
  bool EndOfSrc() { return Slots().EndOfSrc(object); }
  void Dispose() { Slots().Dispose(object); }
  // The result of the filter's own descriptor, as amended; releases it.
  Description GetDescriptor(SourceMock& source);
  // Lets go of the reference at once: the end of scope then does nothing.
  std::uint64_t Release();

  // Pulls up to `count` samples into a guarded buffer: what was produced.
  Samples Pull(int count);
  // The count that a pull with a null buffer reports.
  int Peek(int count);
  // Pulls the sizes, over and over, until EndOfSrc; fails the test where that never comes.
  Samples PullAll(const std::vector<int>& sizes = {8192});

  // Gives the object a table of its own in which `slot` holds `replacement`, as a host may do;
  // returns what stood there. The table lives as long as this handle.
  template <class Function>
  Function Exchange(int slot, Function replacement) {
    if (table == nullptr) {
      table = std::make_unique<OwnTable>(object, kind.slots);
    }
    return table->Exchange(slot, replacement);
  }

  // Slots 15 and 16, called with the types of their family, as in Call<BlockApply>(15, in, out, n).
  template <class Function, class... Arguments>
  auto Call(int slot, Arguments... arguments) {
    const AnySlot function = slot == 15 ? Slots().Slot15 : Slots().Slot16;
    return reinterpret_cast<Function>(function)(object, arguments...);
  }

 private:
  void* object = nullptr;
  Kind kind{};
  std::unique_ptr<OwnTable> table;
};

// A new filter of a kind; its factory is gone already. Throws std::runtime_error where the library
// hands out nothing.
Filter MakeFilter(const Kind& kind);

// Names the cases of a test suite over kinds after their entry points.
std::string KindName(const testing::TestParamInfo<Kind>& info);

}  // namespace support
