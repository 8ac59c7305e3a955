#include "vomsg/anomaly/VoMsgContentAnomalies.h"

#include <algorithm>
#include <string>

#include "vomsg/charset/convert/VoCharsetName.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"

namespace vomsg::detail {
namespace {

// Whether bytes, fed in pieces, are UTF-8 (RFC 3629): no overlong forms, no surrogates, nothing above U+10FFFF.
class Utf8Check {
 public:
  void feed(std::string_view piece) {
    for (const char c : piece) mIsValid = mIsValid && take(static_cast<unsigned char>(c));
  }
  bool isValid() const { return mIsValid && mMissing == 0; }

 private:
  bool take(unsigned char c) {
    if (mMissing > 0) {
      if (c < mLow || c > mHigh) return false;
      mLow = 0x80;
      mHigh = 0xBF;
      --mMissing;
      return true;
    }
    if (c < 0x80) return true;
    if (c < 0xC2 || c > 0xF4) return false;
    mMissing = c < 0xE0 ? 1 : c < 0xF0 ? 2 : 3;
    mLow = c == 0xE0 ? 0xA0 : c == 0xF0 ? 0x90 : 0x80;
    mHigh = c == 0xED ? 0x9F : c == 0xF4 ? 0x8F : 0xBF;
    return true;
  }

  bool mIsValid = true;
  unsigned mMissing = 0;
  unsigned char mLow = 0x80, mHigh = 0xBF;
};

enum class Family : std::uint8_t { executable, image, document, archive };

struct Signature {
  std::string_view bytes;
  Family family;
  std::string_view type;  // of images: the one that it is
};
using namespace std::string_view_literals;
constexpr Signature kSignatures[] = {
    {"\x7F\x45LF"sv, Family::executable, {}},
    {"\xCF\xFA\xED\xFE"sv, Family::executable, {}},
    {"\xCE\xFA\xED\xFE"sv, Family::executable, {}},
    {"\x89PNG\r\n\x1A\n"sv, Family::image, "image/png"},
    {"\xFF\xD8\xFF"sv, Family::image, "image/jpeg"},
    {"GIF87a"sv, Family::image, "image/gif"},
    {"GIF89a"sv, Family::image, "image/gif"},
    {"%PDF-"sv, Family::document, {}},
    {"\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"sv, Family::document, {}},
    {"PK\x03\x04"sv, Family::archive, {}},
    {"Rar!\x1A\x07"sv, Family::archive, {}},
    {"7z\xBC\xAF\x27\x1C"sv, Family::archive, {}},
    {"\x1F\x8B\x08"sv, Family::archive, {}},
};

// A program for DOS or its successors: two letters alone would be a word, so the header must be there with the zeros
// that it always has.
bool isDosProgram(std::string_view bytes) {
  return bytes.size() >= 64 && bytes.substr(0, 2) == "MZ" && bytes.substr(0, 64).find('\0') != bytes.npos;
}

constexpr std::string_view kHarmlessTypes[] = {"text/",           "image/",          "audio/",
                                               "video/",          "application/pdf", "application/msword",
                                               "application/rtf", "message/",        "font/"};

bool startsWithAny(std::string_view type, const auto& prefixes) {
  return std::any_of(std::begin(prefixes), std::end(prefixes),
                     [&](std::string_view prefix) { return startsWithNoCase(type, prefix); });
}

bool agrees(const Signature& signature, std::string_view type) {
  constexpr std::string_view kMedia[] = {"text/", "image/", "audio/", "video/"};
  if (signature.family != Family::image) return !startsWithAny(type, kMedia);
  if (!startsWithAny(type, kMedia)) return true;  // "application/octet-stream" and its like say nothing
  if (equalNoCase(type, "image/jpg") || equalNoCase(type, "image/pjpeg")) type = "image/jpeg";
  if (equalNoCase(type, "image/x-png")) type = "image/png";
  return equalNoCase(type, signature.type);
}

}  // namespace

void findTextAnomalies(VoMsgBufferedReader& reader, std::uint64_t size, const DecodedContent& content,
                       AnomalySink& sink) {
  const auto add = [&](VoMsgAnomalyCode code) { sink.add(code, content.bodyOffset, content.bodySize); };
  const std::string charset(content.charset);
  if (charset.empty()) return;
  if (equalNoCase(charset, "utf-7") || equalNoCase(charset, "unicode-1-1-utf-7")) return add(kVoAnomalyTextUtf7);
  if (!voIsRightCharsetName(charset.c_str())) return add(kVoAnomalyTextUnknownCharset);
  const bool isUtf8 = voIsEqualCharsetName(charset.c_str(), "utf-8");
  const bool isAsciiLabel = voIsEqualCharsetName(charset.c_str(), "us-ascii");
  const bool isUtf16 = equalNoCase(charset, "utf-16");
  if ((!isUtf8 && !isAsciiLabel && !isUtf16) || reader.rseek(0, 0) < 0) return;
  Utf8Check utf8;
  bool isFirst = true;
  char buffer[8192];
  while (size > 0) {
    const unsigned got = reader.read(buffer, static_cast<unsigned>(std::min<std::uint64_t>(size, sizeof buffer)));
    if (got == 0) break;
    const std::string_view piece(buffer, got);
    if (isUtf16) {
      if (isFirst && piece.substr(0, 2) != "\xFE\xFF" && piece.substr(0, 2) != "\xFF\xFE")
        add(kVoAnomalyTextUtf16NoMark);
      return;
    }
    if (isAsciiLabel && !isAscii(piece)) return add(kVoAnomalyText8BitInAscii);
    if (isUtf8) utf8.feed(piece);
    isFirst = false;
    size -= got;
  }
  if (isUtf8 && !utf8.isValid()) add(kVoAnomalyTextNotUtf8);
}

void findTypeAnomalies(VoMsgBufferedReader& reader, std::uint64_t size, const DecodedContent& content,
                       AnomalySink& sink) {
  if (size == 0 || content.type.empty() || reader.rseek(0, 0) < 0) return;
  char buffer[256];
  const unsigned got = reader.read(buffer, static_cast<unsigned>(std::min<std::uint64_t>(size, sizeof buffer)));
  const std::string_view bytes(buffer, got);
  const auto found = std::find_if(std::begin(kSignatures), std::end(kSignatures), [&](const Signature& signature) {
    return bytes.substr(0, signature.bytes.size()) == signature.bytes;
  });
  const bool isKnown = found != std::end(kSignatures);
  if (isDosProgram(bytes) || (isKnown && found->family == Family::executable)) {
    if (startsWithAny(content.type, kHarmlessTypes))
      sink.add(kVoAnomalyExecutableDisguised, content.bodyOffset, content.bodySize);
  } else if (isKnown && !agrees(*found, content.type)) {
    sink.add(kVoAnomalyContentTypeDiffers, content.bodyOffset, content.bodySize);
  }
}

}  // namespace vomsg::detail
