#include "hardening/plain_host.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>

namespace hardening {
namespace {

template <class Object, class Slots>
Slots WithCounting() {
  Slots slots{};
  slots.QueryInterface = [](void* self, const Guid*, void** out) -> std::uint64_t {
    static_cast<Object*>(self)->counted.Touch();
    *out = nullptr;
    return NO_INTERFACE_CODE;
  };
  slots.AddRef = [](void* self) {
    Counted& counted = static_cast<Object*>(self)->counted;
    counted.Touch();
    return static_cast<std::uint64_t>(++counted.references);
  };
  slots.Release = [](void* self) {
    Counted& counted = static_cast<Object*>(self)->counted;
    counted.Touch();
    return static_cast<std::uint64_t>(--counted.references);
  };
  return slots;
}

// The object behind a call, which has been counted.
template <class Object>
Object& Called(void* self) {
  auto& object = *static_cast<Object*>(self);
  object.counted.Touch();
  return object;
}

void Unused() { ADD_FAILURE() << "an unused slot was called"; }

DescriptorSlots MakeDescriptorSlots() {
  auto slots = WithCounting<PlainDescriptor, DescriptorSlots>();
  slots.GetLength = [](void* self) { return Called<PlainDescriptor>(self).length; };
  slots.SetLength = [](void* self, int length) { Called<PlainDescriptor>(self).length = length; };
  slots.GetPeriod = [](void* self, double* interval_ms) {
    *interval_ms = Called<PlainDescriptor>(self).interval_ms;
  };
  slots.SetPeriod = [](void* self, double interval_ms) {
    Called<PlainDescriptor>(self).interval_ms = interval_ms;
  };
  slots.SetRange = [](void* self, double) { Called<PlainDescriptor>(self); };
  slots.SetUnits = [](void* self, const char*) { Called<PlainDescriptor>(self); };
  slots.GetName = [](void* self, char* buffer, int size) {
    const char* const name = Called<PlainDescriptor>(self).name;
    const auto kept = std::min(std::strlen(name), static_cast<std::size_t>(size) - 1);
    std::memcpy(buffer, name, kept);
    buffer[kept] = '\0';
  };
  for (AnySlot* unused : {&slots.Unused7, &slots.Unused8, &slots.Unused9, &slots.Unused11,
                          &slots.Unused12, &slots.Unused13, &slots.Unused14, &slots.Unused15}) {
    *unused = Unused;
  }
  return slots;
}

void GiveDescriptor(PlainSource& source, void** out) {
  for (PlainDescriptor& descriptor : source.descriptors) {
    if (descriptor.counted.references == 0) {
      descriptor.length = source.length;
      descriptor.interval_ms = source.interval_ms;
      descriptor.name = source.name;
      descriptor.counted.references = 1;
      *out = &descriptor;
      return;
    }
  }
  ADD_FAILURE() << "descriptors are not given back";
  *out = nullptr;
}

int Transmit(PlainSource& source, float* buffer, int wanted, int* produced) {
  if (source.before) {
    source.before();
  }
  const int possible = std::clamp(wanted, 0, std::max(source.Remaining(), 0));
  const int written = source.deliver ? std::clamp(source.deliver(wanted), 0, possible) : possible;
  if (source.fill) {
    source.fill(buffer, written);
  }
  for (int i = 0; i < written && !source.fill; ++i) {
    buffer[i] = PlainSource::Sample(source.position + i);
  }
  source.position += written;
  *produced = source.claim ? source.claim(wanted, written) : written;
  return 0;
}

SourceSlots MakeSourceSlots() {
  auto slots = WithCounting<PlainSource, SourceSlots>();
  slots.GetDescriptor = [](void* self, void** out) {
    GiveDescriptor(Called<PlainSource>(self), out);
  };
  slots.TransmitNow = [](void* self, float* buffer, int wanted, int* produced) {
    return Transmit(Called<PlainSource>(self), buffer, wanted, produced);
  };
  slots.Dispose = [](void* self) { ++Called<PlainSource>(self).disposed; };
  slots.EndOfSrc = [](void* self) {
    auto& source = Called<PlainSource>(self);
    return source.ends ? source.ends() : source.Remaining() <= 0;
  };
  slots.EnableInPlace = [](void* self, bool) { Called<PlainSource>(self); };
  return slots;
}

ConsoleSlots MakeConsoleSlots() {
  auto slots = WithCounting<PlainConsole, ConsoleSlots>();
  slots.PutStr = [](void* self, const char*) { Called<PlainConsole>(self); };
  slots.NewLine = [](void* self) { Called<PlainConsole>(self); };
  slots.PutNum = [](void* self, int, int, double) { Called<PlainConsole>(self); };
  slots.GetTime = [](void* self, double* seconds) {
    *seconds = Called<PlainConsole>(self).time_s += 1e-6;
  };
  slots.Unused4 = slots.Unused6 = Unused;
  return slots;
}

bool OpenStream(PlainStream& stream) {
  stream.isOpen = true;
  stream.rest = stream.text;
  stream.line = {};
  return true;
}

bool NextLine(PlainStream& stream) {
  stream.line = {};
  if (!stream.isOpen || stream.rest.empty()) {
    return false;
  }
  const auto end = stream.rest.find('\n');
  stream.line = stream.rest.substr(0, end);
  stream.rest.remove_prefix(end == std::string_view::npos ? stream.rest.size() : end + 1);
  return true;
}

template <class Number>
bool NextNumber(PlainStream& stream, Number* value) {
  std::string_view& line = stream.line;
  line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
  const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), *value);
  if (error != std::errc()) {
    line = {};
    return false;
  }
  line.remove_prefix(static_cast<std::size_t>(end - line.data()));
  return true;
}

NumStreamSlots MakeStreamSlots() {
  auto slots = WithCounting<PlainStream, NumStreamSlots>();
  slots.Open = [](void* self, char*) { return OpenStream(Called<PlainStream>(self)); };
  slots.OpenString = [](void* self, const void*) { return OpenStream(Called<PlainStream>(self)); };
  slots.OpenFromString = slots.OpenString;
  slots.GetSingle = [](void* self, float* value) {
    return NextNumber(Called<PlainStream>(self), value);
  };
  slots.GetDouble = [](void* self, double* value) {
    return NextNumber(Called<PlainStream>(self), value);
  };
  slots.GetLine = [](void* self) { return NextLine(Called<PlainStream>(self)); };
  slots.Close = [](void* self) { Called<PlainStream>(self).isOpen = false; };
  slots.BytesRemain = [](void* self) {
    Called<PlainStream>(self);
    return 0;
  };
  slots.SkipBytes = [](void* self, int) { Called<PlainStream>(self); };
  slots.ReadBytes = [](void* self, char*, int) {
    Called<PlainStream>(self);
    return 0;
  };
  return slots;
}

template <class Slots>
const Slots* Kept(Slots (*make)()) {
  static const Slots slots = make();
  return &slots;
}

testing::AssertionResult Back(const Counted& counted, int expected, const char* what) {
  if (counted.references != expected) {
    return testing::AssertionFailure()
           << what << ": " << counted.references << " references at the end, expected " << expected;
  }
  if (counted.strayCalls != 0) {
    return testing::AssertionFailure() << what << ": called without a reference";
  }
  return testing::AssertionSuccess();
}

}  // namespace

PlainDescriptor::PlainDescriptor() : table(Kept(MakeDescriptorSlots)) {}
PlainSource::PlainSource() : table(Kept(MakeSourceSlots)) {}
PlainConsole::PlainConsole() : table(Kept(MakeConsoleSlots)) {}
PlainStream::PlainStream() : table(Kept(MakeStreamSlots)) {}

float PlainSource::Sample(int index) {
  // The finaliser of a common hash: neighbours have nothing in common.
  auto bits = static_cast<std::uint32_t>(index) + 0x9E3779B9U;
  bits = (bits ^ (bits >> 16)) * 0x85EBCA6BU;
  bits = (bits ^ (bits >> 13)) * 0xC2B2AE35U;
  bits ^= bits >> 16;
  return static_cast<float>(bits) / 2147483648.0F - 1.0F;
}

void PlainHost::Describe(int length, double interval_ms, const char* name) {
  for (PlainSource& source : sources) {
    source.length = length;
    source.interval_ms = interval_ms;
    source.name = name;
    source.Rewind();
  }
}

testing::AssertionResult PlainHost::Balanced() const {
  auto result = Back(console.counted, 1, "console");
  if (result) {
    result = Back(stream.counted, 1, "number stream");
  }
  for (const PlainSource& source : sources) {
    if (result) {
      result = Back(source.counted, 0, "source");
    }
    for (const PlainDescriptor& descriptor : source.descriptors) {
      if (result) {
        result = Back(descriptor.counted, 0, "descriptor");
      }
    }
  }
  return result;
}

}  // namespace hardening
