// The steps through a MAPI property list as TNEF encodes it. A list is
//   number of properties (4 bytes), then each property:
//     type (2), id (2)
//     for an id of 0x8000 or above: property set (16), kind (4), and for kind 1 a length (4) and a name in UTF-16,
//       padded to a multiple of 4; for other kinds a number (4)
//     for the types that have one: number of values (4)
//     the values, in the forms of tables/VoMapiTypes.h
// The steps move a cursor and report where things lie; what is kept of it is their callers' choice.
#pragma once

#include <cstdint>

#include "vomsg/foundation/VoErrorCode.h"
#include "vomsg/tnef/VoMsgTnefCursor.h"
#include "vomsg/tnef/tables/VoMapiTypes.h"

namespace vomsg::detail {

struct MapiPropertyHead {
  std::uint16_t type = 0;
  std::uint16_t id = 0;
  char propertySet[16] = {};     // of a named property
  std::uint32_t nameKind = 0;    // 1: a name; anything else: a number
  std::uint32_t nameNumber = 0;  // the number, or the length of the name in bytes
  std::uint32_t nameOffset = 0;  // where the name lies
  std::uint32_t valueCount = 0;

  bool isNamed() const { return id >= 0x8000; }
  bool hasTextName() const { return isNamed() && nameKind == 1; }
};

struct MapiValueHead {
  std::uint32_t offset = 0;      // of the value, its length field included
  std::uint32_t dataOffset = 0;  // of its bytes
  std::uint32_t length = 0;      // of its bytes
  std::uint8_t padding = 0;      // behind them
  bool holdsStream = false;      // an object that begins, behind its interface id, with the TNEF signature

  std::uint32_t endOffset() const { return dataOffset + length + padding; }
};

inline constexpr std::uint32_t kMapiTextName = 1;
inline constexpr std::uint32_t kInterfaceIdBytes = 16;

constexpr std::uint8_t mapiPadding(std::uint32_t length) noexcept {
  return static_cast<std::uint8_t>((4 - length % 4) % 4);
}

// Moves behind the head, to the first value. kVoReadFailed: a name longer than the whole range; kVoBadFormat: a name
// or its padding beyond the end.
VoErrorCode readPropertyHead(TnefCursor& cursor, MapiPropertyHead& head);

// Whether a value is content that becomes a child entity, where the nesting allows it, instead of data of the list.
constexpr bool isChildValue(std::uint16_t type, std::uint16_t id, const MapiValueHead& head) noexcept {
  return head.holdsStream ||
         (head.length > 0 && (id == kPrBody || id == kPrRtfCompressed) && mapiTypeRow(type).form == MapiForm::prefixed);
}

// Moves to the value's first byte, having made sure that all of a length-prefixed value is there.
// kVoTnefMalformed: no such type, or an object too short for its interface id; kVoReadFailed: longer than the whole
// range; kVoBadFormat: the value or its padding ends beyond the end, or nothing is left at all.
VoErrorCode readValueHead(TnefCursor& cursor, std::uint16_t type, MapiValueHead& head);

// Moves behind the value and its padding. kVoBadFormat: they end beyond the end.
VoErrorCode skipValue(TnefCursor& cursor, const MapiValueHead& head);

// Behind the last property of a list whose record claims `length` bytes from `dataOffset`: goes on at the end of the
// record where that is not before the list's own end and not beyond the end.
inline void finishList(TnefCursor& cursor, std::uint32_t dataOffset, std::uint32_t length) {
  const std::uint64_t end = std::uint64_t{dataOffset} + length;
  if (end > cursor.position()) cursor.moveTo(end);
}

}  // namespace vomsg::detail
