// The sources of the Japanese converters, each a template over the writer that takes its characters
// (VoMsgTextWriters.h). What does not fit the charset costs its first byte, one replacement, and
// reading goes on behind it, so that a lost byte spoils no more than its own character.
#pragma once

#include <array>

#include "vomsg/charset/convert/VoMsgAsciiRun.h"
#include "vomsg/charset/convert/VoMsgJisEscapes.h"
#include "vomsg/charset/convert/VoMsgTextWriters.h"
#include "vomsg/charset/convert/tables/VoKanaTable.h"

namespace vomsg::detail {

// EUC-JP: two bytes 0xA1 to 0xFE are a kanji, 0x8E leads a half-width kana, 0x8F a character of JIS X 0212, which no
// other Japanese charset of ours has.
struct EucReader {
  template <class Writer>
  bool read(Bytes& at, Bytes end, bool last, Writer& writer) {
    while (at < end && (last || end - at >= kLongestSequence)) {
      const std::ptrdiff_t left = end - at;
      bool goesOn = true;
      if (*at < 0x80) {
        const std::string_view text = textRun(at, end);
        writer.text(text);
        at += text.size();
      } else if (left > 1 && isHigh(at[0]) && isHigh(at[1])) {
        goesOn = writer.kanji((at[0] & 0x7Fu) << 8 | (at[1] & 0x7Fu));
        at += 2;
      } else if (left > 1 && *at == kKanaShift && at[1] >= kFirstKana && at[1] <= kLastKana) {
        goesOn = writer.kana(at[1]);
        at += 2;
      } else {
        goesOn = writer.unknown();
        if (*at++ == kThreeByteShift)
          for (int i = 0; i < 2 && at < end && isHigh(*at); ++i) ++at;
      }
      if (!goesOn) return false;
    }
    return true;
  }

 private:
  static constexpr unsigned kKanaShift = 0x8E, kThreeByteShift = 0x8F;
  static bool isHigh(unsigned char byte) { return byte >= 0xA1 && byte <= 0xFE; }
};

// Shift_JIS: lead bytes 0x81 to 0x9F and 0xE0 to 0xFC around the half-width kana, which take one byte.
struct SjisReader {
  template <class Writer>
  bool read(Bytes& at, Bytes end, bool last, Writer& writer) {
    while (at < end && (last || end - at >= kLongestSequence)) {
      bool goesOn = true;
      if (*at < 0x80) {
        const std::string_view text = textRun(at, end);
        writer.text(text);
        at += text.size();
      } else if (*at >= kFirstKana && *at <= kLastKana) {
        goesOn = writer.kana(*at++);
      } else if (end - at > 1 && isLead(at[0]) && isTrail(at[1])) {
        const unsigned jis = toJis(at[0], at[1]);
        goesOn = jis ? writer.kanji(jis) : writer.unknown();
        at += 2;
      } else {
        goesOn = writer.unknown();
        ++at;
      }
      if (!goesOn) return false;
    }
    return true;
  }

 private:
  static bool isLead(unsigned char byte) { return (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC); }
  static bool isTrail(unsigned char byte) { return byte >= 0x40 && byte <= 0xFC && byte != 0x7F; }

  static constexpr unsigned rowAndCell(unsigned row, unsigned cell) { return (row + 0x20u) << 8 | (cell + 0x20u); }

  static unsigned toJis(unsigned lead, unsigned trail) {
    const unsigned pair = lead - (lead < 0xA0 ? 0x81u : 0xC1u);
    const unsigned cell = trail - 0x40u - (trail > 0x7F);  // within the two rows of a lead byte
    if (lead < 0xF0) return rowAndCell(pair * 2 + cell / 94 + 1, cell % 94 + 1);
    return lead >= 0xFA ? vendorToJis((lead - 0xFA) * 188 + cell) : 0;
  }

  // Lead bytes 0xFA to 0xFC hold the characters that one vendor added and Windows writes: people's names are full of
  // them. Another vendor had put the same characters into unused rows of JIS X 0208, where ISO-2022-JP and EUC-JP can
  // say them and all mailers look: 360 kanji in the same order into rows 89 to 92, the rest around them.
  static unsigned vendorToJis(unsigned index) {
    constexpr unsigned kKanji = 28, kKanjiEnd = kKanji + 360, kSymbols = 20;
    constexpr std::array<unsigned, kKanji - kSymbols> kSymbolCodes = {
        rowAndCell(2, 44),  rowAndCell(92, 92), rowAndCell(92, 93), rowAndCell(92, 94),  // not, broken bar, ' and "
        rowAndCell(13, 74), rowAndCell(13, 66), rowAndCell(13, 68), rowAndCell(2, 72)};  // (Inc.), No., Tel., because
    if (index >= kKanjiEnd) return 0;
    if (index >= kKanji) return rowAndCell(89 + (index - kKanji) / 94, (index - kKanji) % 94 + 1);
    if (index >= kSymbols) return kSymbolCodes[index - kSymbols];
    return index < 10 ? rowAndCell(92, 81 + index) : rowAndCell(13, 21 + index - 10);  // Roman numbers, small and large
  }
};

// ISO-2022-JP and what mailers make of it: half-width kana behind ESC ( I or between SO and SI, too. A line end is back
// in ASCII, whatever the line before it forgot.
struct JisReader {
  template <class Writer>
  bool read(Bytes& at, Bytes end, bool last, Writer& writer) {
    while (at < end && (last || end - at >= kLongestSequence)) {
      const unsigned char byte = *at;
      bool goesOn = true;
      if (byte == kEscape) {
        const std::size_t length = designate(viewOf(at, end), mSet);
        if (length == 0) goesOn = writer.unknown();
        at += length ? length : 1;
      } else if (byte == kShiftOut || byte == kShiftIn) {
        mShifted = byte == kShiftOut;
        ++at;
      } else if (mSet == Set::ascii && !mShifted && byte < 0x80) {
        const Bytes start = at;
        while (at < end && kPlain[*at]) ++at;
        writer.text(viewOf(start, at));
      } else if (byte == '\r' || byte == '\n') {
        mSet = Set::ascii;
        mShifted = false;
      } else if (byte <= ' ' || byte == 0x7F) {
        writer.text(viewOf(at, at + 1));
        ++at;
      } else if ((mShifted || mSet == Set::kana) && byte + 0x80u <= kLastKana) {
        goesOn = writer.kana(byte + 0x80u);
        ++at;
      } else if (!mShifted && mSet == Set::kanji && end - at > 1 && isSevenBit(at[0]) && isSevenBit(at[1])) {
        goesOn = writer.kanji(unsigned{byte} << 8 | at[1]);
        at += 2;
      } else {
        goesOn = writer.unknown();
        ++at;
      }
      if (!goesOn) return false;
    }
    return true;
  }

 private:
  enum class Set : unsigned char { ascii, kanji, kana };
  static constexpr unsigned char kEscape = 0x1B, kShiftOut = 0x0E, kShiftIn = 0x0F;

  static bool isSevenBit(unsigned char byte) { return byte > ' ' && byte < 0x7F; }

  // What stands for itself in ASCII.
  static constexpr std::array<bool, 256> kPlain = [] {
    std::array<bool, 256> plain{};
    for (unsigned byte = 0; byte < 0x80; ++byte) plain[byte] = byte != kEscape && byte != kShiftOut && byte != kShiftIn;
    return plain;
  }();

  // The length of the escape sequence that `text` begins with, 0 when it is none that we know.
  static std::size_t designate(std::string_view text, Set& set) {
    constexpr struct {
      std::string_view escape;
      Set set;
    } kEscapes[] = {{kJisToKanji, Set::kanji},
                    {kJisToAscii, Set::ascii},
                    {kJisToRoman, Set::ascii},  // 0x5C and 0x7E stay: mailers mean the ASCII characters
                    {kJisToKanji1978, Set::kanji},
                    {kJisToKana, Set::kana}};
    for (const auto& row : kEscapes)
      if (text.substr(0, row.escape.size()) == row.escape) {
        set = row.set;
        return row.escape.size();
      }
    return 0;
  }

  Set mSet = Set::ascii;
  bool mShifted = false;
};

}  // namespace vomsg::detail
