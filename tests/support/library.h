#pragma once

#include <array>
#include <ostream>
#include <string>
#include <string_view>

#include "support/slots.h"

namespace support {

// One of the thirteen kinds of filter: its entry point and the slots that its filters have.
struct Kind {
  const char* entry;
  int slots;

  friend std::ostream& operator<<(std::ostream& out, const Kind& kind) { return out << kind.entry; }
  // By the names: each file may have copies of its own of them.
  friend bool operator==(const Kind& a, const Kind& b) {
    return std::string_view(a.entry) == b.entry;
  }
};

inline constexpr Kind SetTrack{"SetTrackI", 15};
inline constexpr Kind BeamPel{"BeamPelI", 17};
inline constexpr Kind BeamData{"BeamDataI", 17};
inline constexpr Kind GlotSyn{"GlotSynI", 17};
inline constexpr Kind FricSyn{"FricSynI", 17};
inline constexpr Kind PulseSyn{"PulseSynI", 17};
inline constexpr Kind FIRFilter{"FIRFilterI", 17};
inline constexpr Kind FIRNotch{"FIRNotchI", 17};
inline constexpr Kind Resample{"ResampleI", 17};
inline constexpr Kind SumSources{"SumSourcesI", 16};
inline constexpr Kind EchoCancel{"EchoCancelI", 16};
inline constexpr Kind SineGen{"SineGenI", 16};
inline constexpr Kind SquareGen{"SquareGenI", 16};

inline constexpr std::array<Kind, 13> Kinds{SetTrack,   BeamPel,   BeamData, GlotSyn,  FricSyn,
                                            PulseSyn,   FIRFilter, FIRNotch, Resample, SumSources,
                                            EchoCancel, SineGen,   SquareGen};

// The file of the library under test.
std::string LibraryPath();

// A symbol of the library, which is loaded at the first call and stays so; null where it has none.
void* Symbol(const char* name);

EntryPoint Entry(const Kind& kind);

// The table of an object that the library handed out.
template <class Slots>
const Slots& SlotsOf(void* object) {
  return **static_cast<const Slots**>(object);
}

// A factory, released at the end of its scope. Throws std::runtime_error where there is none.
class Factory {
 public:
  explicit Factory(const Kind& kind);
  ~Factory();
  Factory(const Factory&) = delete;
  Factory& operator=(const Factory&) = delete;

  void* Object() const { return object; }
  const FactorySlots& Slots() const { return SlotsOf<FactorySlots>(object); }
  // A new filter with its one reference; null where the kind hands out nothing.
  void* GetFilter() const;

 private:
  void* object = nullptr;
};

}  // namespace support
