// Every Japanese and Chinese character against Python's codecs as an independent witness. Where we differ from it on
// purpose, a table says so and why.
#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <vector>

#include "ConvertSupport.h"
#include "tests/support/Tools.h"

namespace {

using Fields = std::vector<std::string>;

std::string fromHex(std::string_view hex) {
  std::string bytes;
  for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
    bytes += static_cast<char>(std::stoi(std::string(hex.substr(i, 2)), nullptr, 16));
  return bytes;
}

// What the witness says, by kind.
std::map<std::string, std::vector<Fields>> witness() {
  std::map<std::string, std::vector<Fields>> kinds;
  std::istringstream lines(vomsg::test::runTool("python3 -B " VOMSG_TEST_DATA "/../charset/codec_witness.py", ""));
  for (std::string line, kind, hex; std::getline(lines, line);) {
    std::istringstream words(line);
    words >> kind;
    Fields& fields = kinds[kind].emplace_back();
    while (words >> hex) fields.push_back(fromHex(hex));
  }
  return kinds;
}

enum Column { kEuc, kSjis, kJis, kUtf8, kFullWidth };  // of Japanese lines
enum ChineseColumn { kCode, kHz };

struct Check {
  const char *kind, *from, *to;
  int fromColumn, toColumn;
  bool thereAndBack = true;
};
constexpr Check kChecks[] = {
    {"jp", "euc-jp", "Shift_jis", kEuc, kSjis},
    {"jp", "euc-jp", "iso-2022-jp", kEuc, kJis},
    {"jp", "Shift_jis", "iso-2022-jp", kSjis, kJis},
    {"jp", "iso-2022-jp", "own utf-8", kJis, kUtf8},
    {"jp", "Shift_jis", "own utf-8", kSjis, kUtf8},
    {"jp", "own utf-8", "iso-2022-jp", kUtf8, kJis, false},
    {"jp", "own utf-8", "Shift_jis", kUtf8, kSjis, false},
    {"kana", "euc-jp", "Shift_jis", kEuc, kSjis},
    {"kana", "Shift_jis", "own utf-8", kSjis, kUtf8},
    {"kana", "Shift_jis", "iso-2022-jp", kSjis, kJis, false},
    {"kana", "euc-jp", "iso-2022-jp", kEuc, kJis, false},
    {"kana", "own utf-8", "iso-2022-jp", kUtf8, kJis, false},
    {"kana", "iso-2022-jp", "euc-jp", kJis, kFullWidth},
    {"windows", "Shift_jis", "own utf-8", 0, 1, false},  // some characters have two codes
    {"gb2312", "gb2312", "hz-gb-2312", kCode, kHz},
    {"gb2312", "gb2312", "utf-8", kCode, 2},
    {"gb2312", "hz-gb-2312", "utf-8", kHz, 2, false},
    {"gb2312", "utf-8", "gb2312", 2, kCode, false},
    {"gbk", "gb2312", "utf-8", 0, 1, false},  // what is not GB2312 is read only
    {"big5", "big5", "utf-8", 0, 1},
    {"big5", "utf-8", "big5", 1, 0, false},
};

// Differences to and from Unicode that are meant, by the code in the first column.
struct Difference {
  const char *kind, *first, *last, *reason;
  mutable int met = 0;
};
const Difference kDifferences[] = {
    {"jp", "a1c1", "a1c2", "wave dash and double line: Windows mailers mean U+FF5E and U+2225"},
    {"jp", "a1dd", "a1dd", "minus: U+FF0D on Windows"},
    {"jp", "a1f1", "a1f2", "cent and pound: full width on Windows"},
    {"jp", "a2cc", "a2cc", "not: full width on Windows"},
    {"gb2312", "a1a4", "a1a4", "the middle dot, U+00B7, as in GBK"},
    {"gb2312", "a1aa", "a1aa", "the dash, U+2014, as in GBK"},
    {"big5", "a145", "a145", "Windows: hyphenation point"},
    {"big5", "a14e", "a14e", "Windows: small form of the comma"},
    {"big5", "a1c2", "a1c2", "Windows: macron"},
    {"big5", "a1e3", "a1e3", "Windows: full-width tilde"},
    {"big5", "a1f2", "a1f3", "Windows: circled plus and dot"},
    {"big5", "a241", "a242", "Windows: division slash and small backslash"},
    {"big5", "a244", "a247", "Windows: full-width yen, cent and pound"},
    {"big5", "a2a4", "a2a7", "box drawing: written with the later of two codes"},
    {"big5", "a2cc", "a2ce", "two ideographs written with the code among the ideographs"},
    {"big5", "c6a1", "c7fc", "kana, Cyrillic and others outside the standard: for private use on Windows"},
};

bool isMeant(const Check& check, const std::string& code) {
  if (!std::string_view(check.from).ends_with("utf-8") && !std::string_view(check.to).ends_with("utf-8")) return false;
  for (const Difference& difference : kDifferences)
    if (difference.kind == std::string_view(check.kind) && code >= fromHex(difference.first) &&
        code <= fromHex(difference.last))
      return ++difference.met > 0;
  return false;
}

TEST(CodecWitness, AgreesOnEveryCharacter) {
  if (!vomsg::test::hasTool("python3")) GTEST_SKIP() << "no python3";
  const auto kinds = witness();
  for (const Check& check : kChecks) {
    SCOPED_TRACE(testing::Message() << check.kind << ": " << check.from << " to " << check.to);
    const ConverterPtr converter = makeConverter(check.to, check.from);
    const ConverterPtr back = makeConverter(check.from, check.to);
    ASSERT_TRUE(converter && (back || !check.thereAndBack));
    for (const Fields& fields : kinds.at(check.kind)) {
      const std::string& from = fields[static_cast<std::size_t>(check.fromColumn)];
      const std::string& to = fields[static_cast<std::size_t>(check.toColumn)];
      const std::string got = run(*converter, from).text;
      if (got == to && (!check.thereAndBack || run(*back, got).text == from)) continue;
      EXPECT_TRUE(isMeant(check, fields[0])) << testing::PrintToString(from) << " gives " << testing::PrintToString(got)
                                             << ", not " << testing::PrintToString(to);
    }
  }
  for (const Difference& difference : kDifferences) EXPECT_GT(difference.met, 0) << difference.reason;
}

}  // namespace
