// Putting a disclaimer into the text of a part: decoded, converted, inserted and encoded as one unit.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "vomsg/edit/VoMsgDisclaimerText.h"
#include "vomsg/edit/VoMsgTextEncoding.h"
#include "vomsg/edit/VoMsgTextKind.h"
#include "vomsg/entity/VoMsgRfc822Entity.h"

namespace vomsg::detail {

class EditUndos;

struct TextChange {
  VoMsgRfc822Entity* entity = nullptr;
  EncodedText content;
  std::string charset;  // "": what the part declares stays
};

// What the text of a part is in: as declared, by its own HTML too, else as recognised.
std::string charsetOfText(VoMsgRfc822Entity& entity);

// The new content of `entity`, which stays as it is. kVoDisclaimerRefused: encoded in a way that cannot be edited, or
// without a place for it; kVoConversionFailed: neither its charset nor `preferCharset` can say both.
VoErrorCode prepareText(VoMsgRfc822Entity& entity, const TextKind& kind, const Disclaimer& disclaimer,
                        const char* preferCharset, const BoundaryTable& delimiters, TextChange& out);

// Installs all changes or none. `message` is what the parts belong to. `undos` watches since the changes were prepared.
VoErrorCode installTexts(VoMsgRfc822Entity& message, const std::vector<TextChange>& changes, EditUndos& undos);

}  // namespace vomsg::detail
