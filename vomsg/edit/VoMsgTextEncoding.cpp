#include "vomsg/edit/VoMsgTextEncoding.h"

#include <algorithm>
#include <memory>

#include "vomsg/edit/VoMsgDisclaimerText.h"
#include "vomsg/encoding/VoMsgTransferEncoding.h"
#include "vomsg/entity/VoMsgEntity.h"
#include "vomsg/entity/VoMsgEntityIterator.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgMemoryReader.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"
#include "vomsg/foundation/VoMsgResourceBytes.h"

namespace vomsg::detail {

namespace {

constexpr std::size_t kLongestLine = 998;  // RFC 5322, section 2.1.1
constexpr char kQuotedPrintable[] = "quoted-printable";
constexpr char kBase64[] = "base64";

bool hasLongLine(std::string_view text) {
  std::size_t begin = 0;
  while (begin < text.size()) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    const std::size_t terminator = end > begin && end < text.size() && text[end - 1] == '\r' ? 1 : 0;
    if (end - begin - terminator > kLongestLine) return true;
    begin = end + 1;
  }
  return false;
}

bool holdsDelimiter(std::string_view text, const BoundaryTable& delimiters) {
  if (text.find("--") == text.npos) return false;
  for (std::size_t at = 0; at < text.size();) {
    const std::string_view line = text.substr(at, text.find_first_of("\r\n", at) - at);
    if (delimiters.match(line).type != kVoBoundaryNone) return true;
    at += line.size() + 1;
  }
  return false;
}

bool fitsUnencoded(std::string_view text, const TransferRules& rules) {
  if (hasLongLine(text) || holdsDelimiter(text, rules.delimiters)) return false;
  if (equalNoCase(viewOf(rules.declared), "binary")) return true;
  if (text.find('\0') != text.npos) return false;
  return equalNoCase(viewOf(rules.declared), "8bit") || isAscii(text);
}

bool decodesTo(std::string_view encoded, TransferEncoding encoding, std::string_view text) {
  std::string block(encoded);
  VoMsgMemoryReader reader(reinterpret_cast<unsigned char*>(block.data()), static_cast<unsigned>(block.size()));
  VoMsgMemoryResource target(0u, nullptr, nullptr);
  std::string decoded;
  return reader.open() &&
         !voFailed(decodeTransfer(encoding, target, reader, static_cast<std::uint32_t>(block.size()))) &&
         !voFailed(readBytes(target, decoded)) && decoded == text;
}

// Encodes `text`, and decodes it again.
bool encodesExactly(std::string_view text, TransferEncoding encoding, std::string_view lineEnd, std::string& out) {
  std::string block(text);
  const VoMsgMemoryResource source(block.data(), static_cast<unsigned>(block.size()), nullptr, nullptr);
  VoMsgMemoryResource target(0u, nullptr, nullptr);
  {
    const std::unique_ptr<VoMsgBufferedWriter> writer(target.getOutputStream(VoMsgResourceLocator::dataPart));
    if (!writer || voFailed(encodeTransfer(encoding, *writer, source, nullptr, lineEnd, lineEnd)) || !writer->flush())
      return false;
  }
  return !voFailed(readBytes(target, out)) && decodesTo(out, encoding, text);
}

}  // namespace

bool isIdentityEncoding(const char* encoding) {
  if (!encoding) return true;
  for (const char* name : {"7bit", "8bit", "binary"})
    if (equalNoCase(encoding, name)) return true;
  return false;
}

BoundaryTable delimitersAround(VoMsgEntity& entity) {
  VoMsgEntity* root = &entity;
  while (root->getParentEntity()) root = root->getParentEntity();
  BoundaryTable delimiters;
  VoMsgEntityIterator walk(root);
  for (const VoMsgEntity* each = walk.first(); each; each = walk.next())
    if (const std::string_view boundary = viewOf(each->getRawHeaderParameterValue("Content-Type", "boundary"));
        !boundary.empty() && each->isMultipartEntity())
      delimiters.push(boundary);
  return delimiters;
}

bool encodeForTransfer(std::string_view text, const TransferRules& rules, EncodedText& out) {
  const auto differs = [&](const char* name) { return equalNoCase(viewOf(rules.declared), name) ? nullptr : name; };
  out.encoding = nullptr;
  if (isIdentityEncoding(rules.declared) && fitsUnencoded(text, rules)) {
    out.bytes = text;
    return true;
  }
  if (differs(kBase64) && encodesExactly(text, TransferEncoding::quotedPrintable, rules.lineEnd, out.bytes) &&
      !holdsDelimiter(out.bytes, rules.delimiters)) {
    out.encoding = differs(kQuotedPrintable);
    return true;
  }
  out.encoding = differs(kBase64);
  return encodesExactly(text, TransferEncoding::base64, rules.lineEnd, out.bytes);
}

}  // namespace vomsg::detail
