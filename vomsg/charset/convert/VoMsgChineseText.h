// The sources and targets of the Chinese converters: GB2312 as bytes with their high bits set (VoMsgTextWriters.h has
// the writer, which Japanese EUC shares), and HZ (RFC 1843). Readers are templates over the writer that takes their
// characters. What does not fit the charset costs its first byte and one replacement.
#pragma once

#include "vomsg/charset/convert/VoMsgAsciiRun.h"
#include "vomsg/charset/convert/VoMsgTextWriters.h"

namespace vomsg::detail {

// GB2312 as mail writes it, often with the many more characters of GBK, which are known as such (one replacement a
// character) but belong to no row of GB2312.
struct GbReader {
  template <class Writer>
  bool read(Bytes& at, Bytes end, bool last, Writer& writer) {
    while (at < end && (last || end - at >= kLongestSequence)) {
      bool goesOn = true;
      if (*at < 0x80) {
        const std::string_view text = textRun(at, end);
        writer.text(text);
        at += text.size();
      } else if (end - at > 1 && isLead(at[0]) && isTrail(at[1])) {
        const bool isGb2312 = at[0] >= 0xA1 && at[1] >= 0xA1;
        goesOn = isGb2312 ? writer.kanji((at[0] & 0x7Fu) << 8 | (at[1] & 0x7Fu)) : writer.unknown();
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
  static bool isLead(unsigned char byte) { return byte >= 0x81 && byte <= 0xFE; }
  static bool isTrail(unsigned char byte) { return byte >= 0x40 && byte <= 0xFE && byte != 0x7F; }
};

// HZ keeps to seven bits: "~{" and "~}" enclose characters, "~~" is a tilde, "~" before a line end joins two lines. A
// line end is back in ASCII.
struct HzReader {
  template <class Writer>
  bool read(Bytes& at, Bytes end, bool last, Writer& writer) {
    while (at < end && (last || end - at >= kLongestSequence)) {
      const unsigned char byte = *at;
      bool goesOn = true;
      if (byte == '~') {
        goesOn = readTilde(at, end, writer);
      } else if (!mInGb && byte < 0x80) {
        const Bytes start = at;
        while (at < end && *at < 0x80 && *at != '~') ++at;
        writer.text(viewOf(start, at));
      } else if (byte <= ' ' || byte == 0x7F) {
        if (byte == '\r' || byte == '\n') mInGb = false;
        writer.text(viewOf(at, at + 1));
        ++at;
      } else if (byte < 0x80 && end - at > 1 && at[1] > ' ' && at[1] < 0x7F) {
        goesOn = byte <= kLastLead ? writer.kanji(unsigned{byte} << 8 | at[1]) : writer.unknown();
        at += 2;
      } else {
        goesOn = writer.unknown();
        ++at;
      }
      if (!goesOn) return false;
    }
    return true;
  }

  static constexpr unsigned kLastLead = 0x77;  // beyond it "~" would be one

 private:
  template <class Writer>
  bool readTilde(Bytes& at, Bytes end, Writer& writer) {
    const std::ptrdiff_t left = end - at;
    if (left == 1) {  // cut off: nobody knows what it was to be
      ++at;
      return writer.unknown();
    }
    const unsigned char next = at[1];
    if (next == '{' || next == '}') {
      mInGb = next == '{';
      at += 2;
    } else if (next == '\n' || (next == '\r' && left > 2 && at[2] == '\n')) {
      at += next == '\n' ? 2 : 3;
    } else {
      // A tilde that nobody doubled, as in addresses of web pages, is one all the same.
      writer.text("~");
      at += next == '~' ? 2 : 1;
    }
    return true;
  }

  bool mInGb = false;
};

// Characters stand between "~{" and "~}", which closes before anything in ASCII, line ends among it, and at the end.
class HzWriter {
 public:
  explicit HzWriter(Replacement replacement) : mReplacement(replacement) {}

  void aim(std::string& target) { mOut.aim(target); }
  void flush() { mOut.flush(); }
  void text(std::string_view ascii) {
    leaveGb();
    for (std::size_t tilde; (tilde = ascii.find('~')) != ascii.npos; ascii.remove_prefix(tilde + 1)) {
      mOut.put(ascii.substr(0, tilde));
      mOut.put('~', '~');
    }
    mOut.put(ascii);
  }
  bool kanji(unsigned gb) {
    if (gb >> 8 > HzReader::kLastLead) return unknown();
    if (!mInGb) mOut.put('~', '{');
    mInGb = true;
    mOut.put(gb >> 8, gb & 0xFFu);
    return true;
  }
  bool unknown() {
    if (mReplacement.allowed) text({&mReplacement.byte, 1});
    return mReplacement.allowed;
  }
  void finish() {
    leaveGb();
    mOut.flush();
  }

 private:
  void leaveGb() {
    if (mInGb) mOut.put('~', '}');
    mInGb = false;
  }

  BlockWriter mOut;
  Replacement mReplacement;
  bool mInGb = false;
};

}  // namespace vomsg::detail
