// The steps through a MAPI property list as TNEF encodes it. A list is
//   number of properties (4 bytes), then each property:
//     type (2), id (2)
//     for an id of 0x8000 or above: property set (16), kind (4), and for kind 1 a length (4) and a name in UTF-16,
//       padded to a multiple of 4; for other kinds a number (4)
//     for the types that have one: number of values (4)
//     the values, in the forms of tables/VoMapiTypes.h
// The walk says what comes next, a property or a value, and where it lies; every length has been held against the range
// when it says so, so that nobody behind it checks again. What is kept of it is its caller's choice: the parser makes
// children and keeps nothing, the attribute makes objects.
#pragma once

#include <cstdint>

#include "vomsg/foundation/VoErrorCode.h"
#include "vomsg/tnef/VoMsgTnefCursor.h"
#include "vomsg/tnef/tables/VoMapiTypes.h"

namespace vomsg::detail {

inline constexpr std::uint32_t kMapiTextName = 1;  // the kind of a name that is no number

struct MapiPropertyHead {
  std::uint16_t type = 0;
  std::uint16_t id = 0;
  char propertySet[16] = {};     // of a named property
  std::uint32_t nameKind = 0;    // 1: a name; anything else: a number
  std::uint32_t nameNumber = 0;  // the number, or the length of the name in bytes
  std::uint32_t nameOffset = 0;  // where the name lies
  std::uint32_t valueCount = 0;

  bool isNamed() const { return id >= kFirstNamedProperty; }
  bool hasTextName() const { return isNamed() && nameKind == kMapiTextName; }
};

struct MapiValueHead {
  std::uint32_t offset = 0;      // of the value, its length field included
  std::uint32_t dataOffset = 0;  // of its bytes
  std::uint32_t length = 0;      // of its bytes
  std::uint8_t padding = 0;      // behind them
  bool holdsStream = false;      // an object that begins, behind its interface id, with the TNEF signature
  std::uint32_t end = 0;         // behind the padding; the end of the range where that cuts a number short

  std::uint32_t sourceSize() const { return end - offset; }
};

constexpr std::uint8_t mapiPadding(std::uint32_t length) noexcept {
  return static_cast<std::uint8_t>((4 - length % 4) % 4);
}

// Whether a value is content that becomes a child entity, where the nesting allows it, instead of data of the list.
constexpr bool isChildValue(std::uint16_t type, std::uint16_t id, const MapiValueHead& head) noexcept {
  return head.holdsStream ||
         (head.length > 0 && (id == kPrBody || id == kPrRtfCompressed) && mapiTypeRow(type).form == MapiForm::prefixed);
}

// Moves to the first byte of the value at the cursor. kVoTnefMalformed: no such type, or an object too short for its
// interface id; kVoReadFailed: longer than the whole range; kVoBadFormat: the value or its padding ends beyond the end,
// or nothing is left at all.
VoErrorCode readValueHead(TnefCursor& cursor, std::uint16_t type, MapiValueHead& head);

class MapiListWalk {
 public:
  enum class Event : std::uint8_t {
    property,  // property() tells which; its valueCount values come next
    value,     // value() tells where it lies; the cursor stands at its first byte, and may move before the next step
    end        // the cursor stands behind the last property
  };

  MapiListWalk() = default;
  // From the cursor's position on, where so many properties begin.
  explicit MapiListWalk(std::uint32_t properties) : mPropertiesLeft(properties) {}

  // kVoReadFailed: a name longer than the whole range; kVoBadFormat: a name or its padding beyond the end; and the
  // codes of readValueHead().
  VoErrorCode next(TnefCursor& cursor, Event& event);
  const MapiPropertyHead& property() const { return mProperty; }
  const MapiValueHead& value() const { return mValue; }

 private:
  VoErrorCode readProperty(TnefCursor& cursor);

  std::uint32_t mPropertiesLeft = 0;
  std::uint32_t mValuesLeft = 0;
  bool mIsAtValue = false;  // the value has not been stepped over yet
  MapiPropertyHead mProperty;
  MapiValueHead mValue;
};

// Behind the last property of a list whose record claims `length` bytes from `dataOffset`: goes on at the end of the
// record where that is not before the list's own end and not beyond the end.
inline void finishList(TnefCursor& cursor, std::uint32_t dataOffset, std::uint32_t length) {
  const std::uint64_t end = std::uint64_t{dataOffset} + length;
  if (end > cursor.position()) cursor.moveTo(end);
}

}  // namespace vomsg::detail
