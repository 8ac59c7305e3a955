// Base64 (RFC 2045, section 6.8), as the transfer encoding of a body and as a codec for short texts.
// Lenient by intent: bytes outside the alphabet are skipped, "=" included.
#pragma once

#include <cstdint>

#include "vomsg/foundation/VoErrorCode.h"
#include "vomsg/foundation/VoMsgExport.h"

class VoMsgBufferedReader;
class VoMsgBufferedWriter;
class VoMsgResourceLocator;

VOMSG_API extern const char base64table_char[65];
VOMSG_API extern const std::int32_t base64table_int[256];

// Decodes the next `length` bytes of `source` into the data part of `target`, replacing what it held.
// `length` is trusted: it must not exceed what `source` still holds. kVoWriteFailed: `target` gave no writer
// or refused a byte; what was written until then stays.
VOMSG_API VoErrorCode voDecodeBase64(VoMsgResourceLocator* target, VoMsgBufferedReader* source, long length);
// Encodes all of `source` in lines of 76 characters, each ended by CR LF, and flushes. kVoReadFailed: no reader.
VOMSG_API VoErrorCode voEncodeBase64(VoMsgBufferedWriter* target, const VoMsgResourceLocator* source);
// The same for C strings, without line breaks. The result is the caller's, for free(); null for null and on
// failure. A decoded NUL ends the result.
VOMSG_API char* voDecodeBase64(const char* text);
VOMSG_API char* voEncodeBase64(const char* text);

namespace vomsg::detail {
// Decodes `length` bytes of `source` into `target` and flushes.
VoErrorCode decodeBase64(VoMsgBufferedWriter& target, VoMsgBufferedReader& source, std::uint64_t length);
}  // namespace vomsg::detail
