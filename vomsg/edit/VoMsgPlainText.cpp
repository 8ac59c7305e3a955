// Plain text: lines before the first line or after the last one.

#include "vomsg/edit/VoMsgDisclaimerText.h"
#include "vomsg/edit/VoMsgTextKind.h"

namespace vomsg::detail {

namespace {

std::string dressPlain(std::string_view disclaimer) {
  std::string text(disclaimer);
  if (!endsLine(text)) text += "\r\n";
  return text;
}

bool insertPlain(std::string_view text, std::string_view dressed, bool atTop, bool isUtf8, std::string& out) {
  out.clear();
  out.reserve(text.size() + dressed.size() + 2);
  const std::size_t at = atTop ? startOfText(text, isUtf8) : text.size();
  out += text.substr(0, at);
  if (!atTop && !text.empty() && !endsLine(text)) out += "\r\n";
  out += dressed;
  out += text.substr(at);
  return true;
}

}  // namespace

const TextKind kPlainText = {dressPlain, insertPlain};

std::string_view withoutLastLineEnd(std::string_view text) {
  if (!endsLine(text)) return text;
  const bool isPair = text.size() > 1 && text.back() == '\n' && text[text.size() - 2] == '\r';
  text.remove_suffix(isPair ? 2 : 1);
  return text;
}

std::size_t startOfText(std::string_view text, bool isUtf8) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  return isUtf8 && text.substr(0, kByteOrderMark.size()) == kByteOrderMark ? kByteOrderMark.size() : 0;
}

}  // namespace vomsg::detail
