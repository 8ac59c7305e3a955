// Quoted-printable (RFC 2045, section 6.7), as the transfer encoding of a body and as a codec for short texts.
#pragma once

#include <cstdint>

#include "vomsg/foundation/VoErrorCode.h"
#include "vomsg/foundation/VoMsgExport.h"

class VoMsgBufferedReader;
class VoMsgBufferedWriter;
class VoMsgResourceLocator;

// Decodes the next `length` bytes of `source` into the data part of `target`, replacing what it held.
// `length` is trusted: it must not exceed what `source` still holds. kVoWriteFailed: no writer, or a write failed.
VOMSG_API VoErrorCode voDecodeQuotedPrintable(VoMsgResourceLocator* target, VoMsgBufferedReader* source, long length);
// Encodes all of `source` with soft line breaks; the output always ends in CR LF. kVoReadFailed: no reader.
VOMSG_API VoErrorCode voEncodeQuotedPrintable(VoMsgBufferedWriter* target, const VoMsgResourceLocator* source);
// The same for C strings; the encoder writes no soft line breaks. The result is the caller's, for free(); null
// for null and on failure.
VOMSG_API char* voDecodeQuotedPrintable(const char* text);
VOMSG_API char* voEncodeQuotedPrintable(const char* text);

namespace vomsg::detail {
// Decodes `length` bytes of `source` into `target` and flushes. False when a write fails.
bool decodeQuotedPrintable(VoMsgBufferedWriter& target, VoMsgBufferedReader& source, std::uint64_t length);
}  // namespace vomsg::detail
