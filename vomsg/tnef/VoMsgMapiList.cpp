#include "vomsg/tnef/VoMsgMapiList.h"

#include <algorithm>

#include "vomsg/tnef/VoTnefInteger.h"

namespace vomsg::detail {

VoErrorCode MapiListWalk::next(TnefCursor& cursor, Event& event) {
  if (mIsAtValue && !cursor.moveTo(mValue.end)) return kVoBadFormat;
  mIsAtValue = mValuesLeft > 0;
  if (mIsAtValue) {
    --mValuesLeft;
    event = Event::value;
    return readValueHead(cursor, mProperty.type, mValue);
  }
  event = mPropertiesLeft > 0 ? Event::property : Event::end;
  return mPropertiesLeft > 0 ? readProperty(cursor) : kVoSuccess;
}

VoErrorCode MapiListWalk::readProperty(TnefCursor& cursor) {
  --mPropertiesLeft;
  MapiPropertyHead& head = mProperty;
  head = {};
  head.type = cursor.readInt16();
  head.id = cursor.readInt16();
  if (head.isNamed()) {
    cursor.read(head.propertySet, sizeof head.propertySet);
    head.nameKind = cursor.readInt32();
    head.nameNumber = cursor.readInt32();
    if (head.nameKind == kMapiTextName) {
      if (head.nameNumber > cursor.size()) return kVoReadFailed;
      head.nameOffset = cursor.position();
      if (!cursor.skip(std::uint64_t{head.nameNumber} + mapiPadding(head.nameNumber))) return kVoBadFormat;
    }
  }
  head.valueCount = mValuesLeft = isCountedMapiType(head.type) ? cursor.readInt32() : 1;
  return kVoSuccess;
}

VoErrorCode readValueHead(TnefCursor& cursor, std::uint16_t type, MapiValueHead& head) {
  const MapiTypeRow row = mapiTypeRow(type);
  if (row.form == MapiForm::unsupported) return kVoTnefMalformed;
  // Also what ends a list that claims four thousand million values and holds none.
  if (cursor.left() == 0) return kVoBadFormat;
  head = {};
  head.offset = head.dataOffset = cursor.position();
  if (row.form == MapiForm::fixed) {
    head.length = row.size;
    head.padding = row.filler;
    // A number that the end cuts short is filled up with zeros, but what lies behind a number must be there.
    const std::uint64_t end = std::uint64_t{head.offset} + row.size + row.filler;
    if (end > cursor.end() && row.filler > 0) return kVoBadFormat;
    head.end = static_cast<std::uint32_t>(std::min<std::uint64_t>(end, cursor.end()));
    return kVoSuccess;
  }
  if (cursor.left() < 4) return kVoBadFormat;
  head.length = cursor.readInt32();
  head.padding = mapiPadding(head.length);
  head.dataOffset = cursor.position();
  if (head.length > cursor.size()) return kVoReadFailed;
  if (std::uint64_t{head.length} + head.padding > cursor.left()) return kVoBadFormat;
  head.end = head.dataOffset + head.length + head.padding;
  if (row.form == MapiForm::object && head.length > 0) {
    if (head.length < kInterfaceIdBytes) return kVoTnefMalformed;
    if (head.length >= kInterfaceIdBytes + 4) {
      cursor.skip(kInterfaceIdBytes);
      head.holdsStream = cursor.readInt32() == kVoTnefSignature;
      cursor.moveTo(head.dataOffset);
    }
  }
  return kVoSuccess;
}

}  // namespace vomsg::detail
