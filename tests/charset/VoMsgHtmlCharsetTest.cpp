#include "vomsg/charset/detect/VoMsgHtmlCharset.h"

#include <gtest/gtest.h>

#include <memory>

#include "vomsg/entity/VoMsgRfc822Message.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"

namespace {

using vomsg::detail::htmlCharset;

TEST(HtmlCharset, IsReadFromMetaElements) {
  struct Row {
    const char* html;
    const char* want;
  };
  constexpr Row kRows[] = {
      {"<html><meta charset=koi8-r>", "koi8-r"},
      {"<META CharSet = 'Big5' />", "Big5"},
      {"<meta\nhttp-equiv=content-type content=\"text/html; charset=euc-jp\">", "euc-jp"},
      {"<meta name=a><meta charset=b>", "b"},
      {"<!-- <meta charset=a> --><meta charset=b>", "b"},
      {"<!--><meta charset=b>", "b"},
      {"<meta charset=\"\"><meta charset=b>", "b"},
      {"<meta charset=utf-16>", ""},  // it could not be read here if that were so
      {"<metadata charset=a>", ""},
      {"<p charset=a>", ""},
      {"<meta charset=a", ""},
      {"<!-- <meta charset=a>", ""},
      {"<meta", ""},
      {"", ""},
  };
  for (const Row& row : kRows) EXPECT_EQ(htmlCharset(row.html), row.want) << row.html;
  const std::string meta = "<meta charset=x>";
  EXPECT_EQ(htmlCharset(std::string(1024 - meta.size(), ' ') + meta), "x");
  EXPECT_EQ(htmlCharset(std::string(1025 - meta.size(), ' ') + meta), "");
}

TEST(TextCharset, IsDeclaredNamedRecognisedOrAssumed) {
  using Origin = VoMsgRfc822Entity::CharsetOrigin;
  struct Row {
    std::string message;
    const char* charset;
    Origin origin;
  };
  const std::string words = "\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\r\n";
  const Row rows[] = {
      {"Content-Type: text/plain; charset=koi8-r\r\n\r\n" + words, "koi8-r", Origin::declared},
      {"Subject: x\r\n\r\n" + words, "utf-8", Origin::detected},
      {"Content-Type: text/html\r\n\r\n" + words, "utf-8", Origin::detected},
      {"Content-Type: text/html\r\n\r\n<meta charset=koi8-r>" + words, "koi8-r", Origin::declared},
      {"Content-Type: text/calendar\r\n\r\n" + words, "us-ascii", Origin::assumed},
      {"Subject: x\r\n\r\nplain\r\n", "us-ascii", Origin::assumed},
  };
  for (const Row& row : rows) {
    VoMsgRfc822Message message;
    std::string bytes = row.message;
    ASSERT_EQ(message.readFrom(
                  new VoMsgMemoryResource(bytes.data(), static_cast<unsigned>(bytes.size()), 1, nullptr, nullptr)),
              kVoSuccess);
    auto origin = Origin::assumed;
    EXPECT_STREQ(message.getTextCharset(origin), row.charset) << row.message;
    EXPECT_EQ(origin, row.origin) << row.message;
  }
}

}  // namespace
