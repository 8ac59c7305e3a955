#include "vomsg/encoding/VoUtf8.h"

namespace {

constexpr unsigned kReplacement = 0xFFFD;

unsigned char trail(unsigned bits) { return static_cast<unsigned char>(0x80u | (bits & 0x3Fu)); }

}  // namespace

int voUcs2ToUtf8(unsigned int code, unsigned char* out) {
  if (code < 0x80u) {
    out[0] = static_cast<unsigned char>(code);
    return 1;
  }
  if (code < 0x800u) {
    out[0] = static_cast<unsigned char>(0xC0u | (code >> 6));
    out[1] = trail(code);
    return 2;
  }
  if (code <= 0xFFFFu) {
    out[0] = static_cast<unsigned char>(0xE0u | (code >> 12));
    out[1] = trail(code >> 6);
    out[2] = trail(code);
    return 3;
  }
  const unsigned payload = ((code >> 16 & 0x3FFu) << 10) | (code & 0x3FFu);
  out[0] = static_cast<unsigned char>(0xF0u | (payload >> 18));
  out[1] = trail(payload >> 12);
  out[2] = trail(payload >> 6);
  out[3] = trail(payload);
  return 4;
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
      out = kReplacement;
      return i;
    }
    value = value << 6 | (in[i] & 0x3Fu);
  }
  out = length < 4 ? value : 0xD800DC00u | (value & 0xFFC00u) << 6 | (value & 0x3FFu);
  return length;
}
