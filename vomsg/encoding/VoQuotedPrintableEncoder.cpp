// Lines are laid out in the output block itself: characters are appended behind the open line, and only a line
// that grows past 75 characters is touched again, to put a soft break before its last breakable place.
//
// The exported functions take what they get for lines: every line end becomes a CR LF, and the last line gets one,
// which suits text and changes anything else. The exact form decodes to what went in: what ends a line is said
// beforehand, and any other CR or LF is encoded, so that nobody on the way can change it.
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "vomsg/encoding/VoCodecSupport.h"
#include "vomsg/encoding/VoHexChar.h"
#include "vomsg/encoding/VoQuotedPrintable.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgOptions.h"
#include "vomsg/foundation/VoMsgStreamAccess.h"

namespace vomsg::detail {

namespace {

constexpr std::ptrdiff_t kLongestLine = 75;     // before the "=" of a soft break
constexpr std::ptrdiff_t kBlankFitsAfter = 74;  // a longer line gets its trailing blank encoded on a line of its own
constexpr std::ptrdiff_t kBlock = 8192;
constexpr std::ptrdiff_t kMargin = 256;  // more than the longest line with all that can be put into it

enum class Kind : std::uint8_t { encoded, plain, blank };  // blank: written as it is, and a line may break before it

using Kinds = std::array<Kind, 256>;

constexpr Kinds kindsOfCharacters(bool encodeDot) {
  Kinds table{};
  for (std::size_t c = 0x21; c <= 0x7E; ++c) table[c] = Kind::plain;
  table['='] = Kind::encoded;
  if (encodeDot) table['.'] = Kind::encoded;
  table[' '] = table['\t'] = Kind::blank;
  return table;
}

constexpr Kinds kKinds = kindsOfCharacters(false);
constexpr Kinds kKindsWithoutDot = kindsOfCharacters(true);

class Encoder {
 public:
  Encoder(VoMsgBufferedWriter& target, bool isExact, std::string_view lineEnd, bool softBreaks)
      : mTarget(target),
        mIsExact(isExact),
        mLineEnd(lineEnd),
        mEndsAtLineFeed(!isExact || lineEnd == "\n"),
        mEndsAtPair(!isExact || lineEnd == "\r\n"),
        mSoftBreaks(softBreaks),
        mKinds((VoMsgExtraOption & kVoOptionEncodeDot) != 0 ? kKindsWithoutDot : kKinds) {}

  bool encode(const unsigned char* in, const unsigned char* end) {
    while (in < end) {
      const unsigned char c = *in;
      if (mOpenCarriageReturn) {
        mOpenCarriageReturn = false;
        if (c == '\n') {
          ++in;
          if (!endLine()) return false;
        } else if (!appendEncoded('\r')) {
          return false;
        }
      } else if (mKinds[c] != Kind::encoded) {
        in = appendPlain(in, end);
        if (!breakLine()) return false;
      } else {
        ++in;
        bool written = true;
        if (c == '\n' && mEndsAtLineFeed) {
          written = endLine();
        } else if (c == '\r' && mEndsAtPair) {
          mOpenCarriageReturn = true;  // whether it is a line end is for the next byte to say
        } else {
          written = appendEncoded(c);
        }
        if (!written) return false;
      }
    }
    return true;
  }

  bool finish() {
    if (mOpenCarriageReturn && !appendEncoded('\r')) return false;
    if (mIsExact) {
      encodeLastBlank();  // on the way, blanks at the end of a body get lost
    } else if (mEnd > mLine) {
      append(mLineEnd);
    }
    mLine = mEnd;
    return emit() && mTarget.flush();
  }

 private:
  void append(std::string_view text) { mEnd += text.copy(mEnd, text.size()); }

  // Takes characters that stand for themselves until the line is too long.
  const unsigned char* appendPlain(const unsigned char* in, const unsigned char* end) {
    char* to = mEnd;
    char* breakAt = mBreak;
    const unsigned char* const full =
        in + std::min(end - in, std::max<std::ptrdiff_t>(1, mLine + kLongestLine + 1 - to));
    for (; in < full && mKinds[*in] != Kind::encoded; ++in, ++to) {
      breakAt = mKinds[*in] == Kind::blank ? to : breakAt;
      *to = static_cast<char>(*in);
    }
    mEnd = to;
    mBreak = breakAt;
    return in;
  }

  bool appendEncoded(unsigned char c) {
    mBreak = mEnd;
    const char encoded[3] = {'=', hextable_char[c >> 4], hextable_char[c & 15]};
    append({encoded, 3});
    return breakLine();
  }

  void encodeLastBlank() {
    if (mEnd == mLine || !isBlank(mEnd[-1])) return;
    const bool tooLong = mEnd - mLine > kBlankFitsAfter;
    const char blank = *--mEnd;
    if (tooLong && mSoftBreaks) append("=\r\n");
    append(blank == ' ' ? "=20" : "=09");
  }

  bool endLine() {
    encodeLastBlank();
    append(mLineEnd);
    return startLine(mEnd);
  }

  // Ends the open line softly when it has become too long.
  bool breakLine() {
    if (mEnd - mLine <= kLongestLine) return true;
    // The exported functions break even before the first character of a line, which leaves an empty line and lets this
    // one grow to 77 characters. Their output stays as it is known; the exact form need not copy that.
    const bool isBreakable = mBreak && (mBreak > mLine || !mIsExact);
    char* at = isBreakable ? mBreak : mEnd - 1;
    if (mSoftBreaks) {
      std::memmove(at + 3, at, static_cast<std::size_t>(mEnd - at));
      std::memcpy(at, "=\r\n", 3);
      at += 3;
      mEnd += 3;
    }
    return startLine(at);
  }

  bool startLine(char* at) {
    mLine = at;
    mBreak = nullptr;
    return mLine - mBlock.data() < kBlock || emit();
  }

  // Writes what stands before the open line and moves that to the front.
  bool emit() {
    const std::size_t done = static_cast<std::size_t>(mLine - mBlock.data());
    if (done > 0 && !WriterAccess::writeThrough(mTarget, mBlock.data(), done)) return false;
    const std::size_t open = static_cast<std::size_t>(mEnd - mLine);
    std::memmove(mBlock.data(), mLine, open);
    mLine = mBlock.data();
    mEnd = mLine + open;
    return true;
  }

  VoMsgBufferedWriter& mTarget;
  const bool mIsExact;
  const std::string_view mLineEnd;
  const bool mEndsAtLineFeed;
  const bool mEndsAtPair;
  const bool mSoftBreaks;
  const Kinds& mKinds;
  bool mOpenCarriageReturn = false;
  std::array<char, kBlock + kMargin> mBlock;
  char* mLine = mBlock.data();  // start of the open line
  char* mEnd = mLine;           // its end
  char* mBreak = nullptr;       // the last place in it where a soft break may stand
};

bool encodeAll(Encoder& encoder, VoMsgBufferedWriter& target, VoMsgBufferedReader& source) {
  WriterAccess::expect(target, bytesLeft(source));
  while (ReaderWindow::fill(source)) {
    const std::string_view window = ReaderWindow::buffered(source);
    const auto* in = reinterpret_cast<const unsigned char*>(window.data());
    if (!encoder.encode(in, in + window.size())) return false;
    ReaderWindow::consume(source, window.size());
  }
  return encoder.finish();
}

}  // namespace

bool encodeQuotedPrintable(VoMsgBufferedWriter& target, VoMsgBufferedReader& source, bool softBreaks) {
  Encoder encoder(target, false, "\r\n", softBreaks);
  return encodeAll(encoder, target, source);
}

bool encodeQuotedPrintableExactly(VoMsgBufferedWriter& target, VoMsgBufferedReader& source, std::string_view lineEnd) {
  Encoder encoder(target, true, lineEnd, true);
  return encodeAll(encoder, target, source);
}

}  // namespace vomsg::detail
