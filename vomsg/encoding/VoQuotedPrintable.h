// Quoted-printable (RFC 2045, section 6.7), as the transfer encoding of a body and as a codec for short texts.
#pragma once

#include <cstdint>
#include <string_view>

#include "vomsg/foundation/VoErrorCode.h"
#include "vomsg/foundation/VoMsgExport.h"

class VoMsgBufferedReader;
class VoMsgBufferedWriter;
class VoMsgResourceLocator;

// Decodes the next `length` bytes of `source` into the data part of `target`, replacing what it held.
// "=" that no two hex digits follow is dropped, and a soft line break goes on from there to the next line end: blanks
// vanish, other characters stay. A soft break that ends in a bare LF counts that LF twice, so that decoding ends one
// byte earlier for each; two hex digits behind the end of the length still belong to their "=".
// `length` is trusted: it should not exceed what `source` still holds. When it does, a byte 0xFF stands for each one
// missing, at most for as many as were there and 4096 more. kVoWriteFailed: no writer, or a write failed;
// kVoBadArgument: null.
VOMSG_API VoErrorCode voDecodeQuotedPrintable(VoMsgResourceLocator* target, VoMsgBufferedReader* source, long length);
// Encodes all of `source` as text, with soft line breaks. LF and CR LF are line ends and come out as CR LF, a lone CR
// is "=0D"; what is written ends in CR LF, whether `source` did or not: bytes that are no text do not survive.
// kVoReadFailed: no reader; kVoWriteFailed: a write failed; kVoBadArgument: null.
VOMSG_API VoErrorCode voEncodeQuotedPrintable(VoMsgBufferedWriter* target, const VoMsgResourceLocator* source);
// The same for C strings; the encoder writes no soft line breaks. The result is the caller's, for free(): null for
// null and on failure, "" when nothing comes out. A decoded NUL ends it.
VOMSG_API char* voDecodeQuotedPrintable(const char* text);
VOMSG_API char* voEncodeQuotedPrintable(const char* text);

namespace vomsg::detail {
class PieceSink;
// Decodes `length` bytes of `source` into `target` and flushes. False when a write fails.
bool decodeQuotedPrintable(VoMsgBufferedWriter& target, VoMsgBufferedReader& source, std::uint64_t length);
// The same into `sink`; with `everyByte` no byte of the length is left out, however soft breaks end. False when the
// sink refuses a piece.
bool decodeQuotedPrintableTo(PieceSink& sink, VoMsgBufferedReader& source, std::uint64_t length, bool everyByte);
// The number of bytes that decodeQuotedPrintable() would write. Reads and consumes alike, and stores nothing.
std::uint64_t countQuotedPrintable(VoMsgBufferedReader& source, std::uint64_t length);
// Encodes the rest of `source` and flushes. False when a write fails.
bool encodeQuotedPrintable(VoMsgBufferedWriter& target, VoMsgBufferedReader& source, bool softBreaks);
// Encodes the rest of `source` such that decoding gives the same bytes, and flushes. `lineEnd` is what ends the lines
// of a text, CR LF or LF as in the message around it, and empty for what is no text; any other CR or LF comes out as
// "=0D" or "=0A". The last line stays as open as it is. False when a write fails.
bool encodeQuotedPrintableExactly(VoMsgBufferedWriter& target, VoMsgBufferedReader& source, std::string_view lineEnd);
}  // namespace vomsg::detail
