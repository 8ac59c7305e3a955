// Putting a disclaimer into the text of a part: decoded, converted, inserted and encoded as one unit.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "vomsg/edit/VoMsgDisclaimerText.h"
#include "vomsg/edit/VoMsgTextKind.h"
#include "vomsg/entity/VoMsgRfc822Entity.h"

namespace vomsg::detail {

// Encoded content and what the part has to declare for it.
struct EncodedText {
  std::string bytes;
  const char* encoding = nullptr;  // null: the part's own stays
};
// `declared` is the encoding of the part, null for none. An identity encoding is kept while it can hold the text: what
// is outside of ASCII needs 8bit, and no line may pass 998 bytes. False when no encoding gives the same text back.
bool encodeText(std::string_view text, const char* declared, EncodedText& out);

struct TextChange {
  VoMsgRfc822Entity* entity = nullptr;
  EncodedText content;
  std::string charset;  // "": what the part declares stays
};

// The new content of `entity`, which stays as it is. kVoDisclaimerRefused: encrypted, encoded in a way that cannot be
// edited, or without a place for it; kVoConversionFailed: neither its charset nor `preferCharset` can say both.
VoErrorCode prepareText(VoMsgRfc822Entity& entity, const TextKind& kind, const Disclaimer& disclaimer,
                        const char* preferCharset, TextChange& out);

// Installs all changes or none. `message` is what the parts belong to.
VoErrorCode installTexts(VoMsgRfc822Entity& message, const std::vector<TextChange>& changes);

}  // namespace vomsg::detail
