// The token tables of values that hold encoded words, =?charset?encoding?text?= (RFC 2047, section 2): one table for
// the value around the words, one for the atoms that name charset and encoding, one for the encoded text.
//
// An entry reads {id, text, bytes compared, next state}: {encodedStart, "=?", 2, wordAtom} says that "=?" begins a
// word, whose charset follows. Line ends are tokens wherever they stand, because values come folded and a word never
// crosses a fold.
//
// Atoms end at "?" alone, not at "?=": =?utf-8?Q?=41?= has a text that begins with "=". Blanks end an atom, so that a
// stray "=?" in ordinary text does not swallow the words behind it; in the encoded text they are text, because many
// mailers leave them there.
#pragma once

#include "vomsg/foundation/VoMsgTokenTableSet.h"

namespace vomsg::detail {

// State 2 is the tokenizer's own state for comments, which encoded words do not have.
enum EncodedWordState : int { wordValue = 0, wordAtom = 1, wordText = 3 };

extern const VoMsgTokenTableSet kEncodedWordTokens;

}  // namespace vomsg::detail
