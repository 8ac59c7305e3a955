// BinHex 4.0, the form in which Macintosh files travel through mail ("mac-binhex40"): a marker line, a colon,
// six-bit characters that carry run-length coded bytes (a header, the data fork and the resource fork, each with a
// CRC-16), and a closing colon.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "vomsg/foundation/VoErrorCode.h"
#include "vomsg/foundation/VoMsgExport.h"

class VoMsgBufferedReader;
class VoMsgBufferedWriter;
class VoMsgResourceLocator;

// Decodes the first BinHex file in the rest of `source` into `target`: resource name ("noname" when empty, charset
// "us-ascii"; it is the sender's and may hold anything), file type, creator, Finder flags, data part and resource
// fork. There is no length: pass a reader whose data ends where the encoded part ends. An empty resource fork opens
// no stream, so that what `target` held there stays; one that `target` has no place for is read over.
// kVoDecodeFailed: no marker line, no colon, the data ends early, a CRC is wrong, or a fork claims more bytes than
// the rest of the data could ever yield. Up to and including the header's CRC, `target` is then as it was; after a
// failure in a fork its content is undefined. kVoWriteFailed: no writer, or a write failed. kVoBadArgument: null.
VOMSG_API VoErrorCode voDecodeBinHex(VoMsgResourceLocator* target, VoMsgBufferedReader* source);

// Encodes `source` with its resource fork, named after it ("noname" without a name; "us-ascii", at most 63 characters),
// in lines of 64 characters ended by CR LF. kVoReadFailed: no reader, or a fork is shorter than its size;
// kVoWriteFailed: a write failed; kVoBadArgument: null.
// 254 equal bytes in a row read back as 255, and fail their CRC: the coder closes such a run with the largest count, as
// the readers of what it writes have always been given it. Send such content in another encoding.
VOMSG_API VoErrorCode voEncodeBinHex(VoMsgBufferedWriter* target, const VoMsgResourceLocator* source);

namespace vomsg::detail {
class PieceSink;
// What the line before the encoded data begins with, in any case of letters.
inline constexpr std::string_view kBinHexMarker = "(This file must be converted with BinHex 4.0)";
// The same, from the next `length` bytes of `source`.
VoErrorCode decodeBinHex(VoMsgResourceLocator& target, VoMsgBufferedReader& source, std::uint64_t length);
// The data fork alone, into `sink`. kVoWriteFailed: it refused a piece.
VoErrorCode decodeBinHexTo(PieceSink& sink, VoMsgBufferedReader& source, std::uint64_t length);
struct BinHexSummary {
  std::string name;
  std::uint32_t dataSize = 0;  // of the data fork
};
// What the header in the next `length` bytes says. Writes nothing.
VoErrorCode surveyBinHex(VoMsgBufferedReader& source, std::uint64_t length, BinHexSummary& summary);
// The size of the data fork, for whoever makes room for it: run lengths let a short text become a hundred times as
// long. 0 where there is none. `source` stays where it is.
std::uint32_t peekBinHexSize(VoMsgBufferedReader& source, std::uint64_t length);
// voEncodeBinHex() under another name than the resource's; null leaves that. `isExact`, unless null, receives whether
// decoding gives `source` back: false after 254 equal bytes in a row.
VoErrorCode encodeBinHex(VoMsgBufferedWriter& target, const VoMsgResourceLocator& source, const char* name,
                         bool* isExact = nullptr);
}  // namespace vomsg::detail
