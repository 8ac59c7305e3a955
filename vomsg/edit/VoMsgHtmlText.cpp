// HTML, read just well enough to know where a reader will see text: tags are found outside comments, scripts, styles
// and the other elements whose content is no markup, and attribute values may hold ">". One pass; what is opened and
// never closed reaches to the end, as browsers have it, so nothing may be put behind its start.

#include "vomsg/edit/VoMsgTextKind.h"
#include "vomsg/foundation/VoMsgAscii.h"

namespace vomsg::detail {

namespace {

constexpr std::string_view kTableOpen = "<table><tr><td bgcolor=#ffffff><font color=#000000>";
constexpr std::string_view kTableClose = "</font></td></tr></table>";
constexpr std::size_t kNowhere = std::string_view::npos;

// Elements whose content is text up to their own end tag.
constexpr std::string_view kRawElements[] = {"script", "style",  "textarea", "title",
                                             "xmp",    "iframe", "noembed",  "noframes"};

struct Places {
  std::size_t behindBodyTag = kNowhere;
  std::size_t behindHeadEnd = kNowhere;
  std::size_t bodyEnd = kNowhere;  // the last one
  std::size_t htmlEnd = kNowhere;  // the last one
  std::size_t end = 0;             // of what is not inside something unclosed
};

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool endsName(char c) { return isBlank(c) || isLineEnd(c) || c == '\f' || c == '/' || c == '>'; }

class HtmlScanner {
 public:
  explicit HtmlScanner(std::string_view text) : mText(text) {}

  Places scan() {
    while (true) {
      const std::size_t open = mText.find('<', mAt);
      mPlaces.end = mText.size();
      if (open == kNowhere) return mPlaces;
      mAt = passMarkup(open);
      if (mAt == kNowhere) {
        mPlaces.end = open;
        return mPlaces;
      }
    }
  }

 private:
  // The position behind the markup at `open`; nowhere when it is not closed.
  std::size_t passMarkup(std::size_t open) {
    const std::string_view rest = mText.substr(open + 1);
    if (rest.empty()) return open + 1;
    if (rest.substr(0, 3) == "!--") return passComment(open + 4);
    if (rest[0] == '!' || rest[0] == '?') return behind(mText.find('>', open));
    const bool isEnd = rest[0] == '/';
    const std::size_t name = open + (isEnd ? 2 : 1);
    if (name >= mText.size() || !isLetter(mText[name])) return open + 1;
    return passTag(open, name, isEnd);
  }

  std::size_t passTag(std::size_t open, std::size_t name, bool isEnd) {
    std::size_t nameEnd = name;
    while (nameEnd < mText.size() && !endsName(mText[nameEnd])) ++nameEnd;
    const std::size_t close = behindAttributes(nameEnd);
    if (close == kNowhere) return kNowhere;
    const std::string_view element = mText.substr(name, nameEnd - name);
    if (isEnd) {
      if (equalNoCase(element, "body")) mPlaces.bodyEnd = open;
      if (equalNoCase(element, "html")) mPlaces.htmlEnd = open;
      if (equalNoCase(element, "head") && mPlaces.behindHeadEnd == kNowhere) mPlaces.behindHeadEnd = close;
      return close;
    }
    if (equalNoCase(element, "body") && mPlaces.behindBodyTag == kNowhere) mPlaces.behindBodyTag = close;
    for (const std::string_view raw : kRawElements)
      if (equalNoCase(element, raw)) return passRawElement(close, raw);
    return close;
  }

  // Past the ">" of a tag; one in a quoted attribute value does not count.
  std::size_t behindAttributes(std::size_t at) const {
    while (at < mText.size()) {
      at = mText.find_first_of(">=", at);
      if (at == kNowhere) return kNowhere;
      if (mText[at] == '>') return at + 1;
      ++at;
      while (at < mText.size() && (isBlank(mText[at]) || isLineEnd(mText[at]))) ++at;
      if (at >= mText.size() || (mText[at] != '"' && mText[at] != '\'')) continue;
      at = behind(mText.find(mText[at], at + 1));
    }
    return kNowhere;
  }

  std::size_t passComment(std::size_t at) const {
    if (mText.substr(at, 1) == ">") return at + 1;
    if (mText.substr(at, 2) == "->") return at + 2;
    for (at = mText.find("--", at); at != kNowhere; at = mText.find("--", at + 1)) {
      if (mText.substr(at + 2, 1) == ">") return at + 3;
      if (mText.substr(at + 2, 2) == "!>") return at + 4;
    }
    return kNowhere;
  }

  std::size_t passRawElement(std::size_t at, std::string_view element) const {
    for (at = mText.find("</", at); at != kNowhere; at = mText.find("</", at + 2)) {
      const std::size_t end = at + 2 + element.size();
      if (end < mText.size() && equalNoCase(mText.substr(at + 2, element.size()), element) && endsName(mText[end]))
        return behind(mText.find('>', end));
    }
    return kNowhere;
  }

  static std::size_t behind(std::size_t at) { return at == kNowhere ? at : at + 1; }

  const std::string_view mText;
  std::size_t mAt = 0;
  Places mPlaces;
};

std::size_t placeFor(std::string_view html, bool atTop, bool isUtf8) {
  const Places places = HtmlScanner(html).scan();
  if (!atTop) {
    if (places.bodyEnd != kNowhere) return places.bodyEnd;
    return places.htmlEnd != kNowhere ? places.htmlEnd : places.end;
  }
  if (places.behindBodyTag != kNowhere) return places.behindBodyTag;
  return places.behindHeadEnd != kNowhere ? places.behindHeadEnd : startOfText(html, isUtf8);
}

void appendEscaped(std::string& out, char c) {
  switch (c) {
    case '&':
      out += "&amp;";
      break;
    case '<':
      out += "&lt;";
      break;
    case '>':
      out += "&gt;";
      break;
    case '"':
      out += "&quot;";
      break;
    default:
      out += c;
  }
}

std::string dressHtml(std::string_view disclaimer) {
  std::string out(kTableOpen);
  for (const char c : withoutLastLineEnd(disclaimer)) {
    if (c == '\n')
      out += "<br>";
    else if (c != '\r')
      appendEscaped(out, c);
  }
  out += kTableClose;
  return out;
}

bool insertHtml(std::string_view html, std::string_view dressed, bool atTop, bool isUtf8, std::string& out) {
  const std::size_t at = placeFor(html, atTop, isUtf8);
  out.clear();
  out.reserve(html.size() + dressed.size());
  out += html.substr(0, at);
  out += dressed;
  out += html.substr(at);
  return true;
}

}  // namespace

const TextKind kHtmlText = {dressHtml, insertHtml};

}  // namespace vomsg::detail
