// The Japanese targets beside EUC-JP; VoMsgTextWriters.h tells what a writer is.
#pragma once

#include "vomsg/charset/convert/VoMsgJisEscapes.h"
#include "vomsg/charset/convert/VoMsgTextWriters.h"
#include "vomsg/charset/convert/tables/VoKanaTable.h"

namespace vomsg::detail {

class SjisWriter {
 public:
  explicit SjisWriter(Replacement replacement) : mReplacement(replacement) {}

  void aim(std::string& target) { mOut.aim(target); }
  void flush() { mOut.flush(); }
  void text(std::string_view ascii) { mOut.put(ascii); }
  // Two rows of 94 cells share a lead byte; trail bytes leave out 0x7F, lead bytes the half-width kana.
  bool kanji(unsigned jis) {
    const unsigned row = (jis >> 8) - 0x21u;
    const unsigned cell = (jis & 0xFFu) - 0x21u;
    const unsigned lead = row / 2 + (row < 62 ? 0x81u : 0xC1u);
    mOut.put(lead, row % 2 ? cell + 0x9Fu : cell + 0x40u + (cell >= 0x3F));
    return true;
  }
  bool kana(unsigned byte) {
    mOut.put(byte);
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

// ISO-2022-JP knows no half-width kana: they become full-width ones, joined with the mark behind them. Kanji mode ends
// before anything in ASCII, line ends among it, and at the end of the text.
class JisWriter {
 public:
  explicit JisWriter(Replacement replacement) : mReplacement(replacement) {}

  void aim(std::string& target) { mOut.aim(target); }
  void flush() { mOut.flush(); }
  void text(std::string_view ascii) {
    settle();
    leaveKanji();
    mOut.put(ascii);
  }
  bool kanji(unsigned jis) {
    settle();
    putKanji(jis);
    return true;
  }
  bool kana(unsigned byte) {
    const unsigned before = mPendingKana;
    mPendingKana = 0;
    const unsigned full = gFullWidthKana[byte - kFirstKana];
    if (before && byte == kVoicedMark) {
      putKanji(before == kKanaU ? kVoicedU : fullWidth(before) + 1);
    } else if (before && byte == kSemiVoicedMark && isHaRow(before)) {
      putKanji(fullWidth(before) + 2);
    } else {
      if (before) putKanji(fullWidth(before));
      if (byte == kKanaU || (byte >= kKanaKa && byte <= kKanaTo) || isHaRow(byte))
        mPendingKana = byte;
      else
        putKanji(full);
    }
    return true;
  }
  bool unknown() {
    if (mReplacement.allowed) text({&mReplacement.byte, 1});
    return mReplacement.allowed;
  }
  void finish() {
    settle();
    leaveKanji();
    mOut.flush();
  }

 private:
  static constexpr unsigned kKanaU = 0xB3, kKanaKa = 0xB6, kKanaTo = 0xC4, kKanaHa = 0xCA, kKanaHo = 0xCE;
  static constexpr unsigned kVoicedU = 0x2574;  // the one voiced form that does not stand behind its plain form

  static bool isHaRow(unsigned byte) { return byte >= kKanaHa && byte <= kKanaHo; }
  static unsigned fullWidth(unsigned byte) { return gFullWidthKana[byte - kFirstKana]; }

  // Writes the kana that waits for a mark.
  void settle() {
    if (!mPendingKana) return;
    putKanji(fullWidth(mPendingKana));
    mPendingKana = 0;
  }
  void putKanji(unsigned jis) {
    if (!mInKanji) mOut.put(kJisToKanji);
    mInKanji = true;
    mOut.put(jis >> 8, jis & 0xFFu);
  }
  void leaveKanji() {
    if (mInKanji) mOut.put(kJisToAscii);
    mInKanji = false;
  }

  BlockWriter mOut;
  Replacement mReplacement;
  unsigned mPendingKana = 0;
  bool mInKanji = false;
};

}  // namespace vomsg::detail
