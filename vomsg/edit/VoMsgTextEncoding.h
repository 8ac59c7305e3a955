// Transfer-encoding a text so that it decodes to the same bytes, which is checked.
#pragma once

#include <string>
#include <string_view>

#include "vomsg/foundation/VoMsgBoundaryTable.h"

class VoMsgEntity;

namespace vomsg::detail {

// What the place of a text demands.
struct TransferRules {
  const char* declared;             // the encoding that the part names, null for none
  std::string_view lineEnd;         // in the message around it, CR LF or LF
  const BoundaryTable& delimiters;  // what no line may look like, or the part ends there
};

// The boundaries of all multiparts of the tree that `entity` is in.
BoundaryTable delimitersAround(VoMsgEntity& entity);

// Encoded content and what the part has to declare for it.
struct EncodedText {
  std::string bytes;
  const char* encoding = nullptr;  // null: the part's own stays
};

bool isIdentityEncoding(const char* encoding);  // null is one

// An identity encoding is kept while it can hold the text: what is outside of ASCII needs 8bit, no line may pass 998
// bytes or look like a delimiter. False when no encoding gives the same text back.
bool encodeForTransfer(std::string_view text, const TransferRules& rules, EncodedText& out);

}  // namespace vomsg::detail
