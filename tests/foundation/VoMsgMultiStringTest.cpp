#include "vomsg/foundation/VoMsgMultiString.h"

#include <gtest/gtest.h>

namespace {

TEST(MultiString, FindsTextsByCanonicalCharset) {
  VoMsgMultiString name("raw", "us-ascii");
  EXPECT_STREQ(name.getString(), "raw");
  EXPECT_STREQ(name.getCharset(), "us-ascii");
  EXPECT_EQ(name.getString("us-ascii"), nullptr);  // the string as first given is not consulted
  EXPECT_STREQ(name.getString(nullptr), "raw");
  EXPECT_STREQ(name.getCharsetRef(nullptr), "us-ascii");

  name.addString("none", nullptr);
  name.addString("first", "UTF-8");
  name.addString("second", "utf-8");
  name.addString("latin", "iso-8859-1");
  name.addString(nullptr, "koi8-r");
  EXPECT_STREQ(name.getString("utf-8"), "first");
  EXPECT_STREQ(name.getCharsetRef("utf-8"), "UTF-8");
  EXPECT_STREQ(name.getString("ISO-8859-1"), "latin");
  EXPECT_EQ(name.getString("koi8-r"), nullptr);
  EXPECT_STREQ(name.getCharsetRef("KOI8-R"), "koi8-r");
  EXPECT_EQ(name.getCharsetRef("big5"), nullptr);

  const VoMsgMultiString empty(nullptr);
  EXPECT_EQ(empty.getString(), nullptr);
  EXPECT_EQ(empty.getCharset(), nullptr);
}

}  // namespace
