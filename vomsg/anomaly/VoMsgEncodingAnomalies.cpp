#include "vomsg/anomaly/VoMsgEncodingAnomalies.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "vomsg/anomaly/VoMsgLineReader.h"

namespace vomsg::detail {
namespace {

enum class Base64Kind : std::uint8_t { junk, data, padding, space };

constexpr auto kBase64Kinds = [] {
  std::array<Base64Kind, 256> kinds{};
  for (const char c : std::string_view("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"))
    kinds[static_cast<unsigned char>(c)] = Base64Kind::data;
  for (const char c : std::string_view(" \t\r\n")) kinds[static_cast<unsigned char>(c)] = Base64Kind::space;
  kinds['='] = Base64Kind::padding;
  return kinds;
}();

constexpr bool isHexDigit(char c) { return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f'); }

// Adds an entry at the first call alone.
class Once {
 public:
  Once(VoMsgAnomalyCode code, AnomalySink& sink) : mCode(code), mSink(sink) {}
  void at(std::uint64_t offset, std::uint64_t length) {
    if (!mDone) mSink.add(mCode, offset, length);
    mDone = true;
  }
  bool done() const { return mDone; }

 private:
  VoMsgAnomalyCode mCode;
  AnomalySink& mSink;
  bool mDone = false;
};

constexpr std::uint64_t kStreamHead = 6;  // signature and key
constexpr std::uint64_t kRecordHead = 9;  // level, id, length
constexpr std::uint64_t kRecordChecksum = 2;

std::uint32_t littleEndian(const unsigned char* bytes, unsigned count) {
  std::uint32_t value = 0;
  for (unsigned i = count; i-- > 0;) value = value << 8 | bytes[i];
  return value;
}

// The sum of the next `length` bytes; false when they are not there.
bool sumOf(VoMsgBufferedReader& reader, std::uint64_t length, std::uint32_t& sum) {
  unsigned char buffer[4096];
  sum = 0;
  while (length > 0) {
    const auto wanted = static_cast<unsigned>(std::min<std::uint64_t>(length, sizeof buffer));
    const unsigned got = reader.read(reinterpret_cast<char*>(buffer), wanted);
    for (unsigned i = 0; i < got; ++i) sum += buffer[i];
    if (got != wanted) return false;
    length -= got;
  }
  return true;
}

}  // namespace

void findBase64Anomalies(VoMsgBufferedReader& reader, std::uint64_t offset, std::uint64_t length, AnomalySink& sink) {
  if (reader.rseek(static_cast<long>(offset), 0) < 0) return;
  Once junk(kVoAnomalyBase64Junk, sink);
  Once behind(kVoAnomalyBase64BehindPadding, sink);
  std::uint64_t digits = 0;
  std::uint64_t pads = 0;
  char buffer[8192];
  for (std::uint64_t at = 0; at < length;) {
    const unsigned got =
        reader.read(buffer, static_cast<unsigned>(std::min<std::uint64_t>(length - at, sizeof buffer)));
    if (got == 0) break;
    for (unsigned i = 0; i < got; ++i) {
      switch (kBase64Kinds[static_cast<unsigned char>(buffer[i])]) {
        case Base64Kind::data:
          if (pads > 0) behind.at(offset + at + i, 1);
          ++digits;
          break;
        case Base64Kind::padding:
          ++pads;
          break;
        case Base64Kind::junk:
          junk.at(offset + at + i, 1);
          break;
        case Base64Kind::space:
          break;
      }
    }
    at += got;
  }
  if ((digits + pads) % 4 != 0 || pads > 2) sink.add(kVoAnomalyBase64Padding, offset + length, 0);
}

void findQuotedPrintableAnomalies(VoMsgBufferedReader& reader, std::uint64_t offset, std::uint64_t length,
                                  AnomalySink& sink) {
  LineReader lines(reader, offset, length);
  while (lines.next()) {
    const std::string_view line = lines.text();
    for (std::size_t at = line.find('='); at != line.npos; at = line.find('=', at + 1)) {
      const std::string_view rest = line.substr(at + 1);
      const bool isSoftBreak = rest.find_first_not_of(" \t") == rest.npos;
      const bool isEscape = rest.size() >= 2 && isHexDigit(rest[0]) && isHexDigit(rest[1]);
      if (isSoftBreak || isEscape || lines.length() > line.size()) continue;
      sink.add(kVoAnomalyQuotedPrintableBad, lines.offset() + at, std::min<std::size_t>(3, line.size() - at));
      return;
    }
  }
}

void findUuencodeAnomalies(VoMsgBufferedReader& reader, std::uint64_t offset, std::uint64_t length, AnomalySink& sink) {
  LineReader lines(reader, offset, length);
  bool isInside = false;
  std::uint64_t begin = offset;
  Once bad(kVoAnomalyUuencodeBadLine, sink);
  while (lines.next()) {
    const std::string_view line = lines.text();
    if (!isInside) {
      isInside = line.substr(0, 6) == "begin ";
      begin = lines.offset();
      continue;
    }
    if (line.substr(0, 3) == "end") return;
    if (line.empty()) continue;
    const unsigned count = (static_cast<unsigned char>(line[0]) - 0x20u) & 0x3Fu;
    // Blanks at the end of a line get lost on the way; they stand for zero bits.
    const std::size_t needed = 1 + (static_cast<std::size_t>(count) * 4 + 2) / 3;
    if (line.size() + 4 < needed) bad.at(lines.offset(), lines.length());
  }
  if (isInside) sink.add(kVoAnomalyUuencodeUnended, begin, 0);
}

void findBinHexAnomalies(VoMsgBufferedReader& reader, std::uint64_t offset, std::uint64_t length, AnomalySink& sink) {
  LineReader lines(reader, offset, length);
  bool isInside = false;
  std::uint64_t begin = offset;
  while (lines.next()) {
    std::string_view line = lines.text();
    while (!line.empty() && (line.back() == ' ' || line.back() == '\t')) line.remove_suffix(1);
    if (line.empty()) continue;
    if (!isInside) {
      if (line[0] != ':') continue;
      isInside = true;
      begin = lines.offset();
      line.remove_prefix(1);
    }
    if (!line.empty() && line.back() == ':') return;
  }
  if (isInside) sink.add(kVoAnomalyBinHexUnended, begin, 0);
}

void findTnefAnomalies(VoMsgBufferedReader& reader, std::uint64_t size, AnomalySink& sink) {
  std::uint64_t at = kStreamHead;
  while (at < size) {
    unsigned char head[kRecordHead];
    const bool isThere = size - at >= kRecordHead && reader.rseek(static_cast<long>(at), 0) >= 0 &&
                         reader.read(reinterpret_cast<char*>(head), sizeof head) == sizeof head;
    if (!isThere || head[0] < 1 || head[0] > 2) return sink.add(kVoAnomalyTnefDamaged, at, size - at);
    const std::uint64_t length = littleEndian(head + 5, 4);
    if (length + kRecordChecksum > size - at - kRecordHead) return sink.add(kVoAnomalyTnefDamaged, at, size - at);
    std::uint32_t sum = 0;
    unsigned char checksum[kRecordChecksum];
    if (!sumOf(reader, length, sum) ||
        reader.read(reinterpret_cast<char*>(checksum), sizeof checksum) != sizeof checksum ||
        littleEndian(checksum, 2) != (sum & 0xFFFFu))
      return sink.add(kVoAnomalyTnefDamaged, at, kRecordHead + length + kRecordChecksum);
    at += kRecordHead + length + kRecordChecksum;
  }
}

}  // namespace vomsg::detail
