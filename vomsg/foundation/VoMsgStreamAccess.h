// How the library's own parsers and writers use the streams: whole buffered stretches instead of single
// bytes, exact line lengths (a NUL hides nothing), and moves that mean the same on every kind of reader.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "vomsg/foundation/VoErrorCode.h"

class VoMsgBufferedReader;
class VoMsgBufferedWriter;
class VoMsgFileReader;

namespace vomsg::detail {

// The bytes a reader holds right now. For a memory reader that is everything up to its end.
class ReaderWindow {
 public:
  // [next byte, end of the buffer), valid until the reader moves, refills or closes.
  static std::string_view buffered(const VoMsgBufferedReader& reader);
  // Steps over `n` bytes of buffered(); n <= buffered().size().
  static void consume(VoMsgBufferedReader& reader, std::size_t n);
  // Makes buffered() non-empty when any data is left. False at the end of the data.
  static bool fill(VoMsgBufferedReader& reader);
  // Moves by `delta` when that stays inside the buffer, its end included; false, with nothing moved, otherwise.
  static bool moveWithin(VoMsgBufferedReader& reader, std::int64_t delta);
  // The descriptor of an open file; -1 when it is closed.
  static int descriptor(const VoMsgFileReader& reader);
};

class WriterAccess {
 public:
  // write(), but a large stretch goes to the target at once, past the buffer.
  static bool writeThrough(VoMsgBufferedWriter& writer, const char* data, std::uint64_t n);
  // Tells the target how much will come in all, so that it allocates once. A hint: never fails.
  static void expect(VoMsgBufferedWriter& writer, std::uint64_t total);
  // Tells the target that the next `n` bytes of `source`, or what is left there, come next. A hint, and safe for any
  // number of ranges: room still grows geometrically.
  static void expectFrom(VoMsgBufferedWriter& writer, VoMsgBufferedReader& source, std::uint64_t n);
};

// Reads one line with its terminator into `line` (replaced; its capacity is reused). `terminatorLength` is 0,
// 1 or 2. False at the end of the data.
bool readLine(VoMsgBufferedReader& reader, std::string& line, unsigned& terminatorLength);

// Steps over one line and reports its whole length instead of its bytes. False at the end of the data.
bool skipLine(VoMsgBufferedReader& reader, std::uint64_t& length, unsigned& terminatorLength);

// Moves to `offset` from the start, which may be exactly the end, on either kind of reader. Stays inside the
// buffer when it can. False when the reader refuses.
bool moveTo(VoMsgBufferedReader& reader, std::uint64_t offset);

// Copies exactly `size` bytes from `offset` of `source`, in stretches as large as the reader allows. Does not flush.
// kVoReadFailed: the range is not all there; kVoWriteFailed: a write was refused.
VoErrorCode copyRange(VoMsgBufferedReader& source, VoMsgBufferedWriter& target, std::uint64_t offset,
                      std::uint64_t size);

}  // namespace vomsg::detail
