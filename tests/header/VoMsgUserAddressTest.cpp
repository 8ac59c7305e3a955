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
bool cutsHere(const std::string& piece) {
  int quotes = 0;
  for (std::size_t i = 0; i < piece.size(); ++i) {
    const bool backslash = i > 0 && piece[i - 1] == '\\';
    const bool pair = backslash && i > 1 && piece[i - 2] == '\\';
    if (piece[i] == '"' && (!backslash || pair)) ++quotes;
  }
  const std::size_t open = piece.rfind('<');
  return quotes % 2 == 0 && (open == std::string::npos || piece.find('>', open) != std::string::npos);
}

Pieces slowPieces(const std::string& value) {
  Pieces pieces;
  std::size_t start = 0;
  for (std::size_t i = 0; i <= value.size(); ++i) {
    std::string piece = value.substr(start, i - start);
    const bool isLast = i == value.size();
    if (!isLast && ((value[i] != ',' && value[i] != ';') || !cutsHere(piece))) continue;
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

// Address and name.
std::pair<std::string, std::string> slowParse(const std::string& raw) {
  std::string text = raw;
  for (std::size_t open, close;
       (open = text.find('(')) != std::string::npos && (close = text.find(')')) != std::string::npos && close > open;)
    text.erase(open, close - open + 1);
  text.erase(text.find_last_not_of(" \t") + 1);
  if (text.empty() || text.back() != '>') return {raw, ""};
  text.erase(text.rfind('>'));
  if (text.find('<') == std::string::npos) return {raw, ""};
  if (text[0] == '<') return {text.substr(1), ""};
  std::string name = text.substr(0, text.rfind('<'));
  name.erase(name.find_last_not_of(" \t") + 1);
  const std::size_t colon = text.find(':');
  return {text.substr((colon == std::string::npos ? text.rfind('<') : colon) + 1), name.size() < 2 ? "" : name};
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

// Counting quotes or brackets from the start of the piece at every separator would never end here.
TEST(CutAddress, LongPiecesTakeOnePass) {
  constexpr std::size_t kCount = 1000000;
  for (const char* opening : {"\"", "<", "\"\\\"", "\"<>"})
    EXPECT_EQ(pieces(opening + std::string(kCount, ',')).size(), 1u) << opening;
  EXPECT_TRUE(pieces(std::string(kCount, ',')).empty());
}

TEST(UserAddress, ParsesLikeThePlainRule) {
  const auto check = [](const std::string& text) {
    VoMsgUserAddress address(text.c_str());
    ASSERT_EQ(std::make_pair(std::string(address.getAddress()), std::string(address.getRawName())), slowParse(text))
        << text;
  };
  vomsg::test::forEveryString("a()<>: ", 6, check);
  // Comments only: deep enough for closed ones, open ones and both.
  vomsg::test::forEveryString("a()", 9, [&](const std::string& text) { check(text + "<b>"); });
  std::string comments;
  for (int i = 0; i < 300000; ++i) comments += "(a)";
  EXPECT_STREQ(VoMsgUserAddress(("Name" + comments + "<b>").c_str()).getRawName(), "Name");
  EXPECT_STREQ(VoMsgUserAddress((std::string(1000000, '(') + "<b>").c_str()).getAddress(), "b");
}

TEST(UserAddress, DecodesNames) {
  constexpr const char* kRows[][4] = {
      {"John (work) <m1>", nullptr, "m1", "John"},
      {"m1", nullptr, "m1", ""},
      {"<m1>", nullptr, "m1", ""},
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
