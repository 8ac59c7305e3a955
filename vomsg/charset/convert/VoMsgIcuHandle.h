// The one place where names reach ICU. What a name from mail may do there is decided here.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "vomsg/charset/convert/VoMsgReplacement.h"
#include "vomsg/foundation/VoErrorCode.h"

struct UConverter;

namespace vomsg::detail {

struct IcuCloser {
  void operator()(UConverter* converter) const noexcept;
};
using IcuHandle = std::unique_ptr<UConverter, IcuCloser>;

// A converter under ICU's name for `name`, taken as it stands; null when ICU has none. Null, "" (ICU's own default
// charset), and names that hold "/", "\" or control characters never reach ICU, which looks for unknown names among
// files. Invalid input decodes to U+FFFD, and what the target cannot say becomes its substitution character.
// Best-fit mappings from Unicode are off.
IcuHandle openIcu(const char* name) noexcept;

// From now on what the target cannot say becomes `replaceChar`, or the target's own substitution character when it has
// no one-byte characters.
void substituteInIcu(UConverter& converter, char replaceChar) noexcept;
// From now on what the target cannot say ends the conversion.
void stopInIcu(UConverter& converter) noexcept;

// From now on invalid input becomes `replaceChar`, or ends the conversion.
void replaceInvalidInIcu(UConverter& converter, char replaceChar) noexcept;
void stopAtInvalidInIcu(UConverter& converter) noexcept;

// The most bytes that one UTF-16 unit takes.
int maxBytesPerChar(const UConverter& converter) noexcept;

// Appends the text of `bytes` to `text`; false when ICU fails.
bool decodeWithIcu(UConverter& converter, std::string_view bytes, std::u16string& text);
// Appends the bytes of `text`, complete with the return to the initial state; false at a character that has none.
bool encodeWithIcu(UConverter& converter, std::u16string_view text, std::string& bytes);
// Both in one, in pieces, so that no more memory is needed than `result` takes, which ends before the first NUL. As if
// everything were decoded first and encoded then: kVoConverterMissing when decoding fails anywhere, else
// kVoConversionFailed when encoding fails, behind a NUL too. `adjust` may change units in between;
// what it makes kNoCharacter no target can say.
inline constexpr char16_t kNoCharacter = 0xDC00;  // half of a surrogate pair
using AdjustUnits = void (*)(char16_t* units, std::size_t count);
VoErrorCode transcodeWithIcu(UConverter& from, UConverter& to, std::string_view bytes, std::string& result,
                             AdjustUnits adjust = nullptr);

// Puts `to` for `from`, in a form that compilers turn into vector code: it runs over all of a text.
inline void replaceUnits(char16_t* units, std::size_t count, char16_t from, char16_t to) noexcept {
  for (std::size_t i = 0; i < count; ++i) units[i] = units[i] == from ? to : units[i];
}

// The same between two charsets by name, under one rule for what is invalid in the one and what is unknown to the
// other. kVoConversionFailed: there is such a character and no replacement is allowed.
VoErrorCode rewriteWithIcu(const char* to, const char* from, std::string_view bytes, Replacement replacement,
                           std::string& result, AdjustUnits adjust = nullptr);

}  // namespace vomsg::detail
