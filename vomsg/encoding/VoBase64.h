// Base64 (RFC 2045, section 6.8), as the transfer encoding of a body and as a codec for short texts.
// Lenient by intent: bytes outside the alphabet are skipped, "=" included.
#pragma once

#include <cstdint>

#include "vomsg/foundation/VoErrorCode.h"
#include "vomsg/foundation/VoMsgExport.h"

class VoMsgBufferedReader;
class VoMsgBufferedWriter;
class VoMsgResourceLocator;

VOMSG_API extern const char base64table_char[65];          // the alphabet, by value
VOMSG_API extern const std::int32_t base64table_int[256];  // values by character; negative: skip it

// Decodes the next `length` bytes of `source` into the data part of `target`, replacing what it held.
// "=" never ends the decoding: what follows it continues the open group. A trailing group of one character yields
// nothing, of two one byte, of three two bytes.
// `length` is trusted: it should not exceed what `source` still holds. When it does, the first byte of the last
// 4096-byte chunk counts once for each byte that is missing, at most as many as were there and 4096 more.
// kVoWriteFailed: `target` gave no writer or refused a byte; what was written until then stays. kVoBadArgument: null.
VOMSG_API VoErrorCode voDecodeBase64(VoMsgResourceLocator* target, VoMsgBufferedReader* source, long length);
// Encodes all of `source` in lines of 76 characters, each ended by CR LF, the last one too, and flushes.
// kVoReadFailed: no reader; kVoWriteFailed: a write failed; kVoBadArgument: null.
VOMSG_API VoErrorCode voEncodeBase64(VoMsgBufferedWriter* target, const VoMsgResourceLocator* source);
// The same for C strings, without line breaks. The result is the caller's, for free(): null for null and on
// failure, "" when nothing comes out. A decoded NUL ends it.
VOMSG_API char* voDecodeBase64(const char* text);
VOMSG_API char* voEncodeBase64(const char* text);

namespace vomsg::detail {
class PieceSink;
// Decodes `length` bytes of `source` into `target` and flushes.
VoErrorCode decodeBase64(VoMsgBufferedWriter& target, VoMsgBufferedReader& source, std::uint64_t length);
// The same into `sink`. False when it refuses a piece.
bool decodeBase64To(PieceSink& sink, VoMsgBufferedReader& source, std::uint64_t length);
// The number of bytes that decodeBase64() would write. Reads and consumes alike, and stores nothing.
std::uint64_t countBase64(VoMsgBufferedReader& source, std::uint64_t length);
// Encodes the rest of `source` and flushes; without line breaks as one unbroken run.
VoErrorCode encodeBase64(VoMsgBufferedWriter& target, VoMsgBufferedReader& source, bool lineBreaks);
}  // namespace vomsg::detail
