// From a caller's text to what stands in a header: converted, encoded (RFC 2047) and, when it is long, in several
// encoded words. No result holds a line break that is not a fold.
#pragma once

#include <string>
#include <string_view>

#include "vomsg/foundation/VoErrorCode.h"

namespace vomsg::detail {

// `value` as one word, or as it is in "us-ascii". `srcCharset` may be null ("us-ascii"), `dstCharset` too (stays).
// kVoBadArgument: the name of the charset cannot stand in an encoded word; kVoConversionFailed; kVoEncodeFailed.
VoErrorCode encodeText(std::string& out, std::string_view value, const char* srcCharset, const char* dstCharset);

// The same for the value of the field `name`, divided when it is too long for its line.
VoErrorCode encodeFieldValue(std::string& out, std::string_view name, std::string_view value, const char* srcCharset,
                             const char* dstCharset);

// The bytes of a value of field name length `nameLength` that need no division, and the room of the first piece.
// A null `dstCharset` is the source's. The judge size may be negative.
long long judgeSize(std::size_t nameLength, const char* srcCharset, const char* dstCharset);
unsigned divideSize(std::size_t nameLength, const char* srcCharset);

}  // namespace vomsg::detail
