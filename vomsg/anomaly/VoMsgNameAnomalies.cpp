// A file name is given up to four times (name and filename, each plain or in the form of RFC 2231), and its extension
// is what decides about its content for most people. Names are compared decoded, as the entity hands them out.

#include <optional>

#include "vomsg/anomaly/VoMsgValueAnomalies.h"
#include "vomsg/entity/VoMsgEntity.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/header/VoMsgEncodedWord.h"

namespace vomsg::detail {
namespace {

constexpr std::size_t kMaxExtension = 8;

// What follows the last dot, in lower case; empty when nothing there looks like an extension.
std::string extensionOf(std::string_view name) {
  while (!name.empty() && (isBlank(name.back()) || name.back() == '.')) name.remove_suffix(1);
  const std::size_t dot = name.rfind('.');
  if (dot == name.npos || name.size() - dot - 1 > kMaxExtension) return {};
  std::string extension;
  for (const char c : name.substr(dot + 1)) {
    if (isBlank(c)) return {};
    extension += toLower(c);
  }
  return extension;
}

std::string percentDecoded(std::string_view text) {
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const int high = i + 2 < text.size() ? voRfc2047HexCharToInt(static_cast<unsigned char>(text[i + 1])) : -1;
    const int low = i + 2 < text.size() ? voRfc2047HexCharToInt(static_cast<unsigned char>(text[i + 2])) : -1;
    if (text[i] != '%' || high < 0 || low < 0) {
      bytes += text[i];
      continue;
    }
    bytes += static_cast<char>(high * 16 + low);
    i += 2;
  }
  return bytes;
}

// One parameter in all the forms that it is given in.
struct GivenName {
  const RawField* field = nullptr;
  std::optional<RawParameter> plain;
  std::string pieces;  // of the other form, put together and decoded
  bool hasPieces = false;
  RawParameter firstPiece;

  bool isGiven() const { return plain || hasPieces; }
  const RawParameter& where() const { return plain ? *plain : firstPiece; }
};

GivenName givenName(const RawField& field, std::string_view parameter) {
  GivenName given;
  given.field = &field;
  bool hasComment = false;
  for (const RawParameter& one : rawParameters(field.value, hasComment)) {
    if (equalNoCase(one.name, parameter)) {
      if (!given.plain) given.plain = one;
    } else if (startsWithNoCase(one.name, parameter) && one.name[parameter.size()] == '*') {
      if (!given.hasPieces) given.firstPiece = one;
      std::string_view text = one.text;
      const bool isEncoded = one.name.back() == '*';
      const std::size_t language = isEncoded && !given.hasPieces ? text.find('\'') : text.npos;
      const std::size_t begin = language == text.npos ? text.npos : text.find('\'', language + 1);
      if (begin != text.npos) text.remove_prefix(begin + 1);
      given.pieces += isEncoded ? percentDecoded(text) : std::string(text);
      given.hasPieces = true;
    }
  }
  return given;
}

// The text of a raw name that stands outside of its encoded words, when there are such words.
std::string outsideWords(std::string_view raw) {
  constexpr std::size_t kMaxName = 4096;  // a word that never ends is searched from each beginning
  raw = raw.substr(0, kMaxName);
  std::string text;
  bool hasWord = false;
  for (std::size_t at = 0; at < raw.size();) {
    std::size_t end = raw.npos;
    if (raw.substr(at, 2) == "=?") {
      const std::size_t charset = raw.find('?', at + 2);
      const std::size_t encoding = charset == raw.npos ? charset : raw.find('?', charset + 1);
      if (encoding != raw.npos) end = raw.find("?=", encoding + 1);
    }
    if (end == raw.npos) {
      text += raw[at++];
    } else {
      hasWord = true;
      at = end + 2;
    }
  }
  return hasWord ? text : std::string();
}

void findForms(const GivenName& given, std::uint64_t base, const char* decoded, AnomalySink& sink) {
  const RawParameter& where = given.where();
  const std::uint64_t at = base + given.field->valueOffset + where.offset;
  if (decoded) findNameCharacters(decoded, at, where.length, sink);
  if (!given.plain) return;
  if (given.hasPieces) {
    const bool bothAscii =
        isAscii(given.pieces) && isAscii(given.plain->text) && given.plain->text.find("=?") == std::string::npos;
    const std::string extension = extensionOf(decoded ? decoded : given.plain->text.c_str());
    if (extension != extensionOf(given.pieces) || (bothAscii && given.pieces != given.plain->text))
      sink.add(kVoAnomalyNameFormsDisagree, at, where.length);
  }
  const std::string visible = extensionOf(outsideWords(given.plain->text));
  if (decoded && !visible.empty() && visible != extensionOf(decoded))
    sink.add(kVoAnomalyNameExtensionHidden, at, where.length);
}

bool isControl(char32_t c) { return c < 0x20 || (c >= 0x7F && c < 0xA0); }
bool isBidirectional(char32_t c) { return (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069); }

// The character at `at`; steps over it. A byte that is no UTF-8 stands for itself, as U+FFFD.
char32_t nextCharacter(std::string_view text, std::size_t& at) {
  const auto lead = static_cast<unsigned char>(text[at++]);
  if (lead < 0x80) return lead;
  const unsigned count = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC2 ? 1 : 0;
  char32_t code = count == 0 ? 0xFFFD : lead & (0x3Fu >> count);
  for (unsigned i = 0; i < count; ++i) {
    if (at >= text.size() || (static_cast<unsigned char>(text[at]) & 0xC0) != 0x80) return 0xFFFD;
    code = code << 6 | (static_cast<unsigned char>(text[at++]) & 0x3Fu);
  }
  return code;
}

}  // namespace

void findNameCharacters(std::string_view name, std::uint64_t offset, std::uint64_t length, AnomalySink& sink) {
  bool hasControl = false, hasBidirectional = false, hasPath = false;
  for (std::size_t at = 0; at < name.size();) {
    const char32_t c = nextCharacter(name, at);
    hasControl = hasControl || isControl(c);
    hasBidirectional = hasBidirectional || isBidirectional(c);
    hasPath = hasPath || c == '/' || c == '\\';
  }
  if (hasControl) sink.add(kVoAnomalyNameControl, offset, length);
  if (hasBidirectional) sink.add(kVoAnomalyNameBidirectional, offset, length);
  if (hasPath) sink.add(kVoAnomalyNamePath, offset, length);
}

void findNameAnomalies(const std::vector<RawField>& fields, std::uint64_t base, const VoMsgEntity& entity,
                       AnomalySink& sink) {
  GivenName name, filename;
  for (const RawField& field : fields) {
    if (equalNoCase(field.name, "Content-Type")) name = givenName(field, "name");
    if (equalNoCase(field.name, "Content-Disposition") && !filename.field) filename = givenName(field, "filename");
  }
  // What one call hands out may go with the next one.
  const auto decodedOf = [&](const GivenName& given, const char* field, const char* parameter) {
    const char* const text = given.isGiven() ? entity.getHeaderParameterValue(field, parameter, "utf-8") : nullptr;
    return text ? std::optional<std::string>(text) : std::nullopt;
  };
  const std::optional<std::string> ofType = decodedOf(name, "Content-Type", "name");
  const std::optional<std::string> ofDisposition = decodedOf(filename, "Content-Disposition", "filename");
  if (filename.isGiven()) findForms(filename, base, ofDisposition ? ofDisposition->c_str() : nullptr, sink);
  if (name.isGiven() && ofType != ofDisposition) findForms(name, base, ofType ? ofType->c_str() : nullptr, sink);
  if (!ofType || !ofDisposition || *ofType == *ofDisposition) return;
  const RawParameter& where = name.where();
  const bool otherExtension = extensionOf(*ofType) != extensionOf(*ofDisposition);
  sink.add(otherExtension ? kVoAnomalyNameExtensionDiffers : kVoAnomalyNameDiffers,
           base + name.field->valueOffset + where.offset, where.length);
}

}  // namespace vomsg::detail
