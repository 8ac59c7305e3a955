// Takes as much of a UTF-16 text as fits into a budget of bytes in a charset.
#pragma once

#include <string>

#include "vomsg/foundation/VoErrorCode.h"
#include "vomsg/foundation/VoMsgExport.h"

// Appends characters of `src` from the unit `pos` on to `out` and moves `pos` behind them. U+0020 to U+007E cost 1,
// all others `width`, the most bytes a character takes; the take ends when no more than `width` is left of `budget`
// or the text ends. A surrogate without its partner never ends it.
// kVoBadArgument: `budget`, read as a signed number, is less than `width`, or `pos` is negative.
VOMSG_API VoErrorCode voGetnUnicodeString(const std::u16string& src, int& pos, unsigned int budget, unsigned int width,
                                          std::u16string& out);
