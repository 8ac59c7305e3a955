// The token tables of structured header values (RFC 822, section 3.3; RFC 2045, section 5.1): one table for each
// of VoMsgTokenizer's states structured, quoted, comment and parameterValue, in that order.
//
// An entry reads {id, text, bytes compared, next state}: {commentOpen, "(", 1, comment} says that a "(" is the
// token commentOpen and that what follows it is a comment. CR and LF compare two bytes on purpose: with its NUL, a
// line end is a token only where the value ends; inside, it is text.
#pragma once

#include "vomsg/foundation/VoMsgTokenTableSet.h"

namespace vomsg::detail {

extern const VoMsgTokenTableSet kDefaultTokens;

}  // namespace vomsg::detail
