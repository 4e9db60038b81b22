#ifndef WAVEFILTERS_FRAME_GUID_H
#define WAVEFILTERS_FRAME_GUID_H

#include <cstdint>

namespace wavefilters {

/// Identifier of an interface, as it crosses the binary boundary.
///
/// `Data1` is an unsigned long: 64 bits wide on the LP64 systems this library
/// is built for, and all 64 of them take part in a comparison. Padding between
/// the fields has no meaning, which is why identifiers are compared field by
/// field and never with memcmp.
struct _GUID {
  unsigned long Data1;
  std::uint16_t Data2;
  std::uint16_t Data3;
  std::uint8_t Data4[8];
};

static_assert(sizeof(unsigned long) == 8, "the binary contract is that of 64-bit LP64 systems");

/// True when all four fields are equal, each of the eight bytes of `Data4` among them.
constexpr bool operator==(const _GUID& a, const _GUID& b) {
  if (a.Data1 != b.Data1 || a.Data2 != b.Data2 || a.Data3 != b.Data3) {
    return false;
  }
  for (int i = 0; i < 8; ++i) {
    if (a.Data4[i] != b.Data4[i]) {
      return false;
    }
  }
  return true;
}

/// {00000000-0000-0000-C000-000000000046}: every object answers it.
inline constexpr _GUID IID_IUnknown = {
    0x00000000, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

/// {3bd1aa82-d4ed-49a1-b47a-656d236689bf}: every filter answers it, factories and streams do not.
inline constexpr _GUID IID_IWaveFilterC = {
    0x3bd1aa82, 0xd4ed, 0x49a1, {0xB4, 0x7A, 0x65, 0x6D, 0x23, 0x66, 0x89, 0xBF}};

/// Result of `QueryInterface` when the object has the interface.
inline constexpr unsigned long ResultOk = 0;
/// Result of `QueryInterface` when it has not. Zero-extended: a caller that reads
/// 32 bits and one that reads 64 bits see the same code.
inline constexpr unsigned long ResultNoInterface = 0x80004002UL;

}  // namespace wavefilters

#endif
