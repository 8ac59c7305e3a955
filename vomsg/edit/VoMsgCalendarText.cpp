// Invitations (RFC 5545): content lines, folded at 75 octets, in components that nest. The description of an event is
// extended; that of an alarm inside it is another one. All lines but those of the description stay as they are.

#include <algorithm>

#include "vomsg/edit/VoMsgTextKind.h"
#include "vomsg/foundation/VoMsgAscii.h"

namespace vomsg::detail {

namespace {

constexpr std::string_view kSeparator = "*~*~*~*~*~*~*~*~*~*";
constexpr std::string_view kNewLine = "\\n";
constexpr std::string_view kProperty = "DESCRIPTION";
constexpr std::size_t kLongestLine = 75;  // octets, without the line end

// A line that may be folded: `raw` has all of it, line ends included.
struct ContentLine {
  std::string_view raw;
  std::string text;  // unfolded
  std::string_view lineEnd;
};

// Cuts one content line off `rest`. Its text is only put together when it is a line that matters here.
bool cutContentLine(std::string_view& rest, ContentLine& line) {
  if (rest.empty()) return false;
  const std::string_view all = rest;
  std::size_t length = 0;
  line.text.clear();
  line.lineEnd = {};
  do {
    const std::size_t end = std::min(all.find_first_of("\r\n", length), all.size());
    line.text += all.substr(length, end - length);
    const std::size_t terminator = end == all.size() ? 0 : all.substr(end, 2) == "\r\n" ? 2 : 1;
    line.lineEnd = all.substr(end, terminator);
    length = end + terminator;
  } while (length < all.size() && isBlank(all[length]) && ++length);
  line.raw = all.substr(0, length);
  rest.remove_prefix(length);
  return true;
}

std::string_view nameOf(std::string_view line) { return line.substr(0, line.find_first_of(":;")); }

// Where the value begins, behind the first ":" that no parameter value quotes.
std::size_t valueOf(std::string_view line) {
  bool isQuoted = false;
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (line[i] == '"') isQuoted = !isQuoted;
    if (line[i] == ':' && !isQuoted) return i + 1;
  }
  return line.npos;
}

bool isContinuation(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

void appendFolded(std::string& out, std::string_view line, std::string_view lineEnd, bool isUtf8) {
  std::size_t room = kLongestLine;
  while (line.size() > room) {
    std::size_t cut = room;
    if (isUtf8)
      for (int back = 0; back < 3 && isContinuation(line[cut]); ++back) --cut;
    out += line.substr(0, cut);
    out += lineEnd;
    out += ' ';
    line.remove_prefix(cut);
    room = kLongestLine - 1;  // the blank counts
  }
  out += line;
  out += lineEnd;
}

class CalendarEditor {
 public:
  CalendarEditor(std::string_view dressed, bool atTop, bool isUtf8, std::string& out)
      : mDressed(dressed), mAtTop(atTop), mIsUtf8(isUtf8), mOut(out) {}

  // False when no event took the disclaimer, or one holds a description that cannot be read.
  bool edit(std::string_view calendar) {
    mOut.clear();
    ContentLine line;
    while (cutContentLine(calendar, line)) {
      const std::string_view text = line.text;
      if (startsWithNoCase(text, "BEGIN:"))
        begin(text.substr(6));
      else if (mDepth == 1 && !mIsDescribed && equalNoCase(nameOf(text), kProperty)) {
        if (!extend(line)) return false;
        continue;
      } else if (startsWithNoCase(text, "END:"))
        end(line);
      mOut += line.raw;
    }
    return mEdited > 0;
  }

 private:
  static bool isEvent(std::string_view component) {
    return equalNoCase(component.substr(0, component.find_first_of(" \t")), "VEVENT");
  }

  void begin(std::string_view component) {
    if (mDepth > 0) {
      ++mDepth;
    } else if (isEvent(component)) {
      mDepth = 1;
      mIsDescribed = false;
    }
  }

  void end(const ContentLine& line) {
    if (mDepth == 0) return;
    if (mDepth == 1 && !mIsDescribed) {
      std::string description(kProperty);
      description += ':';
      description += mDressed;
      appendFolded(mOut, description, line.lineEnd.empty() ? "\r\n" : line.lineEnd, mIsUtf8);
      ++mEdited;
    }
    --mDepth;
  }

  bool extend(const ContentLine& line) {
    const std::string_view text = line.text;
    const std::size_t at = valueOf(text);
    if (at == text.npos) return false;
    for (std::size_t i = 0; i + 9 < at; ++i)  // the older vCalendar encodes values; those are left alone
      if (equalNoCase(text.substr(i, 9), "ENCODING=")) return false;
    std::string extended(text.substr(0, at));
    const std::string_view value = text.substr(at);
    const auto join = [&extended](std::string_view first, std::string_view second) {
      extended += first;
      if (!first.empty()) extended += kNewLine;
      extended += kSeparator;
      extended += kNewLine;
      extended += second;
    };
    if (mAtTop)
      join(mDressed, value);
    else
      join(value, mDressed);
    appendFolded(mOut, extended, line.lineEnd.empty() ? "\r\n" : line.lineEnd, mIsUtf8);
    mIsDescribed = true;
    ++mEdited;
    return true;
  }

  const std::string_view mDressed;
  const bool mAtTop;
  const bool mIsUtf8;
  std::string& mOut;
  std::size_t mDepth = 0;  // components that are open, from the event on
  bool mIsDescribed = false;
  std::size_t mEdited = 0;
};

std::string dressCalendar(std::string_view disclaimer) {
  std::string out;
  for (const char c : withoutLastLineEnd(disclaimer)) {
    if (c == '\r') continue;
    if (c == '\n') {
      out += kNewLine;
      continue;
    }
    if (c == '\\' || c == ';' || c == ',') out += '\\';
    out += c;
  }
  return out;
}

bool insertCalendar(std::string_view calendar, std::string_view dressed, bool atTop, bool isUtf8, std::string& out) {
  return CalendarEditor(dressed, atTop, isUtf8, out).edit(calendar);
}

}  // namespace

const TextKind kCalendarText = {dressCalendar, insertCalendar};

}  // namespace vomsg::detail
