// How a MAPI value lies in a TNEF stream (MS-OXTNEF, MS-OXCDATA), by its base type: the low 12 bits of the property
// type, whose bit 0x1000 says "several values". Example: {0x0002, fixed, 2, 2} is PT_I2, two bytes of value and two
// bytes to skip.
#pragma once

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace vomsg::detail {

enum class MapiForm : std::uint8_t {
  unsupported,
  fixed,     // `size` bytes, then `filler` bytes that mean nothing
  prefixed,  // a 32-bit length, so many bytes, padding to a multiple of 4
  object     // the same, and the bytes begin with a 16-byte interface id
};

struct MapiTypeRow {
  std::uint16_t baseType;
  MapiForm form;
  std::uint8_t size;
  std::uint8_t filler;
};

inline constexpr std::uint16_t kPtObject = 0x000D;
inline constexpr std::uint16_t kPtString8 = 0x001E;
inline constexpr std::uint16_t kPtUnicode = 0x001F;
inline constexpr std::uint16_t kPtBinary = 0x0102;

inline constexpr MapiTypeRow kMapiTypes[] = {
    {0x0002, MapiForm::fixed, 2, 2},                                          // PT_I2
    {0x0003, MapiForm::fixed, 4, 0},                                          // PT_LONG
    {0x0004, MapiForm::fixed, 4, 0},                                          // PT_R4
    {0x0005, MapiForm::fixed, 8, 0},                                          // PT_DOUBLE
    {0x0006, MapiForm::fixed, 8, 0},                                          // PT_CURRENCY
    {0x0007, MapiForm::fixed, 8, 0},                                          // PT_APPTIME
    {0x000A, MapiForm::fixed, 4, 0},                                          // PT_ERROR
    {0x000B, MapiForm::fixed, 4, 0},                                          // PT_BOOLEAN
    {kPtObject, MapiForm::object, 0, 0},    {0x0014, MapiForm::fixed, 8, 0},  // PT_I8
    {kPtString8, MapiForm::prefixed, 0, 0}, {kPtUnicode, MapiForm::prefixed, 0, 0},
    {0x0040, MapiForm::fixed, 8, 0},   // PT_SYSTIME
    {0x0048, MapiForm::fixed, 16, 0},  // PT_CLSID
    {kPtBinary, MapiForm::prefixed, 0, 0},
};

// The property types that are followed by a count of values; all others have one value and no count.
inline constexpr std::uint16_t kCountedMapiTypes[] = {
    0x000D, 0x001E, 0x001F, 0x0102, 0x1002, 0x1003, 0x1004, 0x1005,
    0x1006, 0x1007, 0x1014, 0x101E, 0x101F, 0x1040, 0x1048, 0x1102,
};

constexpr std::uint16_t mapiBaseType(std::uint16_t type) noexcept { return type & 0x0FFF; }

constexpr MapiTypeRow mapiTypeRow(std::uint16_t type) noexcept {
  for (const MapiTypeRow& row : kMapiTypes)
    if (row.baseType == mapiBaseType(type)) return row;
  return {mapiBaseType(type), MapiForm::unsupported, 0, 0};
}

constexpr bool isCountedMapiType(std::uint16_t type) noexcept {
  return std::find(std::begin(kCountedMapiTypes), std::end(kCountedMapiTypes), type) != std::end(kCountedMapiTypes);
}

// What an object's data begins with.
inline constexpr std::uint32_t kInterfaceIdBytes = 16;

// Properties from here on have a name beside their id.
inline constexpr std::uint16_t kFirstNamedProperty = 0x8000;

// The properties that mean something to the tree.
inline constexpr std::uint16_t kPrBody = 0x1000;
inline constexpr std::uint16_t kPrRtfCompressed = 0x1009;
inline constexpr std::uint16_t kPrAttachData = 0x3701;
inline constexpr std::uint16_t kPrAttachFilename = 0x3704;
inline constexpr std::uint16_t kPrAttachLongFilename = 0x3707;
inline constexpr std::uint16_t kPrAttachMimeTag = 0x370E;

}  // namespace vomsg::detail
