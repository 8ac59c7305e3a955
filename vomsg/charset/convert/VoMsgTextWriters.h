// The targets that the Japanese and the Chinese converters share. A reader hands over plain ASCII in stretches, the
// two-byte characters of its character set by row and cell as codes 0x2121 to 0x7E7E, half-width kana as 0xA1 to 0xDF,
// and says where it met something else. Each call with an answer tells whether the conversion may go on; finish()
// completes the text. Before the first call, and whenever the result is to go elsewhere, aim() names the string.
#pragma once

#include <array>
#include <cstring>
#include <string>
#include <string_view>

#include "vomsg/charset/convert/VoMsgAsciiRun.h"
#include "vomsg/charset/convert/VoMsgReplacement.h"
#include "vomsg/charset/convert/VoMsgTextStage.h"
#include "vomsg/foundation/VoErrorCode.h"

namespace vomsg::detail {

// Collects small writes to a string in a block.
class BlockWriter {
 public:
  explicit BlockWriter(std::string* target = nullptr) : mpTarget(target) {}
  BlockWriter(const BlockWriter&) = delete;
  BlockWriter& operator=(const BlockWriter&) = delete;

  void aim(std::string& target) { mpTarget = &target; }

  void put(unsigned first, unsigned second) {
    if (mUsed + 2 > sizeof mBlock) flush();
    mBlock[mUsed] = static_cast<char>(first);
    mBlock[mUsed + 1] = static_cast<char>(second);
    mUsed += 2;
  }
  void put(unsigned byte) {
    if (mUsed == sizeof mBlock) flush();
    mBlock[mUsed++] = static_cast<char>(byte);
  }
  // The first `length` of four bytes.
  void put(const std::array<unsigned char, 4>& bytes, std::size_t length) {
    if (mUsed + bytes.size() > sizeof mBlock) flush();
    std::memcpy(mBlock + mUsed, bytes.data(), bytes.size());
    mUsed += length;
  }
  void put(std::string_view text) {
    if (mUsed + text.size() > sizeof mBlock) flush();
    if (text.size() > sizeof mBlock) {
      mpTarget->append(text);
      return;
    }
    text.copy(mBlock + mUsed, text.size());
    mUsed += text.size();
  }
  void flush() {
    mpTarget->append(mBlock, mUsed);
    mUsed = 0;
  }

 private:
  std::string* mpTarget;  // borrowed
  std::size_t mUsed = 0;
  char mBlock[2048];
};

// EUC: both bytes of a character have their high bit set, in Japanese and in Chinese.
class EucWriter {
 public:
  explicit EucWriter(Replacement replacement) : mReplacement(replacement) {}

  void aim(std::string& target) { mOut.aim(target); }
  void flush() { mOut.flush(); }
  void text(std::string_view ascii) { mOut.put(ascii); }
  bool kanji(unsigned jis) {
    mOut.put(jis >> 8 | 0x80u, (jis & 0xFFu) | 0x80u);
    return true;
  }
  bool kana(unsigned byte) {
    mOut.put(0x8Eu, byte);
    return true;
  }
  bool unknown() {
    if (mReplacement.allowed) mOut.put(static_cast<unsigned char>(mReplacement.byte));
    return mReplacement.allowed;
  }
  void finish() { mOut.flush(); }

 private:
  BlockWriter mOut;
  Replacement mReplacement;
};

class AsciiWriter {
 public:
  explicit AsciiWriter(Replacement replacement) : mReplacement(replacement) {}

  void aim(std::string& target) { mOut.aim(target); }
  void flush() { mOut.flush(); }
  void text(std::string_view ascii) { mOut.put(ascii); }
  bool kanji(unsigned) { return unknown(); }
  bool kana(unsigned) { return unknown(); }
  bool unknown() {
    if (mReplacement.allowed) mOut.put(static_cast<unsigned char>(mReplacement.byte));
    return mReplacement.allowed;
  }
  void finish() { mOut.flush(); }

 private:
  BlockWriter mOut;
  Replacement mReplacement;
};

// How many bytes a reader may have to see to know what the first of them means. It leaves up to one less of a piece,
// unless the text ends there.
inline constexpr std::ptrdiff_t kLongestSequence = 3;

// Runs a text from a reader to a writer.
template <class Reader, class Writer>
class RewriteStage final : public TextStage {
 public:
  explicit RewriteStage(Replacement replacement) : mWriter(replacement) {}

  VoErrorCode convert(std::string_view piece, bool last, std::string& out) override {
    mWriter.aim(out);
    if (!mRest.empty()) piece = mRest.append(piece);
    Bytes at = reinterpret_cast<Bytes>(piece.data());
    const Bytes end = at + piece.size();
    if (!mReader.read(at, end, last, mWriter)) return kVoConversionFailed;
    if (last) {
      mWriter.finish();
      mReader = Reader();
    } else {
      mWriter.flush();
    }
    mRest = std::string(viewOf(at, end));
    return kVoSuccess;
  }

 private:
  Reader mReader;
  Writer mWriter;
  std::string mRest;
};

}  // namespace vomsg::detail
