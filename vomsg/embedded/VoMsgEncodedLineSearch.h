// Whether a text in quoted-printable may hold an encoded block, told from the encoded bytes: nearly no text does, and
// looking at the starts of lines costs a tenth of decoding them.
#pragma once

#include <cstdint>
#include <string_view>

class VoMsgBufferedReader;

namespace vomsg::detail {

// Looks through the next `length` bytes of `text`. False: no line of the decoded text begins like a block. True: one
// may; only decoding tells.
bool mayBeginBlock(VoMsgBufferedReader& text, std::uint64_t length);

// The first position in [begin, end - 1) that mayBeginBlock() has to look at more closely, or `end`: a line end before
// what could become the first character of a block, or an encoded line end.
const char* findEncodedStart(const char* begin, const char* end);
const char* findEncodedStartPortable(const char* begin, const char* end);

}  // namespace vomsg::detail
