// An address header's value is cut into mailboxes in one pass (cutAddress); each mailbox is taken apart when
// somebody asks (_parseRawAddress). Both walk their text once, whatever it holds.
#include "vomsg/header/VoMsgUserAddress.h"

#include <algorithm>
#include <string>

#include "vomsg/charset/convert/VoMsgTextConversion.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/header/VoMsgEncodedWord.h"
#include "vomsg/header/VoMsgLineBreaks.h"

using vomsg::detail::Conversion;
using vomsg::detail::CString;
using vomsg::detail::guardedOr;

namespace {

constexpr char kUsAscii[] = "us-ascii";
constexpr char kIndent[] = "    ";
constexpr std::string_view kBlanks = " \t";

std::string_view withoutTrailingBlanks(std::string_view text) {
  return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

// Erases "(...)" again and again, from the first "(" to the first ")", as long as they stand in that order; comments
// do not nest. What was passed over holds no parenthesis, so one pass finds what starting anew would find.
std::string withoutComments(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  while (true) {
    const std::size_t open = text.find_first_of("()");
    const std::size_t close = open != text.npos && text[open] == '(' ? text.find(')', open) : text.npos;
    if (close == text.npos) return out.append(text);
    out.append(text.substr(0, open));
    text.remove_prefix(close + 1);
  }
}

}  // namespace

VoMsgUserAddress::VoMsgUserAddress(const char* raw)
    : mRawAddress(guardedOr(CString(), [&] {
        return vomsg::detail::hasLineBreak(vomsg::detail::viewOf(raw))
                   ? vomsg::detail::copyCString(vomsg::detail::joinLines(raw))
                   : vomsg::detail::copyCStringOrNull(raw);
      })) {}

VoMsgUserAddress::~VoMsgUserAddress() = default;

VoMsgUserAddress* VoMsgUserAddress::copy() const {
  return guardedOr(static_cast<VoMsgUserAddress*>(nullptr), [&]() -> VoMsgUserAddress* {
    auto copied = std::make_unique<VoMsgUserAddress>(getRawAddress());
    copied->_setDefaultCharset(getDefaultCharset());
    const bool complete =
        (copied->getRawAddress() || !getRawAddress()) && (copied->getDefaultCharset() || !getDefaultCharset());
    return complete ? copied.release() : nullptr;
  });
}

const char* VoMsgUserAddress::getAddress() { return _parseRawAddress() ? mAddress.get() : mRawAddress.get(); }

const char* VoMsgUserAddress::getRawName() {
  const char* const name = _parseRawAddress() && mRawName ? mRawName->getString() : nullptr;
  return name ? name : "";
}

const char* VoMsgUserAddress::getName(const char* charset) {
  if (!charset || !_parseRawAddress() || !mRawName) return "";
  return guardedOr(static_cast<const char*>(""), [&]() -> const char* {
    if (const char* known = mRawName->getString(charset)) return known;
    std::string name(vomsg::detail::viewOf(mRawName->getString()));
    if (!name.empty() && name.front() == '"') name.erase(std::remove(name.begin(), name.end(), '"'), name.end());
    if (name.find("=?") != name.npos) {
      char* decoded = nullptr;
      const VoErrorCode code = voDecodeHeaderValue(charset, name.c_str(), &decoded);
      const CString owner(decoded);
      if (voFailed(code) || !decoded) return "";
      mRawName->addString(decoded, charset);
    } else {
      std::string converted;
      const char* const source = mDefaultCharset ? mDefaultCharset.get() : kUsAscii;
      const bool done = vomsg::detail::convertText(converted, charset, source, name) == Conversion::done;
      mRawName->addString(done ? converted.c_str() : name.c_str(), charset);
    }
    const char* const added = mRawName->getString(charset);
    return added ? added : "";
  });
}

void VoMsgUserAddress::_setDefaultCharset(const char* charset) {
  mDefaultCharset = vomsg::detail::copyCStringOrNull(charset);
  // Converted names came from the charset that held until now.
  if (!mRawName) return;
  mRawName.reset();
  mAddress.reset();
  mParsed = Parsed::notYet;
}

void VoMsgUserAddress::dumpUserAddress(std::FILE* out) const {
  if (!out) return;
  const auto line = [&](const char* label, const char* value) {
    std::fprintf(out, "%s%s%s: %s\n", kIndent, kIndent, label, value ? value : "");
  };
  line("mRawAddress       ", mRawAddress.get());
  line("mAddress          ", mAddress.get());
  line("mRawName          ", mRawName ? mRawName->getString() : nullptr);
}

bool VoMsgUserAddress::_parseRawAddress() {
  if (mParsed != Parsed::notYet) return mParsed == Parsed::done;
  mParsed = Parsed::failed;
  if (!mRawAddress) return false;
  const bool parsed = guardedOr(false, [&] {
    const std::string bare = withoutComments(mRawAddress.get());
    std::string_view text = withoutTrailingBlanks(bare);
    if (text.empty() || text.back() != '>') return false;
    text.remove_suffix(1);
    if (!text.empty() && text.front() == '<') {
      mAddress = vomsg::detail::copyCString(text.substr(1));
      return mAddress != nullptr;
    }
    // The last "<" opens the address: a quoted name may hold others.
    const std::size_t open = text.rfind('<');
    if (open == text.npos) return false;
    const std::size_t colon = text.find(':');
    mAddress = vomsg::detail::copyCString(text.substr((colon == text.npos ? open : colon) + 1));
    if (!mAddress) return false;
    const std::string_view name = withoutTrailingBlanks(text.substr(0, open));
    // A name of one character is no name, on purpose.
    if (name.size() > 1) mRawName = std::make_unique<VoMsgMultiString>(std::string(name).c_str());
    return true;
  });
  if (parsed) mParsed = Parsed::done;
  return parsed;
}

namespace vomsg::detail {

// A separator cuts when an even number of quotes and no unclosed "<" stand between the start of the piece and it. A
// quote does not count behind a backslash, unless that is the second of two; only two bytes are looked at, so of
// three backslashes the last escapes nothing. A "<" is closed by any later ">", and quotes protect neither.
bool cutAddress(std::string_view& rest, std::string_view& address) {
  while (!rest.empty()) {
    bool quoted = false;
    bool angled = false;
    std::size_t at = 0;
    for (; at < rest.size(); ++at) {
      const char c = rest[at];
      if (c == '"') {
        const bool escaped = at > 0 && rest[at - 1] == '\\' && !(at > 1 && rest[at - 2] == '\\');
        if (!escaped) quoted = !quoted;
      } else if (c == '<' || c == '>') {
        angled = c == '<';
      } else if ((c == ',' || c == ';') && !quoted && !angled) {
        break;
      }
    }
    const bool isLast = at == rest.size();
    address = rest.substr(0, at);
    rest.remove_prefix(isLast ? at : at + 1);
    address.remove_prefix(std::min(address.find_first_not_of(isLast ? " \t\r\n" : " "), address.size()));
    if (!address.empty()) return true;
  }
  return false;
}

}  // namespace vomsg::detail
