#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>

#include "tests/support/WindowStreams.h"
#include "vomsg/entity/VoMsgBodyScanner.h"

namespace {

using namespace vomsg;
using namespace vomsg::detail;

std::string show(const BodyEnd& end) {
  return std::to_string(end.match.type) + " depth " + std::to_string(end.match.type ? end.match.depth : 0) + " at " +
         std::to_string(end.lineOffset) + ".." + std::to_string(end.lineEnd) + " less " +
         std::to_string(end.terminatorBefore);
}

// The plain rule: cut the text into lines and ask about each.
BodyEnd slowly(std::string_view text, const BoundaryTable& boundaries) {
  BodyEnd end;
  std::size_t at = 0;
  unsigned before = 0;
  while (at < text.size()) {
    const std::size_t stop = std::min(text.find_first_of("\r\n", at), text.size());
    const unsigned terminator = stop == text.size() ? 0 : text.substr(stop, 2) == "\r\n" ? 2 : 1;
    end.match = boundaries.match(text.substr(at, stop - at));
    end.lineOffset = at;
    end.lineEnd = stop + terminator;
    end.terminator = terminator;
    end.terminatorBefore = before;
    if (end.match.type != kVoBoundaryNone) return end;
    at = stop + terminator;
    before = terminator;
  }
  end = {};
  end.lineOffset = end.lineEnd = text.size();
  return end;
}

void compare(std::string_view text, const BoundaryTable& boundaries) {
  const std::string want = show(slowly(text, boundaries));
  for (const unsigned window : {1u, 2u, 3u, 5u, 4096u}) {
    test::WindowReader reader(text, window);
    ASSERT_EQ(show(findBodyEnd(reader, boundaries)), want) << "window " << window << "\n" << text;
  }
}

TEST(BodyScanner, AgreesWithTheLineByLineRule) {
  BoundaryTable boundaries;
  boundaries.push("a");
  boundaries.push("a-");
  constexpr char kBytes[] = "\r\n-a ";
  std::string text;
  for (int length = 0; length <= 7; ++length) {
    std::size_t count = 1;
    for (int i = 0; i < length; ++i) count *= 5;
    for (std::size_t number = 0; number < count; ++number) {
      text.assign("\n");
      for (std::size_t rest = number, i = 0; i < static_cast<std::size_t>(length); ++i, rest /= 5)
        text += kBytes[rest % 5];
      const std::string want = show(slowly(text, boundaries));
      test::WindowReader reader(text, 1 + number % 4);
      ASSERT_EQ(show(findBodyEnd(reader, boundaries)), want) << text;
    }
  }
}

// Long enough for the vectorised search, with candidates at every position of its stride.
TEST(BodyScanner, FindsDelimitersAtEveryOffset) {
  BoundaryTable boundaries;
  boundaries.push("boundary");
  std::mt19937 random(7);
  for (int round = 0; round < 3000; ++round) {
    std::string text;
    const std::size_t length = random() % 300;
    while (text.size() < length) {
      static constexpr const char* kPieces[] = {"x", "-", "--", "\r", "\n", "\r\n", "\n--", "--bound", "abcdefgh", " "};
      text += kPieces[random() % std::size(kPieces)];
    }
    if (random() % 2) text += "\n--boundary" + std::string(random() % 3, ' ') + (random() % 2 ? "--" : "") + "\r\nrest";
    compare(text, boundaries);
  }
}

TEST(BodyScanner, LineOfAnyLengthMatchesOnlyWhenBlanksFollow) {
  BoundaryTable boundaries;
  boundaries.push("b");
  compare("--b" + std::string(10000, ' ') + "\nx", boundaries);
  compare("--b" + std::string(10000, ' ') + "x\n--b--", boundaries);
  compare("--" + std::string(10000, 'b') + "\n", boundaries);
}

}  // namespace
