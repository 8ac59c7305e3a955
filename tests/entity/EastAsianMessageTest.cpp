// Whole messages in the Japanese and Chinese charsets: read, shown, given a new subject, written and read again.
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>

#include "tests/support/MessageFixture.h"
#include "vomsg/charset/convert/VoMsgConverterFactory.h"
#include "vomsg/encoding/VoBase64.h"

namespace {

using namespace vomsg::test;

std::string convert(const char* to, const char* from, std::string text) {
  const std::unique_ptr<VoMsgCharsetConverter> converter(
      VoMsgConverterFactory::getInstance()->createConverter(to, from, 0, '?'));
  std::string out;
  return converter && converter->convert(out, text) == kVoSuccess ? out : "conversion failed";
}

std::string inCharset(const std::string& charset, const char* text) {
  if (charset != "hz-gb-2312") return convert(charset.c_str(), "utf-8", text);
  return convert("hz-gb-2312", "gb2312", convert("gb2312", "utf-8", text));
}

std::string subjectOf(MessageFixture& message) {
  const char* const subject = message->getHeaderValue("Subject", "utf-8");
  return subject ? subject : "no subject";
}

TEST(EastAsianMessage, IsReadShownAndGivenANewSubject) {
  struct Language {
    const char *subject, *body, *shortSubject, *longSubject;
  };
  const Language japanese = {"【重要】会議のご案内 ①",
                             "いつもお世話になっております。\r\n会議は3時からA会議室で~\\行います。\r\n", "Re: 会議",
                             "Re: 【重要】来週の木曜日に東京本社で行われる会議の資料について (再送) ABC "
                             "株式会社の皆様へ、ご確認をお願いします"};
  const Language chinese = {
      "会议通知—第1号", "您好！\r\n附件是会议记录~，请查收。\r\n谢谢·再见\r\n", "Re: 会议",
      "Re: 会议通知—下周四下午3点在北京总部A会议室举行，请各位同事准时参加并带好有关的资料 (第2号)"};
  const Language taiwanese = {
      "會議通知第1號", "您好！\r\n附件是會議記錄，請查收。\r\n", "Re: 會議",
      "Re: 會議通知，下週四下午3點在台北總公司A會議室舉行，請各位同事準時參加並帶好有關的資料 (第2號)"};
  const struct {
    const char* charset;
    const Language& text;
  } kRows[] = {{"iso-2022-jp", japanese}, {"Shift_jis", japanese}, {"euc-jp", japanese},
               {"gb2312", chinese},       {"hz-gb-2312", chinese}, {"big5", taiwanese}};
  for (const auto& row : kRows)
    for (const bool isLong : {false, true}) {
      SCOPED_TRACE(row.charset);
      const std::string body = inCharset(row.charset, row.text.body);
      char* const subject = voEncodeBase64(inCharset(row.charset, row.text.subject).c_str());
      const std::string source = std::string("From: a@example.com\r\nSubject: =?") + row.charset + "?B?" + subject +
                                 "?=\r\nContent-Type: text/plain; charset=" + row.charset + "\r\n\r\n" + body;
      std::free(subject);

      MessageFixture message(source);
      ASSERT_EQ(message.code, kVoSuccess);
      EXPECT_EQ(subjectOf(message), row.text.subject);
      int err = 0;
      EXPECT_EQ(bytesOf(message->getTextContent(err, nullptr, "utf-8")), row.text.body);
      EXPECT_EQ(static_cast<VoErrorCode>(err), kVoSuccess);
      EXPECT_EQ(written(*message), source);

      const char* const newSubject = isLong ? row.text.longSubject : row.text.shortSubject;
      ASSERT_EQ(message->setHeaderValue("Subject", newSubject, "utf-8", row.charset), kVoSuccess);
      const std::string result = written(*message);
      EXPECT_EQ(result.substr(result.find("\r\n\r\n")), "\r\n\r\n" + body);
      const std::string words = result.substr(0, result.find("Content-Type"));
      EXPECT_EQ(words.find(newSubject), words.npos) << "not encoded";
      for (std::size_t from = 0, to; (to = words.find("\r\n", from)) != words.npos; from = to + 2)
        EXPECT_LE(to - from, 78u) << words.substr(from, to - from);

      MessageFixture again(result);
      EXPECT_EQ(subjectOf(again), newSubject);
      EXPECT_EQ(bytesOf(again->getTextContent(err, nullptr, "utf-8")), row.text.body);
    }
}

}  // namespace
