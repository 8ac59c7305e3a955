#include "vomsg/header/VoMsgHeaderField.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/support/Inputs.h"
#include "tests/support/RememberingLog.h"
#include "vomsg/header/VoMsgFieldEncoding.h"
#include "vomsg/header/VoMsgLineBreaks.h"

namespace {

using vomsg::detail::divideSize;
using vomsg::detail::hasLineBreak;
using vomsg::detail::judgeSize;

TEST(HeaderField, DecodesValues) {
  // Raw value, charset asked for, answer; answer with the charset reported, and that charset.
  constexpr const char* kRows[][5] = {
      {"x =?iso-8859-1?Q?J=FCr?=", "utf-8", "x J\xC3\xBCr", "x J\xFCr", "iso-8859-1"},
      {"x =?iso-8859-1?Q?J=FCr?=", "iso-8859-1", "x J\xFCr", "x J\xFCr", "iso-8859-1"},
      {"=?utf-8?Q?a?= =?utf-8?Q?b?=", "us-ascii", "=?utf-8?Q?a?= =?utf-8?Q?b?=", "ab", "utf-8"},
      {"J\xFCr", "utf-8", "J\xFCr", "J\xFCr", nullptr},                 // nothing encoded, nothing decoded
      {"a =? b", "utf-8", "a =? b", "a =? b", nullptr},                 // nothing that names a charset
      {"=?no-such?Q?a?=", "utf-8", "=?no-such?Q?a?=", "a", "no-such"},  // no converter: the raw value
      {"=?utf-8?Q?a?=", "no-such", "=?utf-8?Q?a?=", "a", "utf-8"},
      {"=?c:x?Q?a?=", "c:x", "a", "=?c:x?Q?a?=", nullptr},  // a path is no charset
      {"=?iso-2022-jp?B?GyRCRnwbKEI=?= =?iso-2022-jp?B?GyRCS1wbKEI=?=", "utf-8", "\xE6\x97\xA5\xE6\x9C\xAC",
       "\x1B$BF|K\\\x1B(B\x1B(B", "iso-2022-jp"},  // the switch forth and back goes
      {"", "utf-8", "", "", nullptr},
  };
  for (const auto& [raw, asked, want, wantEx, wantCharset] : kRows) {
    SCOPED_TRACE(raw);
    VoMsgHeaderField field("Subject", raw);
    for (int call = 0; call < 2; ++call) {
      EXPECT_STREQ(field.getFieldValue(asked), want);
      EXPECT_STREQ(field.getFieldValue("US-ASCII"), raw);
      const char* charset = "?";
      EXPECT_STREQ(field.getFieldValueEx(charset), wantEx);
      EXPECT_STREQ(charset, wantCharset);
    }
    EXPECT_EQ(field.getFieldValue(nullptr), nullptr);
  }
  // A charset with a longer name than 64 characters is none, and the value stays as it is.
  for (const std::size_t length : {64u, 65u}) {
    const std::string charset(length, 'c');
    VoMsgHeaderField field("Subject", ("=?" + charset + "?Q?a?=").c_str());
    EXPECT_STREQ(field.getFieldValue(charset.c_str()), length == 64 ? "a" : field.getRawFieldValue());
  }
  EXPECT_EQ(VoMsgHeaderField("Subject", nullptr).getFieldValue("utf-8"), nullptr);
  // A new value forgets what was known of the old one.
  VoMsgHeaderField field("Subject", "=?iso-2022-jp?B?GyRCRnwbKEI=?=");
  const char* charset = nullptr;
  EXPECT_STREQ(field.getFieldValueEx(charset), "\x1B$BF|\x1B(B\x1B(B");
  field.setRawFieldValue("=?iso-2022-jp?B?GyRCS1wbKEI=?=");
  EXPECT_STREQ(field.getFieldValueEx(charset), "\x1B$BK\\\x1B(B\x1B(B");
}

TEST(HeaderField, SizesThatDivideAValue) {
  struct Row {
    std::size_t nameLength;
    const char* source;
    const char* target;
    long long judge;
    unsigned divide;
  };
  constexpr Row kRows[] = {
      {7, "us-ascii", nullptr, 67, 52},    {7, "us-ascii", "ASCII", 67, 52},   {7, "us-ascii", "utf-8", 55, 52},
      {7, "iso-8859-1", nullptr, 47, 50},  {7, "iso-8859-1", "utf8", 35, 50},  {7, "koi8-r", nullptr, 67, 54},
      {7, "utf-8", nullptr, 55, 55},       {7, "sjis", "iso-2022-jp", 51, 51}, {7, "no-such", nullptr, 53, 53},
      {61, "utf-8", nullptr, 1, 1},        {62, "utf-8", nullptr, 0, 0},       {80, "us-ascii", nullptr, -6, 0},
      {60, "iso-8859-1", "utf-8", -18, 0},
  };
  for (const Row& row : kRows) {
    SCOPED_TRACE(std::string(row.source) + " " + std::to_string(row.nameLength));
    EXPECT_EQ(judgeSize(row.nameLength, row.source, row.target), row.judge);
    EXPECT_EQ(divideSize(row.nameLength, row.source), row.divide);
  }
}

std::vector<std::string> linesOf(const std::string& raw) {
  std::vector<std::string> lines;
  std::size_t at = 0;
  for (std::size_t fold; (fold = raw.find("\r\n\t", at)) != std::string::npos; at = fold + 3)
    lines.push_back(raw.substr(at, fold - at));
  lines.push_back(raw.substr(at));
  return lines;
}

TEST(HeaderField, DividesLongValues) {
  std::string japanese, words;
  for (int i = 0; i < 60; ++i) japanese += "\xE6\x97\xA5";
  for (int i = 0; i < 40; ++i) words += "word" + std::to_string(i) + " ";
  struct Row {
    std::string name, value;
    const char* target;
    bool divided;
  };
  const Row rows[] = {
      {"Subject", std::string(55, 'x'), "utf-8", false},
      {"Subject", std::string(56, 'x'), "utf-8", true},
      {"Subject", japanese, "utf-8", true},
      {"Subject", japanese, "iso-2022-jp", true},
      {"X", japanese, "iso-2022-jp", true},
      {"Subject", japanese, "hz-gb-2312", true},
      {"To", japanese, "utf-8", false},
      {"CONTENT-TYPE", japanese, "utf-8", false},
      {"Subject", words + "x", "us-ascii", true},
      {"Subject", std::string(200, 'x'), "us-ascii", true},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name + ": " + row.value + " in " + row.target);
    VoMsgHeaderField field(row.name.c_str(), "old");
    ASSERT_EQ(field.setFieldValue(row.value.c_str(), "utf-8", row.target), kVoSuccess);
    EXPECT_EQ(field.isNewHeader(), 1);
    EXPECT_STREQ(field.getFieldValue("utf-8"), row.value.c_str());
    const std::vector<std::string> lines = linesOf(field.getRawFieldValue());
    EXPECT_EQ(lines.size() > 1, row.divided);
    std::string joined;  // each line can be read without its neighbours
    for (const std::string& line : lines) {
      joined += VoMsgHeaderField("S", line.c_str()).getFieldValue("utf-8");
      if (row.value == japanese && row.target != std::string_view("utf-8")) {
        EXPECT_LE(line.size(), 75u);  // an encoded word's length
      }
      if (row.value != words + "x") continue;
      EXPECT_LE(line.size(), 60u);
      EXPECT_EQ(line.back(), &line == &lines.back() ? 'x' : ' ');
    }
    EXPECT_EQ(joined, row.value);
  }
  // An encoded word that comes ready is not cut.
  const std::string word = "=?utf-8?Q?" + std::string(63, 'x') + "?=";
  VoMsgHeaderField ready("Subject", nullptr);
  ready.setFieldValue((word + " " + word).c_str(), "us-ascii", nullptr);
  EXPECT_EQ(ready.getRawFieldValue(), word + " \r\n\t" + word);
}

TEST(HeaderField, RefusalsKeepTheValue) {
  vomsg::test::RememberingLog log;
  VoMsgHeaderField field("Subject", "old");
  EXPECT_EQ(field.setFieldValue(nullptr, "utf-8", "utf-8"), kVoBadArgument);
  EXPECT_EQ(field.setFieldValue("new", "utf-8", "no-such"), kVoBadArgument);
  EXPECT_EQ(field.setFieldValue("new", "x?B?eA==?=\r\nBcc: y", nullptr), kVoBadArgument);
  VoMsgHeaderField roomless(std::string(80, 'n').c_str(), "old");
  EXPECT_EQ(roomless.setFieldValue(std::string(99, 'x').c_str(), "utf-8", nullptr), kVoConversionFailed);
  EXPECT_EQ(log.count("error code:8101100d"), 1);  // no room for a piece behind that name
  for (const VoMsgHeaderField* kept : {&field, &roomless}) {
    EXPECT_STREQ(kept->getRawFieldValue(), "old");
    EXPECT_EQ(kept->isNewHeader(), 0);
  }
  EXPECT_EQ(roomless.setFieldValue("\n", "us-ascii", nullptr), kVoSuccess);  // for nothing there is room
  EXPECT_STREQ(roomless.getRawFieldValue(), "");
}

// A field "N" with this value is one field: every line but the first begins with a blank and holds more than blanks.
bool isOneField(const std::string& value) {
  for (std::size_t at = 0; (at = value.find_first_of("\r\n", at)) != std::string::npos; at += 2) {
    if (value.compare(at, 2, "\r\n") != 0) return false;
    const std::size_t text = value.find_first_not_of(" \t", at + 2);
    if (text == std::string::npos || text == at + 2 || value[text] == '\r' || value[text] == '\n') return false;
  }
  return true;
}

TEST(HeaderField, NoValueStartsASecondField) {
  vomsg::test::forEveryString("a\r\n \t", 6, [](const std::string& value) {
    SCOPED_TRACE(testing::PrintToString(value));
    VoMsgHeaderField field("N", value.c_str());
    ASSERT_TRUE(isOneField(field.getRawFieldValue()));
    ASSERT_TRUE(!isOneField(value) || field.getRawFieldValue() == value);
    for (const char* target : {"us-ascii", "utf-8"}) {
      ASSERT_EQ(field.setFieldValue(value.c_str(), "us-ascii", target), kVoSuccess);
      ASSERT_FALSE(hasLineBreak(field.getFieldValue("utf-8")));
      ASSERT_EQ(field.setParameterValue("p", value.c_str(), "us-ascii", target), kVoSuccess);
      ASSERT_FALSE(hasLineBreak(field.getRawParameterValue("p")));
    }
    ASSERT_EQ(field.appendRawParameter("raw", value.c_str(), false, nullptr), kVoSuccess);
    ASSERT_FALSE(hasLineBreak(field.getRawParameterValue("raw")));
  });
  EXPECT_EQ(VoMsgHeaderField("N\r\nBcc", "v").getName(), nullptr);
  EXPECT_EQ(VoMsgHeaderField(" N", "v").getName(), nullptr);
  VoMsgHeaderField field("N", "v");
  EXPECT_EQ(field.appendRawParameter("p\n", "v", false, nullptr), kVoBadArgument);
  EXPECT_EQ(field.appendParameter("p\r", "v", nullptr, nullptr), kVoBadArgument);
  EXPECT_EQ(field.insertParameterAt(0, "\np", "v", nullptr, nullptr), kVoBadArgument);
  EXPECT_EQ(field.setParameterValue("p\n", "v", nullptr, nullptr), kVoBadArgument);
  EXPECT_EQ(field.countParameter(), 0u);
}

std::string parametersOf(const VoMsgHeaderField& field) {
  std::string all;
  for (unsigned i = 0; i < field.countParameter(); ++i) {
    const char* const value = field.getRawParameterValueAt(i);
    all += std::string(";") + field.getParameterNameAt(i) + (value ? "=" : "") + (value ? value : "");
  }
  return all;
}

TEST(HeaderField, ChangesParameters) {
  VoMsgHeaderField field("Content-Type", "text/plain");
  EXPECT_EQ(field.removeParameterAt(0), kVoNoSuchHeader);
  EXPECT_EQ(field.removeParameter("a"), kVoBadArgument);
  EXPECT_EQ(field.appendRawParameter("a", "1", false, nullptr), kVoSuccess);
  EXPECT_EQ(field.removeParameterAt(0), kVoSuccess);  // the list stays, empty
  EXPECT_EQ(field.removeParameterAt(0), kVoOutOfRange);
  EXPECT_EQ(field.removeParameter("a"), kVoSuccess);
  for (const char* const name : {"", "a b", "a=b", "a;b", "a\r\nb", "\xE4", "a\"", "a?", "(a)"}) {
    EXPECT_EQ(field.appendRawParameter(name, "1", false, nullptr), kVoBadArgument) << name;
    EXPECT_EQ(field.appendParameter(name, "1", nullptr, nullptr), kVoBadArgument) << name;
    EXPECT_EQ(field.insertParameterAt(0, name, "1", nullptr, nullptr), kVoBadArgument) << name;
    EXPECT_EQ(field.setParameterValue(name, "1", nullptr, nullptr), kVoBadArgument) << name;
  }
  field.setNewHeader(0);
  EXPECT_EQ(field.appendRawParameter("a", "1", false, nullptr), kVoSuccess);
  EXPECT_EQ(field.appendRawParameter("T*0", "x", false, nullptr), kVoSuccess);
  EXPECT_EQ(field.isNewHeader(), 0);
  // After each change: its code, and the parameters.
  const auto check = [&](VoErrorCode code, VoErrorCode wantCode, const char* want) {
    SCOPED_TRACE(want);
    EXPECT_EQ(code, wantCode);
    EXPECT_EQ(field.isNewHeader(), wantCode == kVoSuccess ? 1 : 0);
    EXPECT_EQ(parametersOf(field), want);
    field.setNewHeader(0);
  };
  const char* const ascii = "us-ascii";
  check(field.insertParameterAt(3, "b", "2", ascii, nullptr), kVoOutOfRange, ";a=1;T*0=x");
  check(field.insertParameterAt(3, nullptr, "2", nullptr, nullptr), kVoBadArgument, ";a=1;T*0=x");
  check(field.insertParameterAt(0, "b", "2", ascii, "no-such"), kVoBadArgument, ";a=1;T*0=x");
  check(field.insertParameterAt(2, "b", "2", ascii, nullptr), kVoSuccess, ";a=1;T*0=x;b=2");
  check(field.insertParameterAt(0, "c", nullptr, nullptr, nullptr), kVoSuccess, ";c;a=1;T*0=x;b=2");
  check(field.setParameterValue("A", "\xC3\xA4", "utf-8", "iso-8859-1"), kVoSuccess,
        ";c;a==?iso-8859-1?Q?=E4?=;T*0=x;b=2");
  check(field.setParameterValue("t", "y", ascii, nullptr), kVoSuccess, ";c;a==?iso-8859-1?Q?=E4?=;b=2;t=y");
  check(field.setParameterValue("t", nullptr, nullptr, nullptr), kVoSuccess, ";c;a==?iso-8859-1?Q?=E4?=;b=2;t=y;t");
  check(field.removeParameterAt(5), kVoOutOfRange, ";c;a==?iso-8859-1?Q?=E4?=;b=2;t=y;t");
  check(field.removeParameterAt(0), kVoSuccess, ";a==?iso-8859-1?Q?=E4?=;b=2;t=y;t");
  check(field.removeParameter("T"), kVoSuccess, ";a==?iso-8859-1?Q?=E4?=;b=2;t");
  check(field.removeParameter(nullptr), kVoBadArgument, ";a==?iso-8859-1?Q?=E4?=;b=2;t");
  EXPECT_STREQ(field.getParameterValue("A", "utf-8"), "\xC3\xA4");
  EXPECT_STREQ(field.getParameterValueAt(1, "utf-8"), "2");
  EXPECT_EQ(field.getParameterValueAt(9, "utf-8"), nullptr);
  EXPECT_EQ(field.getParameterValue("a", nullptr), nullptr);
  const char* charset = nullptr;
  EXPECT_STREQ(field.getParameterValueEx("a", charset), "\xE4");
  EXPECT_STREQ(charset, "iso-8859-1");
}

TEST(HeaderParameter, ReadsItsValue) {
  VoMsgHeaderParameter declared("name", "\xE4", false, "iso-8859-1");
  const std::unique_ptr<VoMsgHeaderParameter> copy(declared.newCopy());
  EXPECT_STREQ(copy->getParameterValue("iso-8859-1"), "\xE4");
  EXPECT_STREQ(copy->getParameterValue("utf-8"), "\xC3\xA4");
  EXPECT_STREQ(copy->getParameterValue("no-such"), "\xE4");
  EXPECT_EQ(copy->getParameterValue(nullptr), nullptr);
  // What joins the words and what does not are two answers, whichever is asked first.
  VoMsgHeaderParameter words("name", "=?utf-8?Q?a?= =?utf-8?Q?b?=", true, nullptr);
  const char* charset = nullptr;
  EXPECT_STREQ(words.getParameterValueEx(charset), "ab");
  EXPECT_STREQ(charset, "utf-8");
  EXPECT_STREQ(words.getParameterValue("utf-8"), "a b");
}

TEST(HeaderField, CopiesAndDumps) {
  VoMsgHeaderField field("Content-Type", "text/plain");
  field._setDefaultCharset("utf-8");
  field.appendParameter("name", "a", "us-ascii", nullptr);
  const std::unique_ptr<VoMsgHeaderField> copy(field.newCopy());
  EXPECT_EQ(copy->isNewHeader(), 0);
  EXPECT_STREQ(copy->getDefaultCharset(), "utf-8");
  EXPECT_EQ(parametersOf(*copy), ";name=a");

  char text[1000];
  std::FILE* const out = fmemopen(text, sizeof text, "w");
  field.dumpHeaderField(out);
  std::fclose(out);
  std::string dump = text;
  const std::size_t address = dump.find("H'") + 2;
  EXPECT_EQ(dump.find_first_not_of("0123456789abcdef", address), address + 8);
  EXPECT_EQ(dump.erase(address, 8),
            "        isNewHeader       : true\n"
            "        name              : Content-Type\n"
            "        value             : text/plain\n"
            "        parameterList     : H'\n"
            "            name              : name\n"
            "            value             : a\n");
}

}  // namespace
