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

// Decodes every encoded word of `value`, converts it to `charset` (null: "us-ascii") and removes folds. Malformed words
// and unknown charsets are no errors: their text or bytes pass through. The rest of the value is never converted.
// A language behind the charset's name, as in "=?iso-8859-1*de?Q?...?=" (RFC 2231, section 5), is passed over.
// kVoBadArgument: `value` or `out` is null; kVoNoMemory: `*out` is null.
VOMSG_API VoErrorCode voDecodeHeaderValue(const char* charset, const char* value, char** out);
// Decodes without converting, and drops the blanks behind each encoded word. `charsetOut` becomes the charset of the
// last encoded word, even of one that is malformed behind its charset, and null when there was none; it must hold null
// or an earlier report, which is freed. kVoBadArgument: `value` is null, and nothing is changed.
VOMSG_API VoErrorCode voDecodeHeaderValue(char*& charsetOut, char*& out, const char* value);
// Encodes the whole value as one word, never split. In "us-ascii" the value stays as it is unless `force` is set.
// kVoBadArgument: `value` or `out` is null; kVoEncodeFailed: `charset` holds what a word can not hold (blanks,
// control characters, "?"), or base64 failed.
VOMSG_API VoErrorCode voEncodeHeaderValue(const char* charset, const char* value, char** out, signed char force);
VOMSG_API void voFreeHeaderValue(char* value);  // null is allowed

namespace vomsg::detail {
// The charsets named by the encoded words of `value`, malformed ones included, differ from one another. Such a value
// must not be decoded and encoded anew as a whole, for it would be in no single charset.
bool hasMixedCharsets(const char* value);
}  // namespace vomsg::detail
