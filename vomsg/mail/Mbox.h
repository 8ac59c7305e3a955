// Finds the messages of an mbox file in one pass and constant memory.
//
// A message begins at the start of the file or where, behind an empty line, a line "From SENDER DATE" stands; that line
// is no part of it, and neither is the one empty line in front of the next. Nothing else divides: "From " in a letter
// has no date behind it. How mailboxes keep a line that looks like a separator out of a message differs, and nothing in
// the file tells, so the caller does:
//   mboxo    the line is there as ">From "; what was a ">From " before cannot be told from it, so bytes stay as they
//   are mboxrd   each such line, ">From " and ">>From " too, has one ">" more; it is taken off mboxcl2  nothing is done
//   to lines; Content-Length says how long a body is. It is believed only where a separator or
//            the end of the file stands exactly behind that many bytes, for a wrong one would swallow messages
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "vomsg/mail/Date.h"
#include "vomsg/mail/Resources.h"
#include "vomsg/mail/Utf8.h"

namespace vomsg {

enum class MboxKind { mboxo, mboxrd, mboxcl2 };

namespace inner {

// "From a@example.org Sun Nov 22 03:13:00 2026", with or without seconds, a zone before or behind the year, and a
// sender that may hold blanks. `line` has no terminator.
inline bool isMboxSeparator(std::string_view line) {
  if (line.substr(0, 5) != "From ") return false;
  std::vector<std::string_view> words;
  for (std::size_t at = 5; at < line.size() && words.size() < 64;) {
    const auto begin = line.find_first_not_of(" \t\r", at);
    if (begin == line.npos) break;
    const auto end = std::min(line.find_first_of(" \t\r", begin), line.size());
    words.push_back(line.substr(begin, end - begin));
    at = end;
  }
  const auto isOneOf = [](std::string_view word, const auto& names) {
    return std::any_of(names.begin(), names.end(), [&](std::string_view name) { return equalNoCase(word, name); });
  };
  const auto isNumber = [](std::string_view word, std::size_t least, std::size_t most) {
    return word.size() >= least && word.size() <= most &&
           std::all_of(word.begin(), word.end(), [](char c) { return c >= '0' && c <= '9'; });
  };
  for (std::size_t i = 0; i + 4 < words.size(); ++i) {
    if (!isOneOf(words[i], kWeekdays) || !isOneOf(words[i + 1], kMonths) || !isNumber(words[i + 2], 1, 2)) continue;
    const std::string_view clock = words[i + 3];
    const auto colon = clock.find(':');
    if (colon == clock.npos || !isNumber(clock.substr(0, colon), 1, 2) || clock.size() < colon + 3) continue;
    for (std::size_t k = i + 4; k < std::min(i + 7, words.size()); ++k) {
      if (isNumber(words[k], 4, 4)) return true;
    }
  }
  return false;
}

struct MboxPlace {
  std::uint64_t offset = 0;  // of the message's first byte, behind its separator
  std::uint64_t size = 0;
};

class MboxScanner {
 public:
  MboxScanner(SharedDescriptor file, std::uint64_t fileSize, MboxKind kind)
      : mFile(std::move(file)), mFileSize(fileSize), mKind(kind), mBuffer(kBufferSize) {}

  // The next message; false at the end of the file, or when it cannot be read: then failed().
  bool next(MboxPlace& place) {
    if (mNext >= mFileSize || mFailed) return false;
    // At the start of a line that may be a separator: of the file's first, or of one that was found.
    std::uint64_t at = mNext;
    if (const std::uint64_t length = separatorAt(at)) at += length;
    place.offset = at;
    const std::uint64_t header = headerEnd(at);
    // Where the block has no empty line behind it, or the separator follows at once, that line stays in the message.
    std::uint64_t end = header;
    std::uint64_t separator = header;
    if (header < mFileSize && separatorAt(header) == 0 &&
        !(mKind == MboxKind::mboxcl2 && byLength(at, header, end, separator))) {
      findEnd(header, end, separator);
    }
    place.size = end - at;
    mNext = separator;
    return !mFailed;
  }
  bool failed() const { return mFailed; }

 private:
  static constexpr std::size_t kBufferSize = 262144;
  static constexpr std::size_t kLongestSeparator = 1024;

  // The file's bytes from `at` on, as far as the buffer has them; at least `want` unless the file ends before.
  std::string_view view(std::uint64_t at, std::size_t want) {
    const std::uint64_t rest = at < mFileSize ? mFileSize - at : 0;
    if (rest < want) want = static_cast<std::size_t>(rest);
    if (at < mStart || at + want > mStart + mFilled) {
      const auto n = static_cast<std::size_t>(std::min<std::uint64_t>(rest, kBufferSize));
      mStart = at;
      mFilled = readAt(mFile->fd, mBuffer.data(), n, at);
      if (mFilled < want) {  // shorter than it was
        mFailed = true;
        return {};
      }
    }
    const auto from = static_cast<std::size_t>(at - mStart);
    return std::string_view(mBuffer.data() + from, mFilled - from);
  }

  // The length of the separator line that begins at `at`, with its terminator; 0 when there is none.
  std::uint64_t separatorAt(std::uint64_t at) {
    const std::string_view bytes = view(at, kLongestSeparator).substr(0, kLongestSeparator);
    const auto end = bytes.find('\n');
    if (!isMboxSeparator(bytes.substr(0, end))) return 0;
    return end == bytes.npos ? bytes.size() : end + 1;
  }

  // Behind the empty line that ends a header block, or the end of the file.
  std::uint64_t headerEnd(std::uint64_t at) {
    while (at < mFileSize && !mFailed) {
      const std::string_view bytes = view(at, 3);
      for (std::size_t i = 0; (i = bytes.find('\n', i)) != bytes.npos; ++i) {
        if (bytes.substr(i + 1, 1) == "\n") return at + i + 2;
        if (bytes.substr(i + 1, 2) == "\r\n") return at + i + 3;
      }
      if (at + bytes.size() >= mFileSize) break;
      at += bytes.size() - 2;
    }
    return mFileSize;
  }

  // Whether an empty line ends right before `at`; its length then, else 0.
  std::uint64_t emptyLineBefore(std::uint64_t at, std::uint64_t floor) {
    const std::uint64_t from = std::max(floor, at > 4 ? at - 4 : 0);
    char last[4];
    const std::size_t n = readAt(mFile->fd, last, static_cast<std::size_t>(at - from), from);
    const std::string_view bytes(last, n);
    const auto endsWith = [&](std::string_view end) {
      return bytes.size() >= end.size() && bytes.substr(bytes.size() - end.size()) == end;
    };
    if (endsWith("\n\r\n") || (bytes == "\r\n" && from == floor)) return 2;
    return endsWith("\n\n") || (bytes == "\n" && from == floor) ? 1 : 0;
  }

  // Looks for the next separator behind `body`. `end` is where the message ends, `separator` where that line begins.
  void findEnd(std::uint64_t body, std::uint64_t& end, std::uint64_t& separator) {
    constexpr std::string_view kMark = "\nFrom ";
    std::uint64_t at = body;
    while (at < mFileSize && !mFailed) {
      const std::string_view bytes = view(at, kMark.size());
      const auto* const found =
          static_cast<const char*>(::memmem(bytes.data(), bytes.size(), kMark.data(), kMark.size()));
      if (found == nullptr) {
        if (at + bytes.size() >= mFileSize) break;
        at += bytes.size() - (kMark.size() - 1);
        continue;
      }
      const std::uint64_t line = at + static_cast<std::uint64_t>(found - bytes.data()) + 1;
      const std::uint64_t empty = emptyLineBefore(line, body);
      if (empty > 0 && separatorAt(line) > 0) {
        end = line - empty;
        separator = line;
        return;
      }
      at = line;
    }
    end = mFileSize - emptyLineBefore(mFileSize, body);
    separator = mFileSize;
  }

  // The same by Content-Length; false where nothing stands behind it that it could have meant.
  bool byLength(std::uint64_t begin, std::uint64_t body, std::uint64_t& end, std::uint64_t& separator) {
    std::uint64_t length = 0;
    if (!contentLength(begin, body, length) || length > mFileSize - body) return false;
    end = body + length;
    for (const std::string_view empty : {"", "\n", "\r\n"}) {
      separator = end + empty.size();
      if (separator > mFileSize || view(end, empty.size()).substr(0, empty.size()) != empty) continue;
      if (separator == mFileSize || separatorAt(separator) > 0) return true;
    }
    return false;
  }

  bool contentLength(std::uint64_t begin, std::uint64_t body, std::uint64_t& length) {
    constexpr std::string_view kName = "content-length:";
    constexpr std::uint64_t kFarthest = 65536;  // nobody has a longer block in front of an honest field
    const auto size = static_cast<std::size_t>(std::min(body - begin, kFarthest));
    std::string_view block = view(begin, size).substr(0, size);
    while (!block.empty()) {
      const auto lineEnd = block.find('\n');
      if (equalNoCase(block.substr(0, kName.size()), kName)) {
        const std::string_view digits = trimmed(block.substr(0, lineEnd).substr(kName.size()));
        if (digits.empty() || digits.size() > 15) return false;
        for (const char c : digits) {
          if (c < '0' || c > '9') return false;
          length = length * 10 + static_cast<std::uint64_t>(c - '0');
        }
        return true;
      }
      if (lineEnd == block.npos) break;
      block.remove_prefix(lineEnd + 1);
    }
    return false;
  }

  SharedDescriptor mFile;
  std::uint64_t mFileSize;
  MboxKind mKind;
  std::vector<char> mBuffer;
  std::uint64_t mStart = 0;  // what the buffer holds
  std::size_t mFilled = 0;
  std::uint64_t mNext = 0;
  bool mFailed = false;
};

// Takes one ">" off each line that begins with some of them and "From ", piece by piece.
class MboxUnquoter {
 public:
  // Appends to `out` what `bytes` stand for. At the end of the data call it with `isEnd`.
  void add(std::string_view bytes, bool isEnd, std::string& out) {
    constexpr std::string_view kMark = "From ";
    for (const char c : bytes) {
      if (mIsHeld) {
        mHeld += c;
        const auto mark = mHeld.find_first_not_of('>');
        if (mark == mHeld.npos && mHeld.size() < kMostQuotes) continue;
        const std::string_view rest = std::string_view(mHeld).substr(std::min(mark, mHeld.size()));
        if (rest.size() < kMark.size() && rest == kMark.substr(0, rest.size()) && !rest.empty()) continue;
        release(rest == kMark && mark > 0, out);
      } else {
        out += c;
      }
      if (c == '\n') mIsHeld = true;
    }
    if (isEnd) release(false, out);
  }

 private:
  static constexpr std::size_t kMostQuotes = 4096;
  void release(bool isQuoted, std::string& out) {
    out.append(mHeld, isQuoted ? 1 : 0, std::string::npos);
    mHeld.clear();
    mIsHeld = false;
  }

  std::string mHeld;    // the start of a line that may yet be one
  bool mIsHeld = true;  // at the start of a line
};

}  // namespace inner

}  // namespace vomsg
