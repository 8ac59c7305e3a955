// The disclaimer as text, and the conversions that editing trusts: each one either loses nothing or fails.
#pragma once

#include <string>
#include <string_view>

#include "vomsg/foundation/VoErrorCode.h"

class VoMsgResourceLocator;

namespace vomsg::detail {

// The text of `bytes` in UTF-8. False when some of it is invalid in `charset`, or nobody can convert it.
bool decodeExactly(std::string_view bytes, const char* charset, std::string& utf8);
// The other way. False when decoding the result would not give the same text again.
bool encodeExactly(std::string_view utf8, const char* charset, std::string& bytes);

// Whether bytes below 0x80 are ASCII characters wherever they stand, so that text can be edited without decoding it.
bool isPlainSuperset(const char* charset);

bool endsLine(std::string_view text);

struct Disclaimer {
  std::string raw;      // as it was handed over
  std::string charset;  // what that is in
  std::string utf8;     // lines ended by CR LF, without byte order mark; the last line may be open
  bool isDecoded = false;
  bool atTop = false;
};
// kVoDisclaimerCopyFailed: the resource cannot be read. What cannot be decoded is told by `isDecoded`.
VoErrorCode loadDisclaimer(const VoMsgResourceLocator& resource, const char* charset, bool atTop, Disclaimer& out);

}  // namespace vomsg::detail
