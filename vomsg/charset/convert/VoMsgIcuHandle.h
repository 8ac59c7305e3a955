// The one place where names reach ICU. What a name from mail may do there is decided here. Opening a converter costs as
// much as converting a page of text, so what is given back waits, in its initial state, for the next who needs it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "vomsg/charset/convert/VoMsgReplacement.h"

namespace vomsg::detail {

// What one of ICU's converters does with what it cannot convert.
struct IcuSetup {
  static constexpr std::int16_t kDefault = -1, kStop = -2;

  std::int16_t invalid = kDefault;  // invalid input becomes U+FFFD, the unit given here, or ends the conversion
  // What the target cannot say becomes its own substitution character, the byte given here (where the target has
  // characters of one byte), or ends the conversion.
  std::int16_t unknown = kDefault;

  bool operator==(const IcuSetup& other) const { return invalid == other.invalid && unknown == other.unknown; }
};

inline std::int16_t icuRuleOf(Replacement replacement) {
  return replacement.allowed ? static_cast<std::int16_t>(static_cast<unsigned char>(replacement.byte))
                             : IcuSetup::kStop;
}

class IcuConverter;
struct IcuReturn {
  void operator()(IcuConverter* converter) const noexcept;
};
using IcuHandle = std::unique_ptr<IcuConverter, IcuReturn>;

// A converter under ICU's name for `name`, taken as it stands; null when ICU has none. Null, "" (ICU's own default
// charset), and names that hold "/", "\" or control characters never reach ICU, which looks for unknown names among
// files. Best-fit mappings from Unicode are off.
IcuHandle openIcu(const char* name, IcuSetup setup = {}) noexcept;
// Closes what waits; from now on nothing does.
void closeIdleIcu() noexcept;

// Back to the state of a text's beginning.
void resetIcu(IcuConverter& converter) noexcept;
IcuSetup setupOf(const IcuConverter& converter) noexcept;

// The most bytes that one UTF-16 unit takes.
int maxBytesPerChar(IcuConverter& converter) noexcept;
bool isIcuUtf8(IcuConverter& converter) noexcept;

// One call of ICU, which fills the room it is given and cuts what it has read off its input. A text ends with the call
// that has `last` set and comes back as done.
struct IcuStep {
  enum State : std::uint8_t { done, more, failed } state;
  std::size_t count;  // written
};
// What is on its way between two charsets.
struct IcuPivot {
  char16_t units[4096];
  char16_t* source = units;
  char16_t* target = units;
};
IcuStep decodeStep(IcuConverter& from, std::string_view& bytes, bool last, char16_t* to, std::size_t room);
IcuStep encodeStep(IcuConverter& to, std::u16string_view& units, bool last, char* out, std::size_t room);
IcuStep transcodeStep(IcuConverter& from, IcuConverter& to, IcuPivot& pivot, std::string_view& bytes, bool last,
                      char* out, std::size_t room);

// Appends the text of `bytes` to `text`; false when ICU fails.
bool decodeWithIcu(IcuConverter& converter, std::string_view bytes, std::u16string& text);
// Appends the bytes of `text`, complete with the return to the initial state; false at a character that has none.
bool encodeWithIcu(IcuConverter& converter, std::u16string_view text, std::string& bytes);

}  // namespace vomsg::detail
