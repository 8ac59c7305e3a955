// Encoded words in header values (RFC 2047): decoding whole values, encoding one word.
// Strings handed out are malloc'd and go back to voFreeHeaderValue.
#pragma once

#include "vomsg/foundation/VoErrorCode.h"
#include "vomsg/foundation/VoMsgExport.h"

enum VoMsgRfc2047EncodeType_e : int { kVoEncodeB = 1, kVoEncodeQ = 2 };

// The value of a hex digit of either case, else -1.
VOMSG_API int voRfc2047HexCharToInt(unsigned char character);
// The Q transform of one word's text; a new string, null for null.
VOMSG_API char* voRfc2047DecodeQuotedPrintable(const char* text);
VOMSG_API char* voRfc2047EncodeQuotedPrintable(const char* text);

// Decodes every encoded word of `value` and converts it to `charset` (null: "us-ascii"). Malformed words and
// unknown charsets are no errors: their text or bytes pass through. kVoBadArgument: `value` or `out` is null;
// kVoNoMemory: `*out` is null.
VOMSG_API VoErrorCode voDecodeHeaderValue(const char* charset, const char* value, char** out);
// Decodes without converting. `charsetOut` becomes the charset of the last encoded word, null when there was
// none; an earlier value of it is freed. kVoBadArgument: `value` is null.
VOMSG_API VoErrorCode voDecodeHeaderValue(char*& charsetOut, char*& out, const char* value);
// Encodes the whole value as one word, never split. In "us-ascii" the value stays as it is unless `force` is set.
// kVoBadArgument: `value` is null; kVoEncodeFailed.
VOMSG_API VoErrorCode voEncodeHeaderValue(const char* charset, const char* value, char** out, signed char force);
VOMSG_API void voFreeHeaderValue(char* value);  // null is allowed

namespace vomsg::detail {
// The charsets named by the encoded words of `value` differ from one another.
bool hasMixedCharsets(const char* value);
}  // namespace vomsg::detail
