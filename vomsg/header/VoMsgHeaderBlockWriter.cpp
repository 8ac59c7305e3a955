// How a header block is written anew. Which way a value goes is decided field by field:
// - An address header: its addresses, one a line; group syntax and a list that a limit cut short as they stand.
// - Message-ID and Reply-To: as they stand, because some software takes a folded one for another.
// - Subject: as it stands on request, and folded while nobody changed it.
// - A value with encoded words: decoded and encoded anew, so that words are full and their charset has one spelling;
//   where that would change what a reader sees, folded as it stands.
// - Everything else: folded.
#include <algorithm>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "vomsg/encoding/VoBase64Decoder.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgLogLine.h"
#include "vomsg/foundation/VoMsgOptions.h"
#include "vomsg/header/VoMsgEncodedWord.h"
#include "vomsg/header/VoMsgEntityHeader.h"
#include "vomsg/header/VoMsgHeaderLineWriter.h"
#include "vomsg/header/VoMsgHeaderName.h"
#include "vomsg/header/VoMsgLineBreaks.h"
#include "vomsg/header/VoMsgStructuredValue.h"

using namespace vomsg::detail;

namespace {

constexpr char kLogSource[] = "VoMsgEntityHeader";

bool isOneOf(std::string_view name, std::initializer_list<std::string_view> names) {
  return std::any_of(names.begin(), names.end(), [name](std::string_view other) { return equalNoCase(name, other); });
}

// A decoded NUL would end the text and take the rest of the value with it.
bool holdsNul(const EncodedWordSpan& word) {
  if (toLower(word.encoding) == 'q') return word.text.find("=00") != word.text.npos;
  std::string bytes(word.text.size() / 4 * 3 + 3 + kBase64Slack, '\0');
  bytes.resize(Base64Decoder().decode(word.text.data(), word.text.size(), bytes.data()));
  return bytes.find('\0') != bytes.npos;
}

// An address, a message id or a URL beside the encoded words would be one no longer when all is encoded as a whole; and
// where nothing is a word, what looks like one names no charset.
bool canBeEncodedAsAWhole(std::string_view raw) {
  std::size_t at = 0;
  while (true) {
    const EncodedWordSpan word = findEncodedWord(raw, at);
    const std::string_view between = raw.substr(at, std::min(word.begin, raw.size()) - at);
    if (between.find_first_of("<@") != raw.npos) return false;
    if (word.begin == raw.npos) return at > 0;
    if (holdsNul(word)) return false;
    at = word.end;
  }
}

// The value encoded anew in its own charset; nothing where a reader would then see something else, or where a text
// that came from outside would begin a line of its own.
std::optional<std::string> encodedAnew(const VoMsgHeaderField& field) {
  const std::string raw(viewOf(field.getRawFieldValue()));
  if (hasMixedCharsets(raw.c_str()) || !canBeEncodedAsAWhole(raw)) return std::nullopt;
  VoMsgHeaderField copy(field.getName(), raw.c_str());
  const char* charset = nullptr;
  const char* const decoded = copy.getFieldValueEx(charset);
  if (!decoded || !charset || hasLineBreak(decoded)) return std::nullopt;
  const std::string text(decoded);
  VoMsgHeaderField made(field.getName(), "");
  if (voFailed(made.setFieldValue(text.c_str(), std::string(charset).c_str(), nullptr))) return std::nullopt;
  const std::string encoded(viewOf(made.getRawFieldValue()));
  if (isAscii(raw) && !isAscii(encoded)) return std::nullopt;
  VoMsgHeaderField check(field.getName(), encoded.c_str());
  const char* const reread = check.getFieldValueEx(charset);
  if (!reread || text != reread) return std::nullopt;
  return encoded;
}

// ";" outside quotes: "undisclosed-recipients:;" and the like. In a value that a caller set it may be a separator too,
// so there it takes the ":" that opens a group.
bool hasGroupSyntax(std::string_view value, bool isChanged) {
  bool isQuoted = false;
  bool isOpen = !isChanged;
  for (std::size_t i = 0; i < value.size(); ++i) {
    switch (value[i]) {
      case '\\':
        ++i;
        break;
      case '"':
        isQuoted = !isQuoted;
        break;
      case ':':
        isOpen = isOpen || !isQuoted;
        break;
      case ';':
        if (!isQuoted && isOpen) return true;
        break;
      default:
        break;
    }
  }
  return false;
}

// The main value of a structured field as it was read has lost its quotes. Where they kept its blanks or a ";" together
// they are put back, or it would be read as something else.
bool needsItsQuotes(const VoMsgHeaderField& field, const std::string& quoted) {
  if (field.isNewHeader() != 0 || !isStructuredName(headerNameOf(viewOf(field.getName())))) return false;
  const std::string_view raw = viewOf(field.getRawFieldValue());
  StructuredValue read;
  parseStructuredValue(read, raw, 1);
  if (read.value == raw && read.count == 0) return false;
  parseStructuredValue(read, quoted, 1);
  return read.value == raw && read.count == 0;
}

void writeValue(HeaderLineWriter& out, const VoMsgHeaderField& field) {
  const std::string_view name = viewOf(field.getName());
  const std::string_view raw = viewOf(field.getRawFieldValue());
  const bool isChanged = field.isNewHeader() != 0;
  const bool isSubject = equalNoCase(name, "Subject");
  if (isOneOf(name, {"Message-ID", "Reply-To"}) || (isSubject && (VoMsgExtraOption & kVoOptionRawSubject))) {
    out.write(hasLineBreak(raw) ? repairFolds(raw) : std::string(raw));
    return;
  }
  const bool isEncodedAsSet = isOneOf(name, {"Sender", "Disposition-Notification-To", "Return-Receipt-To"});
  if (field.hasEncodedWord() && !isEncodedAsSet && (isChanged || !isSubject)) {
    // What a setter stored is encoded and folded already.
    if (raw.find("=?") == raw.npos) return out.write(repairFolds(raw));
    if (const auto encoded = encodedAnew(field)) return out.write(*encoded);
  }
  std::string quoted(1, '"');
  quoted.append(raw).append(1, '"');
  out.writeFolded(needsItsQuotes(field, quoted) ? quoted : raw, false);
}

void writeParameters(HeaderLineWriter& out, const VoMsgHeaderField& field) {
  for (unsigned i = 0; i < field.countParameter(); ++i) {
    const char* const name = field.getParameterNameAt(i);
    if (!name) continue;
    out.write(";");
    out.fold();
    out.writeFolded(joinLines(name), false);
    out.write("=");
    const std::string value = quoteParameterValue(viewOf(field.getRawParameterValueAt(i)));
    if (equalNoCase(name, "boundary"))
      out.write(hasLineBreak(value) ? joinLines(value) : value);
    else
      out.writeFolded(value, false);
  }
}

}  // namespace

VoErrorCode VoMsgEntityHeader::writeNewHeaderPart(VoMsgBufferedWriter* writer) {
  const VoErrorCode code = guarded([&] {
    if (!writer) return kVoBadArgument;
    settleAddresses();
    HeaderLineWriter out(*writer);
    bool isWritten[kAddressNames] = {};
    for (const auto& field : mpHeaderList) {
      if (!field->getName()) continue;
      const HeaderName name = headerNameOf(field->getName());
      if (isAddressName(name) && std::exchange(isWritten[static_cast<std::size_t>(name)], true)) continue;
      out.writeFolded(field->getName(), false);
      out.write(": ");
      if (isAddressName(name))
        writeAddresses(out, name);
      else
        writeValue(out, *field);
      writeParameters(out, *field);
      out.endField();
      if (out.failed()) return kVoWriteFailed;
    }
    out.endField();
    return out.failed() ? kVoWriteFailed : kVoSuccess;
  });
  return VO_LOGGED(_logTag(), code);
}

// One list, whatever the number of its fields: RFC 5322 allows one of each. They are united before they are cut, for so
// will a reader see them: a quote left open in one swallows the next.
void VoMsgEntityHeader::writeAddresses(HeaderLineWriter& out, HeaderName name) const {
  std::string united;
  bool staysWhole = !mAddressLists[static_cast<std::size_t>(name)].rest.empty();
  for (const auto& field : mpHeaderList) {
    if (headerNameOf(viewOf(field->getName())) != name) continue;
    const std::string_view value = viewOf(field->getRawFieldValue());
    if (value.empty()) continue;
    united.append(united.empty() ? "" : ", ").append(value);
    staysWhole = staysWhole || hasGroupSyntax(value, field->isNewHeader() != 0);
  }
  if (staysWhole) return out.writeFolded(united, true);
  std::string_view rest = united;
  std::string_view address;
  for (bool isFirst = true; cutAddress(rest, address); isFirst = false) {
    if (!isFirst) {
      out.write(",");
      out.fold();
    }
    out.writeFolded(address, true);
  }
}
