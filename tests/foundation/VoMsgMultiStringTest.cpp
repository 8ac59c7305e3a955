#include "vomsg/foundation/VoMsgMultiString.h"

#include <gtest/gtest.h>

namespace {

TEST(MultiString, FindsTextsByCanonicalCharset) {
  VoMsgMultiString name("raw", "us-ascii");
  name.addString("none", nullptr);
  name.addString("first", "UTF8");
  name.addString("second", "utf-8");
  name.addString(nullptr, "koi8-r");
  constexpr const char* kRows[][3] = {
      {nullptr, "raw", "us-ascii"},  // the string as first given, which no charset's name finds
      {"us-ascii", nullptr, nullptr},
      {"utf-8", "first", "UTF8"},
      {"KOI8-R", nullptr, "koi8-r"},
  };
  for (const auto& [charset, text, stored] : kRows) {
    EXPECT_STREQ(name.getString(charset), text);
    EXPECT_STREQ(name.getCharsetRef(charset), stored);
  }
  EXPECT_STREQ(name.getString(), "raw");
  EXPECT_STREQ(name.getCharset(), "us-ascii");
  EXPECT_EQ(VoMsgMultiString(nullptr).getString(), nullptr);
}

}  // namespace
