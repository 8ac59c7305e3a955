#include "vomsg/encoding/VoUUEncode.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <string>

#include "vomsg/encoding/VoCodecSupport.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgCString.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgLineWalk.h"
#include "vomsg/foundation/VoMsgLogLine.h"
#include "vomsg/foundation/VoMsgOptions.h"
#include "vomsg/foundation/VoMsgResourceLocator.h"

namespace vomsg::detail {

namespace {

constexpr std::string_view kBegin = "begin";
constexpr std::size_t kLineBytes = 45;
constexpr std::size_t kMostKept = 65536;  // of a line; no data line has more than 88 characters
constexpr char kZero = '`';

constexpr int valueOf(char c) { return c == '`' || c == '~' ? 0 : (static_cast<unsigned char>(c) + 32) & 63; }
constexpr char characterFor(unsigned value) { return value == 0 ? kZero : static_cast<char>(value + 32); }

std::string_view withoutLineEnd(std::string_view line) {
  if (line.ends_with('\n')) {
    line.remove_suffix(1);
    if (line.ends_with('\r')) line.remove_suffix(1);
  } else if (line.ends_with('\r')) {
    line.remove_suffix(1);
  }
  return line;
}

// The lines of the part that is decoded.
class PartLines {
 public:
  PartLines(VoMsgBufferedReader& reader, std::uint64_t length) : mReader(reader), mLeft(length) {}

  // The next line; false at the end of the data, or when the line goes on behind the end of the part. The reader is
  // then at that end: what a line has there belongs to whoever reads on.
  bool next() {
    text.clear();
    char last = '\0';
    const WalkedLine line = walkLine(mReader, mLeft, [&](std::string_view stretch, bool) {
      text.append(stretch.substr(0, kMostKept - text.size()));
      if (!stretch.empty()) last = stretch.back();
      return true;
    });
    mLeft -= line.length;
    return line.length > 0 && !(mLeft == 0 && goesOn(last));
  }

  std::string text;

 private:
  bool goesOn(char last) {
    if (last == '\n' || !ReaderWindow::fill(mReader)) return false;
    return last != '\r' || ReaderWindow::buffered(mReader).front() == '\n';
  }

  VoMsgBufferedReader& mReader;
  std::uint64_t mLeft;
};

// Writes the bytes of one data line; characters that are missing count as zero.
bool decodeLine(VoMsgBufferedWriter& target, std::string_view line) {
  line = withoutLineEnd(line);
  std::array<char, 66> bytes;
  const std::size_t count = static_cast<std::size_t>(valueOf(line[0]));
  const auto at = [&](std::size_t i) { return i < line.size() ? static_cast<unsigned>(valueOf(line[i])) : 0u; };
  for (std::size_t done = 0, in = 1; done < count; done += 3, in += 4) {
    const unsigned group = at(in) << 18 | at(in + 1) << 12 | at(in + 2) << 6 | at(in + 3);
    bytes[done] = static_cast<char>(group >> 16);
    bytes[done + 1] = static_cast<char>(group >> 8);
    bytes[done + 2] = static_cast<char>(group);
  }
  return target.write(bytes.data(), static_cast<unsigned>(count));
}

// Decodes the lines from `lines.text` on up to the one for zero bytes, and takes one more, "end".
bool decodeData(VoMsgBufferedWriter& target, PartLines& lines) {
  do {
    if (isUUEncodeZeroLine(lines.text)) {
      lines.next();
      return true;
    }
    if (isUUEncodeData(lines.text) && !decodeLine(target, lines.text)) return false;
    if (!lines.next()) return true;
    // Some gateways set the parity bit of what they take for seven-bit text.
    for (char& c : lines.text) c = static_cast<char>(c & 0x7F);
  } while (true);
}

bool decodeBlock(VoMsgBufferedWriter& target, VoMsgBufferedReader& source, std::uint64_t length, CString& name) {
  PartLines lines(source, length);
  while (lines.next()) {
    if (startsWithNoCase(lines.text, kBegin)) {
      std::string_view found;
      if (!isUUEncodeBegin(lines.text, found)) return true;
      name.reset(strndup(found.data(), found.size()));
      if (!lines.next()) return true;
      for (char& c : lines.text) c = static_cast<char>(c & 0x7F);
      return decodeData(target, lines);
    }
    if (isUUEncodeData(lines.text)) return decodeData(target, lines);
  }
  return true;
}

}  // namespace

bool isUUEncodeBegin(std::string_view line, std::string_view& name) {
  if (!line.starts_with(kBegin)) return false;
  line.remove_prefix(kBegin.size());
  if (!line.starts_with(' ')) return false;
  line.remove_prefix(1);
  const std::size_t digits = std::min(line.find_first_not_of("01234567"), line.size());
  if (digits == line.size() || line[digits] != ' ') return false;
  line.remove_prefix(digits + 1);
  name = line.substr(0, line.find_first_of("\r\n"));
  return true;
}

bool isUUEncodeData(std::string_view line) {
  if (line.empty() || line[0] < '!' || line[0] > '~') return false;
  line = withoutLineEnd(line);
  if (line.empty() || line.size() > kMostKept) return false;
  const int count = static_cast<int>(line.size()) - 1;
  if ((VoMsgExtraOption & kVoOptionStrictUUEncode) != 0 && count % 4 != 0) return false;
  const int bytes = 3 * count / 4;
  if (valueOf(line[0]) < bytes - 2 || valueOf(line[0]) > bytes) return false;
  const std::string_view examined = line.substr(1, count > 0 ? static_cast<std::size_t>(count) - 1 : 0);
  return std::all_of(examined.begin(), examined.end(), [](char c) { return (c >= 0x20 && c <= 0x60) || c == '~'; });
}

bool isUUEncodeZeroLine(std::string_view line) { return isUUEncodeData(line) && valueOf(line[0]) == 0; }

bool decodeUUEncode(VoMsgBufferedWriter& target, VoMsgBufferedReader& source, std::uint64_t length, CString& name) {
  return decodeBlock(target, source, length, name) && target.flush();
}

VoErrorCode decodeUUEncode(VoMsgResourceLocator& target, VoMsgBufferedReader& source, std::uint64_t length) {
  CString name;
  const VoErrorCode code = decodeInto(
      target, [&](auto& writer) { return decodeUUEncode(writer, source, length, name) ? kVoSuccess : kVoWriteFailed; });
  if (!voFailed(code)) target.setResourceName(name ? name.get() : "noname", "us-ascii");
  return code;
}

namespace {

bool encodeBlock(VoMsgBufferedWriter& target, VoMsgBufferedReader& source, const char* name) {
  const std::string_view given = name ? name : "unknown";
  const std::string begin = "begin 666 " + std::string(given.substr(0, given.find_first_of("\r\n"))) + "\r\n";
  if (!WriterAccess::writeThrough(target, begin.data(), begin.size())) return false;
  WriterAccess::expect(target, begin.size() + (bytesLeft(source) / kLineBytes + 1) * 63 + 8);
  const bool written = forEachStretch<kLineBytes>(source, [&](const unsigned char* in, std::size_t n) {
    std::array<char, 63> line;
    char* out = line.data();
    *out++ = characterFor(static_cast<unsigned>(n));
    for (std::size_t i = 0; i < n; i += 3) {
      const unsigned second = i + 1 < n ? in[i + 1] : 0u, third = i + 2 < n ? in[i + 2] : 0u;
      const unsigned group = unsigned{in[i]} << 16 | second << 8 | third;
      *out++ = characterFor(group >> 18);
      *out++ = characterFor(group >> 12 & 63);
      // What lies behind the last bits is padding, which is spelled as a zero is.
      *out++ = characterFor(group >> 6 & 63);
      *out++ = characterFor(group & 63);
    }
    *out++ = '\r';
    *out++ = '\n';
    return target.write(line.data(), static_cast<unsigned>(out - line.data()));
  });
  constexpr std::string_view kEnd = "`\r\nend\r\n";
  return written && target.write(kEnd.data(), kEnd.size()) && target.flush();
}

}  // namespace

VoErrorCode encodeUUEncode(VoMsgBufferedWriter& target, const VoMsgResourceLocator& source, const char* name) {
  const std::unique_ptr<VoMsgBufferedReader> reader(source.getInputStream(VoMsgResourceLocator::dataPart));
  if (!reader) return kVoReadFailed;
  if (!name) name = source.getResourceName(nullptr);
  return encodeBlock(target, *reader, *name ? name : "noname") ? kVoSuccess : kVoWriteFailed;
}

}  // namespace vomsg::detail

using namespace vomsg::detail;

namespace {
constexpr char kLogSource[] = "VoUUEncode";
}

bool voGetUUEncodeFileName(const char* line, char** name, long* mode) {
  if (mode) *mode = -1;
  std::string_view found;
  if (!line || !isUUEncodeBegin(line, found)) return false;
  if (!name) return true;
  char* const copy = strndup(found.data(), found.size());
  if (copy) *name = copy;
  return copy != nullptr;
}

bool voIsValidUUEncodeString(const char* line) { return line && isUUEncodeData(line); }

bool _decodeUUEncode(VoMsgBufferedWriter* target, VoMsgBufferedReader* source, long length, char** name) {
  if (name) *name = nullptr;
  if (!target || !source) return !voFailed(VO_LOGGED("", kVoBadArgument));
  const std::uint64_t size = length > 0 ? static_cast<std::uint64_t>(length) : 0;
  return !voFailed(VO_LOGGED("", guarded([&] {
                               CString found;
                               const bool written = decodeUUEncode(*target, *source, size, found);
                               if (name) *name = found.release();
                               return written ? kVoSuccess : kVoWriteFailed;
                             })));
}

bool _encodeUUEncode(VoMsgBufferedWriter* target, VoMsgBufferedReader* source, const char* name) {
  if (!target || !source) return !voFailed(VO_LOGGED("", kVoBadArgument));
  return !voFailed(
      VO_LOGGED("", guarded([&] { return encodeBlock(*target, *source, name) ? kVoSuccess : kVoWriteFailed; })));
}

VoErrorCode voDecodeUUEncode(VoMsgResourceLocator* target, VoMsgBufferedReader* source, long length) {
  if (!target || !source) return VO_LOGGED("", kVoBadArgument);
  const std::uint64_t size = length > 0 ? static_cast<std::uint64_t>(length) : 0;
  return VO_LOGGED("", guarded([&] { return decodeUUEncode(*target, *source, size); }));
}

VoErrorCode voEncodeUUEncode(VoMsgBufferedWriter* target, const VoMsgResourceLocator* source) {
  if (!target || !source) return VO_LOGGED("", kVoBadArgument);
  return VO_LOGGED("", guarded([&] { return encodeUUEncode(*target, *source, nullptr); }));
}
