#include "vomsg/header/VoMsgUserAddress.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/Inputs.h"
#include "tests/support/WindowStreams.h"

using vomsg::detail::cutAddress;

namespace {

using Pieces = std::vector<std::string>;

// The rule as it reads: at each separator the whole piece is counted anew.
Pieces slowPieces(const std::string& value) {
  Pieces pieces;
  std::size_t start = 0;
  for (std::size_t i = 0; i <= value.size(); ++i) {
    std::string piece = value.substr(start, i - start);
    const bool isLast = i == value.size();
    if (!isLast && value[i] != ',' && value[i] != ';') continue;
    int quotes = 0;
    for (std::size_t q = piece.find('"'); q < piece.size(); q = piece.find('"', q + 1))
      if (q == 0 || piece[q - 1] != '\\' || (q > 1 && piece[q - 2] == '\\')) ++quotes;
    const std::size_t open = piece.rfind('<');
    const bool isOpen = open < piece.size() && piece.find('>', open) == piece.npos;
    if (!isLast && (quotes % 2 != 0 || isOpen)) continue;
    piece.erase(0, piece.find_first_not_of(isLast ? " \t\r\n" : " "));
    if (!piece.empty()) pieces.push_back(piece);
    start = i + 1;
  }
  return pieces;
}

Pieces pieces(const std::string& value) {
  const vomsg::test::ExactMemoryReader exact(value);
  std::string_view rest(exact.bytes(), value.size());
  std::string_view address;
  Pieces all;
  while (cutAddress(rest, address)) all.emplace_back(address);
  return all;
}

TEST(CutAddress, GivesThePiecesOfThePlainRule) {
  for (const char* const alphabet : {"a,\"\\<> ", "a;, \t\r"})
    vomsg::test::forEveryString(alphabet, 6,
                                [](const std::string& text) { ASSERT_EQ(pieces(text), slowPieces(text)); });
  const std::pair<const char*, Pieces> rows[] = {
      {"\"Doe, John\" <m1>, m2", {"\"Doe, John\" <m1>", "m2"}},
      {"a <m1, m2", {"a <m1, m2"}},
      {"\"a\\\", b\", c", {"\"a\\\", b\"", "c"}},  // an escaped quote does not end the string
      {"\"a\\\\\", b", {"\"a\\\\\"", "b"}},        // an escaped backslash does not escape the quote
      {"  m1  ,\tm2,;\r\n\tm3 ", {"m1  ", "\tm2", "m3 "}},
  };
  for (const auto& [value, want] : rows) EXPECT_EQ(pieces(value), want) << value;
}

// A comment is erased from the first "(" to the first ")", again and again, while they stand in that order.
TEST(UserAddress, ErasesComments) {
  vomsg::test::forEveryString("a()", 9, [](const std::string& text) {
    std::string want = text + "aa";
    for (std::size_t open, close;
         (open = want.find('(')) < want.size() && (close = want.find(')')) < want.size() && close > open;)
      want.erase(open, close - open + 1);
    ASSERT_EQ(VoMsgUserAddress((text + "aa<b>").c_str()).getRawName(), want) << text;
  });
}

TEST(UserAddress, DecodesNames) {
  constexpr const char* kRows[][4] = {
      {"John (work) <m1>", nullptr, "m1", "John"},
      {"m1", nullptr, "m1", ""},
      {"(c)", nullptr, "(c)", ""},
      {"Jorg m1>", nullptr, "Jorg m1>", ""},
      {"Jorg <m1> m2", nullptr, "Jorg <m1> m2", ""},
      {"Jorg \t<m1>> (c) \t", nullptr, "m1>", "Jorg"},
      {"\"<Jorg>\" <m1>", nullptr, "m1", "<Jorg>"},
      {"<a:m1>", nullptr, "a:m1", ""},
      {"J <m1>", nullptr, "m1", ""},
      {"\"Doe, \"John\"\" <m1>", nullptr, "m1", "Doe, John"},
      {"\"=?iso-8859-1?Q?J=FCrgen?=\" <m1>", nullptr, "m1", "J\xC3\xBCrgen"},
      {"J\xFCrgen <m1>", "iso-8859-1", "m1", "J\xC3\xBCrgen"},
      {"Jorg <m1>", "no-such-charset", "m1", "Jorg"},
      {"Jorg <SMTP:m1>", nullptr, "m1", "Jorg"},
  };
  for (const auto& [raw, defaultCharset, want, name] : kRows) {
    VoMsgUserAddress address(raw);
    address._setDefaultCharset(defaultCharset);
    for (int call = 0; call < 2; ++call) EXPECT_STREQ(address.getName("utf-8"), name) << raw;
    EXPECT_STREQ(address.getAddress(), want) << raw;
    EXPECT_STREQ(address.getName(nullptr), "");
    const std::unique_ptr<VoMsgUserAddress> copy(address.copy());
    EXPECT_STREQ(copy->getName("utf-8"), name);
    EXPECT_STREQ(copy->getRawAddress(), raw);
  }
  VoMsgUserAddress none(nullptr);
  EXPECT_EQ(none.getRawAddress(), none.getAddress());
  EXPECT_STREQ(none.getName("utf-8"), "");
}

}  // namespace
