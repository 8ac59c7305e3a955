// 16-byte identifiers. Each message carries one; its text form tags the message's log lines.
#pragma once

#include <cstdint>

#include "vomsg/foundation/VoErrorCode.h"
#include "vomsg/foundation/VoMsgExport.h"

struct VoUUID_t {
  std::uint32_t Data1;
  std::uint16_t Data2;
  std::uint16_t Data3;
  std::uint8_t Data4[8];
};

// Fills `uuid` from four draws of lrand48(); no version or variant bits are set, so these are no RFC 4122
// identifiers. kVoBadArgument: null.
VOMSG_API VoErrorCode vo_createUUID(VoUUID_t* uuid);

// True when all 16 bytes are equal, or both are null.
VOMSG_API bool vo_isEqualUUID(const VoUUID_t* a, const VoUUID_t* b);

// Writes the 36 upper-case characters and a NUL into `out`, which holds at least 37 bytes.
// kVoNoMemory: an argument is null.
VOMSG_API VoErrorCode vo_stringFromUUID(const VoUUID_t* uuid, char* out);

// Seeds the generators (srand48 and srand) with the current time when the library is loaded.
class VOMSG_API VoMsgUUID_INIT {
 public:
  VoMsgUUID_INIT();
};
VOMSG_API extern VoMsgUUID_INIT gVoMsgUUIDInit;
