// The numbers of a TNEF stream: little-endian integers, and the 16-bit sum that ends each record.
#pragma once

#include <cstdint>

#include "vomsg/foundation/VoMsgExport.h"

class VoMsgBufferedReader;
class VoMsgBufferedWriter;
class VoMsgResourceLocator;

// The first four bytes of every stream.
inline constexpr std::uint32_t kVoTnefSignature = 0x223E9F78u;

// Read 4 or 2 bytes. Bytes missing at the end of the data count as 0; a null reader gives 0.
VOMSG_API unsigned int _tnefGetInt32(VoMsgBufferedReader* source);
VOMSG_API unsigned short _tnefGetInt16(VoMsgBufferedReader* source);

// Write 4 or 2 bytes; nothing for a null writer. A refused write is seen when the writer is flushed.
VOMSG_API void _tnefSetInt32(VoMsgBufferedWriter* writer, unsigned int value);
VOMSG_API void _tnefSetInt16(VoMsgBufferedWriter* writer, unsigned short value);
// The same; the bytes written are added to `checkSum`.
VOMSG_API void _tnefSetInt32(VoMsgBufferedWriter* writer, unsigned int value, unsigned short& checkSum);
VOMSG_API void _tnefSetInt16(VoMsgBufferedWriter* writer, unsigned short value, unsigned short& checkSum);

// The sum of the bytes, each taken unsigned, modulo 65536.
VOMSG_API unsigned short _tnefCalcCheckSum(const char* data, unsigned int length);
// The same over the data part of a resource; 0 when it cannot be read.
VOMSG_API unsigned short _tnefCalcCheckSum(const VoMsgResourceLocator* resource);

namespace vomsg::detail {

// The value of up to four little-endian bytes.
constexpr std::uint32_t littleEndian(const unsigned char* bytes, unsigned count) noexcept {
  std::uint32_t value = 0;
  for (unsigned i = count; i-- > 0;) value = value << 8 | bytes[i];
  return value;
}

}  // namespace vomsg::detail
