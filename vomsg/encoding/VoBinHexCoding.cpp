#include "vomsg/encoding/VoBinHexCoding.h"

#include <array>
#include <string_view>
#include <utility>

#include "vomsg/encoding/VoBinHex.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgStreamAccess.h"

using namespace vomsg::detail;

namespace {

constexpr std::string_view kAlphabet = "!\"#$%&'()*+,-012345689@ABCDEFGHIJKLMNPQRSTUVXYZ[`abcdefhijklmpqr";
static_assert(kAlphabet.size() == 64);

constexpr signed char kForeign = -1;
constexpr signed char kBetween = -2;  // line ends and blanks

constexpr std::array<signed char, 256> kValues = [] {
  std::array<signed char, 256> table{};
  for (signed char& entry : table) entry = kForeign;
  for (std::size_t value = 0; value < kAlphabet.size(); ++value)
    table[static_cast<unsigned char>(kAlphabet[value])] = static_cast<signed char>(value);
  for (const char c : std::string_view("\r\n\t ")) table[static_cast<unsigned char>(c)] = kBetween;
  return table;
}();

// CRC-16, polynomial 0x1021, most significant bit first.
constexpr std::array<std::uint16_t, 256> kCrcs = [] {
  std::array<std::uint16_t, 256> table{};
  for (unsigned byte = 0; byte < 256; ++byte) {
    unsigned crc = byte << 8;
    for (int bit = 0; bit < 8; ++bit) crc = crc << 1 ^ ((crc & 0x8000) != 0 ? 0x1021 : 0);
    table[byte] = static_cast<std::uint16_t>(crc);
  }
  return table;
}();

constexpr unsigned char kRun = 0x90;
constexpr unsigned kMostRepeats = 253;
constexpr unsigned kLineCharacters = 64;

bool writeOut(q_data_t& q, std::string_view text) {
  return q.writer && q.writer->write(text.data(), static_cast<unsigned>(text.size()));
}

// The characters of one step of the decoder, taken from the reader's buffer. The reader is settled at the step's end.
class Characters {
 public:
  explicit Characters(q_data_t& q) : mState(q) {}
  Characters(const Characters&) = delete;
  Characters& operator=(const Characters&) = delete;
  ~Characters() { settle(); }

  // -1 at the end of what may be taken.
  int next() {
    if (mAt == mWindow.size() && !refill()) return -1;
    return static_cast<unsigned char>(mWindow[mAt++]);
  }

 private:
  void settle() {
    if (mAt > 0) ReaderWindow::consume(*mState.reader, mAt);
    mState.left -= std::exchange(mAt, 0);
    mWindow = {};
  }
  bool refill() {
    settle();
    if (mState.left == 0 || !mState.reader || !ReaderWindow::fill(*mState.reader)) return false;
    mWindow = ReaderWindow::buffered(*mState.reader);
    if (mWindow.size() > mState.left) mWindow = mWindow.substr(0, static_cast<std::size_t>(mState.left));
    return true;
  }

  q_data_t& mState;
  std::string_view mWindow;
  std::size_t mAt = 0;
};

bool takeBits(q_data_t&, Characters& characters, unsigned& bits) {
  int value;
  do {
    const int c = characters.next();
    value = c < 0 ? kForeign : kValues[static_cast<std::size_t>(c)];
  } while (value == kBetween);
  bits = static_cast<unsigned>(value);
  return value >= 0;
}

bool takeRaw(q_data_t& q, Characters& characters, unsigned char& byte) {
  while (q.groupBits < 8) {
    unsigned bits;
    if (!takeBits(q, characters, bits)) return false;
    q.group = q.group << 6 | bits;
    q.groupBits += 6;
  }
  q.groupBits -= 8;
  byte = static_cast<unsigned char>(q.group >> q.groupBits);
  return true;
}

bool takeByte(q_data_t& q, Characters& characters, unsigned char& byte) {
  while (q.run == 0) {
    if (!takeRaw(q, characters, byte)) return false;
    if (byte == kRun) {
      unsigned char count;
      if (!takeRaw(q, characters, count)) return false;
      if (count > 0) {
        q.run = count - 1u;
        continue;  // a count of 1 repeats nothing
      }
    }
    q.previous = byte;
    return true;
  }
  --q.run;
  byte = static_cast<unsigned char>(q.previous);
  return true;
}

// One byte of the run-length coded stream that is no count.
bool writeLiteral(q_data_t& q, unsigned char byte) { return setq_raw(q, byte) && (byte != kRun || setq_raw(q, 0)); }

// Closes the run of q.previous: it has been written once and is due q.run more times.
bool closeRun(q_data_t& q) {
  const unsigned repeats = std::exchange(q.run, 0u);
  if (repeats == 0) return true;
  if (repeats == 1) return writeLiteral(q, static_cast<unsigned char>(q.previous));
  return setq_raw(q, kRun) && setq_raw(q, static_cast<unsigned char>(repeats + 1));
}

VoErrorCode writeFork(q_data_t& q, VoMsgBufferedReader* source, std::uint32_t length) {
  while (length > 0) {
    if (!source || !ReaderWindow::fill(*source)) return kVoReadFailed;
    const std::string_view window = ReaderWindow::buffered(*source).substr(0, length);
    if (!setqbuf(q, window.data(), window.size())) return kVoWriteFailed;
    length -= static_cast<std::uint32_t>(window.size());
    ReaderWindow::consume(*source, window.size());
  }
  return writeCRC(q) ? kVoSuccess : kVoWriteFailed;
}

}  // namespace

bool vomsg::detail::isBinHexCharacter(int c) {
  return c >= 0 && c < 256 && kValues[static_cast<std::size_t>(c)] != kForeign;
}

void q_init(q_data_t& q, VoMsgBufferedReader* reader) {
  q = {};
  q.reader = reader;
}

void q_init(q_data_t& q, VoMsgBufferedWriter* writer) {
  q = {};
  q.previous = -1;
  q.writer = writer;
}

std::uint32_t comp_q_crc(std::uint32_t crc, unsigned char byte) {
  return (crc << 8 & 0xFF00) ^ kCrcs[(crc >> 8 & 0xFF) ^ byte];
}

bool get6bits(q_data_t& q, unsigned& bits) {
  Characters characters(q);
  return takeBits(q, characters, bits);
}

bool getq_raw(q_data_t& q, unsigned char& byte) {
  Characters characters(q);
  return takeRaw(q, characters, byte);
}

bool getq_nocrc(q_data_t& q, unsigned char& byte) {
  Characters characters(q);
  return takeByte(q, characters, byte);
}

bool getq(q_data_t& q, unsigned char& byte) {
  if (!getq_nocrc(q, byte)) return false;
  q.crc = comp_q_crc(q.crc, byte);
  return true;
}

bool get2q(q_data_t& q, std::uint16_t& value) {
  unsigned char high, low;
  if (!getq(q, high) || !getq(q, low)) return false;
  value = static_cast<std::uint16_t>(high << 8 | low);
  return true;
}

bool get4q(q_data_t& q, std::uint32_t& value) {
  std::uint16_t high, low;
  if (!get2q(q, high) || !get2q(q, low)) return false;
  value = std::uint32_t{high} << 16 | low;
  return true;
}

bool getqbuf(q_data_t& q, char* bytes, std::size_t n) {
  Characters characters(q);
  for (; n > 0; --n, ++bytes) {
    unsigned char byte;
    if (!takeByte(q, characters, byte)) return false;
    q.crc = comp_q_crc(q.crc, byte);
    *bytes = static_cast<char>(byte);
  }
  return true;
}

bool verify_crc(q_data_t& q) {
  const std::uint32_t computed = std::exchange(q.crc, 0u);
  unsigned char high, low;
  return getq_nocrc(q, high) && getq_nocrc(q, low) && (std::uint32_t{high} << 8 | low) == computed;
}

bool do_q_header(q_data_t& q, macheader_t& header) {
  unsigned char version;
  header = {};
  return getq(q, header.nameLength) && getqbuf(q, header.name, header.nameLength) && getq(q, version) &&
         get4q(q, header.type) && get4q(q, header.creator) && get2q(q, header.flags) && get4q(q, header.dataLength) &&
         get4q(q, header.resourceLength) && verify_crc(q);
}

bool set6bits(q_data_t& q, unsigned bits) {
  if (q.column >= kLineCharacters) {
    if (!writeOut(q, "\r\n")) return false;
    q.column = 0;
  }
  ++q.column;
  return writeOut(q, kAlphabet.substr(bits & 63, 1));
}

bool setq_raw(q_data_t& q, unsigned char byte) {
  q.group = q.group << 8 | byte;
  q.groupBits += 8;
  while (q.groupBits >= 6) {
    q.groupBits -= 6;
    if (!set6bits(q, q.group >> q.groupBits)) return false;
  }
  return true;
}

bool setq_nocrc(q_data_t& q, unsigned char byte) {
  if (byte == q.previous) {
    if (++q.run < kMostRepeats) return true;
    // 254 equal bytes are closed with a count of 255, and whatever follows starts afresh. Readers of what this
    // coder writes have always seen it do so.
    q.run = 0;
    q.previous = -1;
    q.isExact = false;
    return setq_raw(q, kRun) && setq_raw(q, 0xFF);
  }
  if (!closeRun(q)) return false;
  q.previous = byte;
  return writeLiteral(q, byte);
}

bool setq(q_data_t& q, unsigned char byte) {
  q.crc = comp_q_crc(q.crc, byte);
  return setq_nocrc(q, byte);
}

bool set2q(q_data_t& q, std::uint16_t value) {
  return setq(q, static_cast<unsigned char>(value >> 8)) && setq(q, static_cast<unsigned char>(value));
}

bool set4q(q_data_t& q, std::uint32_t value) {
  return set2q(q, static_cast<std::uint16_t>(value >> 16)) && set2q(q, static_cast<std::uint16_t>(value));
}

bool setqbuf(q_data_t& q, const char* bytes, std::size_t n) {
  for (; n > 0; --n, ++bytes)
    if (!setq(q, static_cast<unsigned char>(*bytes))) return false;
  return true;
}

bool writeCRC(q_data_t& q) {
  const std::uint32_t crc = std::exchange(q.crc, 0u);
  return setq_nocrc(q, static_cast<unsigned char>(crc >> 8)) && setq_nocrc(q, static_cast<unsigned char>(crc));
}

bool setq_flush(q_data_t& q) {
  if (!closeRun(q)) return false;
  if (q.groupBits == 0) return true;
  return set6bits(q, q.group << (6 - std::exchange(q.groupBits, 0u)));
}

bool writeBinHexHeader(q_data_t& q) {
  q.column = 1;  // the colon counts
  return writeOut(q, kBinHexMarker) && writeOut(q, "\r\n:");
}

bool writeMacHeader(q_data_t& q, const macheader_t& header) {
  return setq(q, header.nameLength) && setqbuf(q, header.name, header.nameLength) && setq(q, 0) &&
         set4q(q, header.type) && set4q(q, header.creator) && set2q(q, header.flags) && set4q(q, header.dataLength) &&
         set4q(q, header.resourceLength) && writeCRC(q);
}

VoErrorCode writeDataFork(q_data_t& q, VoMsgBufferedReader* data, const macheader_t& header) {
  return writeFork(q, data, header.dataLength);
}

VoErrorCode writeResourceFork(q_data_t& q, VoMsgBufferedReader* fork, const macheader_t& header) {
  return writeFork(q, fork, header.resourceLength);
}

bool writeBinHexFooter(q_data_t& q) {
  return setq_flush(q) && (q.column < kLineCharacters || writeOut(q, "\r\n")) && writeOut(q, ":\r\n");
}
