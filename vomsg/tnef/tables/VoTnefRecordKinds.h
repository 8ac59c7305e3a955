// What becomes of a record, by its attribute name id (the low word of the attribute ids of MS-OXTNEF). An id that is
// not listed is kept by reference. Example: {0x9002, byReference, true} is attAttachRendData: its data stays in the
// source, and the record starts a new child entity.
#pragma once

#include <cstdint>

namespace vomsg::detail {

// The parts of a record: level (1 byte), name id (2), type id (2); length of the data (4); data; sum of the data (2).
inline constexpr std::uint32_t kTnefIdBytes = 5;
inline constexpr std::uint32_t kTnefDataOffset = kTnefIdBytes + 4;
inline constexpr std::uint32_t kTnefCheckSumBytes = 2;
inline constexpr std::uint32_t kTnefRecordOverhead = kTnefDataOffset + kTnefCheckSumBytes;
// Records tell offsets and sizes as signed numbers, so nothing is longer.
inline constexpr std::uint32_t kMostTnefBytes = 0x7FFFFFFF;

enum class TnefRecordKind : std::uint8_t {
  inMemory,     // VoMsgTnefAttribute: small, and looked at by name
  byReference,  // VoMsgTnefAttachData: stays in the source until somebody asks for it
  properties    // VoMsgMapiAttachment: a list of MAPI properties
};

inline constexpr std::uint16_t kAttBody = 0x800C;
inline constexpr std::uint16_t kAttAttachData = 0x800F;
inline constexpr std::uint16_t kAttAttachTitle = 0x8010;
inline constexpr std::uint16_t kAttAttachRendData = 0x9002;
inline constexpr std::uint16_t kAttMsgProps = 0x9003;
inline constexpr std::uint16_t kAttAttachment = 0x9005;
inline constexpr std::uint16_t kAttOemCodepage = 0x9007;

struct TnefRecordRow {
  std::uint16_t nameId;
  TnefRecordKind kind;
  bool opensChild;
};

inline constexpr TnefRecordRow kTnefRecordKinds[] = {
    {0x8000, TnefRecordKind::inMemory, false},             // attFrom
    {0x8004, TnefRecordKind::inMemory, false},             // attSubject
    {0x8005, TnefRecordKind::inMemory, false},             // attDateSent
    {0x8006, TnefRecordKind::inMemory, false},             // attDateRecd
    {0x8009, TnefRecordKind::inMemory, false},             // attMessageID
    {kAttAttachTitle, TnefRecordKind::inMemory, false},    // attAttachTitle
    {0x9006, TnefRecordKind::inMemory, false},             // attTnefVersion
    {kAttOemCodepage, TnefRecordKind::inMemory, false},    // attOemCodepage
    {kAttBody, TnefRecordKind::byReference, true},         // attBody
    {kAttAttachData, TnefRecordKind::byReference, false},  // attAttachData
    {kAttAttachRendData, TnefRecordKind::byReference, true},
    {kAttMsgProps, TnefRecordKind::properties, false},
    {kAttAttachment, TnefRecordKind::properties, false},
};

constexpr TnefRecordRow tnefRecordRow(std::uint16_t nameId) noexcept {
  for (const TnefRecordRow& row : kTnefRecordKinds)
    if (row.nameId == nameId) return row;
  return {nameId, TnefRecordKind::byReference, false};
}

}  // namespace vomsg::detail
