// Uuencode, as the transfer encoding of a body ("uuencode", "x-uuencode") and as the form in which attachments stand
// in plain text: a line "begin MODE NAME", data lines, a line for zero bytes, and "end".
//
// A data line is one character for the number of bytes it carries and four characters for each three bytes. A
// character c stands for (c - 32) & 63; the grave accent and "~" stand for 0.
//
// File names come from the message as they stand: a name may hold path separators, control characters, anything but
// a line end.
#pragma once

#include <cstdint>
#include <string_view>

#include "vomsg/foundation/VoErrorCode.h"
#include "vomsg/foundation/VoMsgCString.h"
#include "vomsg/foundation/VoMsgExport.h"

class VoMsgBufferedReader;
class VoMsgBufferedWriter;
class VoMsgResourceLocator;

// True when `line` is a valid "begin" line: "begin", a space, octal digits or nothing, a space, the name up to the
// line end. `name` (may be null) receives a copy, for free(); `mode` (may be null) always receives -1. False also
// when there is no memory for the name.
VOMSG_API bool voGetUUEncodeFileName(const char* line, char** name, long* mode);

// True when `line` is a data line, or the line for zero bytes: the length character fits the number of characters
// (which must make whole groups under kVoOptionStrictUUEncode) and these lie in the range of the encoding. The last
// one is not looked at, because gateways that cut trailing blanks have replaced it by anything.
VOMSG_API bool voIsValidUUEncodeString(const char* line);

// Decodes the first block within the next `length` bytes of `source` into the data part of `target`, replacing what
// it held, and names `target` after the "begin" line, or "noname" when there was none (charset "us-ascii"). Lines
// that are neither data nor the end are skipped; a line that runs past `length` is not looked at. No block at all, or
// a "begin" line that is not valid, is success without data. At most `length` bytes of `source` are used.
// kVoWriteFailed: no writer, or a write failed; kVoBadArgument: null.
VOMSG_API VoErrorCode voDecodeUUEncode(VoMsgResourceLocator* target, VoMsgBufferedReader* source, long length);

// Encodes all of `source` as one block of mode 666, named after the resource, or "noname". Lines end in CR LF.
// kVoReadFailed: no reader; kVoWriteFailed: a write failed; kVoBadArgument: null.
VOMSG_API VoErrorCode voEncodeUUEncode(VoMsgBufferedWriter* target, const VoMsgResourceLocator* source);

// The same two from stream to stream; both flush `target`. `*name`, unless `name` is null, becomes a copy of the name
// in the "begin" line, for free(), or null when there was none. A null `name` is written as "unknown"; one that is
// written ends at its first line end. False when a write fails, or for a null stream.
VOMSG_API bool _decodeUUEncode(VoMsgBufferedWriter* target, VoMsgBufferedReader* source, long length, char** name);
VOMSG_API bool _encodeUUEncode(VoMsgBufferedWriter* target, VoMsgBufferedReader* source, const char* name);

namespace vomsg::detail {
// The two decoders without their log lines.
bool decodeUUEncode(VoMsgBufferedWriter& target, VoMsgBufferedReader& source, std::uint64_t length, CString& name);
VoErrorCode decodeUUEncode(VoMsgResourceLocator& target, VoMsgBufferedReader& source, std::uint64_t length);
// voEncodeUUEncode() under another name than the resource's; null leaves that.
VoErrorCode encodeUUEncode(VoMsgBufferedWriter& target, const VoMsgResourceLocator& source, const char* name);

// The two tests for lines that are no C strings. `line` may end in its terminator.
bool isUUEncodeBegin(std::string_view line, std::string_view& name);
bool isUUEncodeData(std::string_view line);
// True when `line` passes isUUEncodeData() and says that it carries nothing: the line before "end".
bool isUUEncodeZeroLine(std::string_view line);
}  // namespace vomsg::detail
