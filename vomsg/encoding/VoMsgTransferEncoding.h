// The transfer encodings of bodies (RFC 2045, section 6) and their codecs.
#pragma once

#include <cstdint>
#include <string_view>

#include "vomsg/foundation/VoErrorCode.h"

class VoMsgBufferedReader;
class VoMsgBufferedWriter;
class VoMsgResourceLocator;

namespace vomsg::detail {

enum class TransferEncoding : std::uint8_t { identity, base64, quotedPrintable, uuencode, binHex };

// What a body declared as `name` is encoded with. Null and unknown names pass the bytes through.
TransferEncoding transferEncodingOf(const char* name);

// Whether content can be set with that encoding; null leaves the entity's own.
bool isKnownEncoding(const char* name);

// The room that a resource for the next `length` bytes of `source`, decoded, should expect.
std::uint32_t decodedRoom(TransferEncoding encoding, VoMsgBufferedReader& source, std::uint32_t length);
// Decodes the next `length` bytes of `source` into `target`.
VoErrorCode decodeTransfer(TransferEncoding encoding, VoMsgResourceLocator& target, VoMsgBufferedReader& source,
                           std::uint32_t length);
// The number of bytes that would give.
VoErrorCode countDecoded(TransferEncoding encoding, VoMsgBufferedReader& source, std::uint32_t length, unsigned& size);
// Encodes all of `source`, such that decoding gives exactly the same bytes wherever the encoding can say them. Where
// the encoding carries a file name, it is `name`, or that of `source` when `name` is null. `lineEnd` is what ends a
// line of a text, and stays a line end in quoted-printable; empty for content that is no text. `wireEnd`, CR LF or LF,
// ends the lines that the encoding makes.
VoErrorCode encodeTransfer(TransferEncoding encoding, VoMsgBufferedWriter& target, const VoMsgResourceLocator& source,
                           const char* name = nullptr, std::string_view lineEnd = "\r\n",
                           std::string_view wireEnd = "\r\n");

}  // namespace vomsg::detail
