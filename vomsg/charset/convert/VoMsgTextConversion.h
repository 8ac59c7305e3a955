// The library's own door to conversion: whoever converts comes through here, and none of them sees a converter. Texts
// come in pieces, so that a conversion holds no more than a piece of them.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "vomsg/charset/convert/VoMsgTextStage.h"
#include "vomsg/encoding/VoMsgUtf16Coder.h"

namespace vomsg::detail {

// UTF-16 or UTF-32 in pieces. A byte order mark decides over the name and is dropped; big-endian is assumed where
// neither says (RFC 2781, section 4.3). What is no character becomes U+FFFD, NULs stay.
class WideReader final : public TextStage {
 public:
  // `charset` is a name that voIsUnicode knows.
  explicit WideReader(std::string_view charset);
  VoErrorCode convert(std::string_view piece, bool last, std::string& utf8) override;

 private:
  bool dropMark(bool last);

  const std::size_t mWidth;
  bool mIsLittleEndian;
  bool mIsAtStart = true;
  SurrogateJoiner mJoiner;
  std::string mRest;
};

// What becomes of characters that the target lacks.
enum class Loss : bool { refused, replaced };  // by "?"

// A text of a body. NULs are kept, as line ends are: what lies between two is converted as a text of its own. UTF-16
// and UTF-32, which the factory does not serve, are read, never written: mail text is lines of octets (RFC 2046,
// section 4.1.2).
class TextConversion final : public TextStage {
 public:
  // Target first, as everywhere at the factory.
  TextConversion(const char* to, const char* from, Loss loss);
  ~TextConversion() override;
  // False: nobody converts the pair.
  bool isOpen() const { return mpWide || mpStage; }
  // Appends what the next piece becomes; `last` ends the text. A code: a loss, or a text that cannot be read.
  VoErrorCode convert(std::string_view piece, bool last, std::string& out) override;

 private:
  VoErrorCode convertBytes(std::string_view piece, bool last, std::string& out);

  std::unique_ptr<TextStage> mpWide;
  std::unique_ptr<TextStage> mpStage;  // null: what mpWide gives is the result
  std::string mDecoded;
};

// A whole text at once, where it is at hand.
bool convertWholeText(const char* to, const char* from, Loss loss, std::string_view text, std::string& out);

enum class Conversion : std::uint8_t {
  done,
  missing,  // no converter handles the pair, or a name is null
  failed    // `out` holds what the converter left there
};

// A short text up to its first NUL, a name or a header value: "?" for what the target lacks, and as the factory has it,
// which does not read UTF-16. `out` is replaced; `code` (may be null) is the converter's where there is one.
Conversion convertText(std::string& out, const char* to, const char* from, std::string_view text,
                       VoErrorCode* code = nullptr);

}  // namespace vomsg::detail
