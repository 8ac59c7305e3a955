// The byte 0xFF ends the input of both directions, as the end of the data does; no charset of parameter values
// that matters here has it.
#include "vomsg/encoding/VoHexChar.h"

#include <array>
#include <memory>
#include <string_view>

#include "vomsg/encoding/VoCodecSupport.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgLogLine.h"
#include "vomsg/foundation/VoMsgResourceLocator.h"

constexpr char hextable_char[17] = "0123456789ABCDEF";
constexpr char hextable[17] = "0123456789ABCDEF";

int hexCharToInt(int character) {
  if (character >= '0' && character <= '9') return character - '0';
  if (character >= 'A' && character <= 'F') return character - 'A' + 10;
  if (character >= 'a' && character <= 'f') return character - 'a' + 10;
  return -1;
}

namespace vomsg::detail {

namespace {

constexpr int kEndOfInput = 0xFF;

constexpr std::array<bool, 256> kEscaped = [] {
  std::array<bool, 256> table{};
  for (std::size_t c = 0; c < table.size(); ++c) table[c] = c <= 0x20 || c >= 0x80;
  for (const char c : std::string_view("*'%()<>@,;:\\\"/[]?=")) table[static_cast<unsigned char>(c)] = true;
  return table;
}();

// The next byte; -1 at the end of the input.
int nextByte(ByteSource& source) {
  const int c = source.next();
  return c == kEndOfInput ? -1 : c;
}

// Two characters as the C library's strtol reads them in base 16: blanks and a sign before the digits, a prefix
// "0x", 0 for what is no number. Written out because strtol asks the host's locale what a blank is.
char escapedByte(const std::array<char, 2>& digits) {
  std::string_view rest(digits.data(), digits.size());
  while (!rest.empty() && (rest[0] == ' ' || (rest[0] >= '\t' && rest[0] <= '\r'))) rest.remove_prefix(1);
  bool negative = false;
  if (!rest.empty() && (rest[0] == '+' || rest[0] == '-')) {
    negative = rest[0] == '-';
    rest.remove_prefix(1);
  }
  int value = 0;
  for (; !rest.empty() && hexCharToInt(static_cast<unsigned char>(rest[0])) >= 0; rest.remove_prefix(1))
    value = value << 4 | hexCharToInt(static_cast<unsigned char>(rest[0]));
  return static_cast<char>(negative ? -value : value);
}

bool decodeHex(VoMsgBufferedWriter& target, VoMsgBufferedReader& reader) {
  ByteSource source(reader);
  for (int c = nextByte(source); c >= 0; c = nextByte(source)) {
    char out = static_cast<char>(c);
    if (c == '%') {
      const int first = nextByte(source), second = first < 0 ? -1 : nextByte(source);
      if (second < 0) break;
      out = escapedByte({static_cast<char>(first), static_cast<char>(second)});
    }
    if (!target.write(&out, 1)) return false;
  }
  return target.flush();
}

bool encodeHex(VoMsgBufferedWriter& target, VoMsgBufferedReader& reader) {
  ByteSource source(reader);
  for (int c = nextByte(source); c >= 0; c = nextByte(source)) {
    char out[3] = {static_cast<char>(c)};
    const bool escaped = kEscaped[static_cast<std::size_t>(c)];
    if (escaped) {
      // Bytes from 0x80 all become "%FF", which receivers of these values have come to know; only ASCII survives.
      out[0] = '%';
      out[1] = c < 0x80 ? hextable_char[c >> 4] : 'F';
      out[2] = c < 0x80 ? hextable_char[c & 15] : 'F';
    }
    if (!target.write(out, escaped ? 3 : 1)) return false;
  }
  return target.flush();
}

}  // namespace

}  // namespace vomsg::detail

using namespace vomsg::detail;

namespace {
constexpr char kLogSource[] = "VoHexChar";
}

VoErrorCode voDecodeHexChar(VoMsgResourceLocator* target, VoMsgBufferedReader* source) {
  if (!target || !source) return VO_LOGGED("", kVoBadArgument);
  return VO_LOGGED(
      "", guarded([&] {
        const std::unique_ptr<VoMsgBufferedWriter> writer(target->getOutputStream(VoMsgResourceLocator::dataPart));
        if (!writer) return kVoNoMemory;
        return decodeHex(*writer, *source) ? kVoSuccess : kVoDecodeFailed;
      }));
}

VoErrorCode voEncodeHexChar(VoMsgBufferedWriter* target, const VoMsgResourceLocator* source) {
  if (!target || !source) return VO_LOGGED("", kVoBadArgument);
  return VO_LOGGED("", guarded([&] {
                     return encodeFrom(*source, [&](auto& reader) {
                       return encodeHex(*target, reader) ? kVoSuccess : kVoEncodeFailed;
                     });
                   }));
}

VoErrorCode voDecodeHexChar(VoMsgBufferedWriter* target, VoMsgBufferedReader* source) {
  if (!target || !source) return VO_LOGGED("", kVoBadArgument);
  return VO_LOGGED("", guarded([&] { return decodeHex(*target, *source) ? kVoSuccess : kVoWriteFailed; }));
}

VoErrorCode voEncodeHexChar(VoMsgBufferedWriter* target, VoMsgBufferedReader* source) {
  if (!target || !source) return VO_LOGGED("", kVoBadArgument);
  return VO_LOGGED("", guarded([&] { return encodeHex(*target, *source) ? kVoSuccess : kVoWriteFailed; }));
}
