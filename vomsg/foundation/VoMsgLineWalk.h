// One walk over a line serves every form of line reading. A line ends with LF, CR LF or a lone CR, so a CR or LF
// stands nowhere in it but in its terminator.
//
// The line comes in stretches, as the reader's buffer holds it. A CR that ends a stretch leaves open whether an LF
// follows; LineEnd carries that question over the refill.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "vomsg/foundation/VoMsgStreamAccess.h"

namespace vomsg::detail {

// The first CR or LF, or null. The two searches take turns over stretches that double: asking for the next LF of a
// whole window once per lone CR would be quadratic, and so would the reverse.
inline const char* findLineEnd(const char* begin, const char* end) {
  std::size_t stretch = 128;
  while (begin != end) {
    const std::size_t n = std::min(stretch, static_cast<std::size_t>(end - begin));
    const void* const lf = std::memchr(begin, '\n', n);
    const std::size_t before = lf ? static_cast<std::size_t>(static_cast<const char*>(lf) - begin) : n;
    const void* const cr = std::memchr(begin, '\r', before);
    if (cr) return static_cast<const char*>(cr);
    if (lf) return static_cast<const char*>(lf);
    begin += n;
    stretch = std::min<std::size_t>(2 * stretch, 16384);  // the second search finds the stretch in the cache
  }
  return nullptr;
}

struct LineEnd {
  bool cr = false;     // a CR has been taken
  bool lf = false;     // an LF has been taken
  bool known = false;  // the line is complete
  unsigned length() const { return (cr ? 1u : 0u) + (lf ? 1u : 0u); }
};

// How many bytes at the start of `window` belong to the line.
inline std::size_t cutLine(std::string_view window, LineEnd& end) {
  if (window.empty()) return 0;
  std::size_t at = 0;
  if (!end.cr) {
    const char* const found = findLineEnd(window.data(), window.data() + window.size());
    if (!found) return window.size();
    at = static_cast<std::size_t>(found - window.data());
    end.cr = *found == '\r';
    if (end.cr && ++at == window.size()) return at;
  }
  end.lf = window[at] == '\n';
  end.known = true;
  return at + (end.lf ? 1 : 0);
}

struct WalkedLine {
  std::uint64_t length = 0;  // with its terminator; 0 at the end of the data
  unsigned terminatorLength = 0;
  bool accepted = true;  // false: the sink refused a stretch
};

// Takes one line off `reader`, of at most `limit` bytes, as if the data ended there. Each stretch goes to
// bool sink(std::string_view stretch, bool last); `last` is false when the buffer was used up before the line ended.
template <class Sink>
WalkedLine walkLine(VoMsgBufferedReader& reader, std::uint64_t limit, Sink&& sink) {
  WalkedLine line;
  LineEnd end;
  do {
    std::string_view window = ReaderWindow::buffered(reader);
    if (window.size() > limit - line.length) window = window.substr(0, static_cast<std::size_t>(limit - line.length));
    const std::size_t count = cutLine(window, end);
    if (!sink(window.substr(0, count), end.known)) {
      line.accepted = false;
      break;
    }
    ReaderWindow::consume(reader, count);
    line.length += count;
  } while (!end.known && line.length < limit && ReaderWindow::fill(reader));
  line.terminatorLength = end.length();
  return line;
}

inline constexpr std::uint64_t kNoLimit = ~std::uint64_t{0};

}  // namespace vomsg::detail
