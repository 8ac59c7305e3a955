#include "vomsg/encoding/VoUtf8.h"

#include "vomsg/encoding/VoMsgUtf8Coder.h"

using vomsg::detail::putUtf8;
using vomsg::detail::utf8Length;

int voUcs2ToUtf8(unsigned int code, unsigned char* out) {
  const bool isPair = code > 0xFFFFu;
  const unsigned value = isPair ? (code >> 16 & 0x3FFu) << 10 | (code & 0x3FFu) : code;
  return static_cast<int>(putUtf8(out, value, isPair ? 4 : utf8Length(value)) - out);
}

int voUtf8ToUcs2(const unsigned char* in, unsigned int& out) {
  const unsigned lead = in[0];
  if (lead < 0x80u) {
    out = lead;
    return 1;
  }
  const int length = lead < 0xE0u ? 2 : lead < 0xF0u ? 3 : 4;
  unsigned value = lead & (length == 2 ? 0x1Fu : length == 3 ? 0x0Fu : 0x03u);
  for (int i = 1; i < length; ++i) {
    if (in[i] == 0) {
      out = vomsg::detail::kReplacementCharacter;
      return i;
    }
    value = value << 6 | (in[i] & 0x3Fu);
  }
  out = length < 4 ? value : 0xD800DC00u | (value & 0xFFC00u) << 6 | (value & 0x3FFu);
  return length;
}
