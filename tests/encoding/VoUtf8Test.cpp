#include "vomsg/encoding/VoUtf8.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

TEST(Utf8, EncodesAndDecodesEveryCode) {
  const auto check = [](unsigned code, int length) {
    const std::unique_ptr<unsigned char[]> bytes(new unsigned char[static_cast<std::size_t>(length)]);
    unsigned back = ~code;
    return voUcs2ToUtf8(code, bytes.get()) == length && voUtf8ToUcs2(bytes.get(), back) == length && back == code;
  };
  for (unsigned code = 1; code < 0x10000; ++code)
    ASSERT_TRUE(check(code, code < 0x80 ? 1 : code < 0x800 ? 2 : 3)) << code;
  for (unsigned payload = 0; payload < 0x100000; payload += 37)
    ASSERT_TRUE(check(0xD800DC00u | (payload & 0xFFC00) << 6 | (payload & 0x3FF), 4)) << payload;
}

TEST(Utf8, ReadsKnownBytes) {
  const struct {
    const char* bytes;
    int used;
    unsigned code;
  } kRows[] = {
      {"\xE2\x82\xAC", 3, 0x20AC},
      {"\xF0\x8F\x98\x80", 4, 0xD83DDE00},  // the offset of UTF-16 is left out on purpose
      {"\303A", 2, 0xC1},                   // continuation bytes are not checked
      {"\x80\x80", 2, 0},
      {"\xC3", 1, 0xFFFD},
      {"\xE2\x82", 2, 0xFFFD},
      {"\xF0\x9F\x98", 3, 0xFFFD},
      {"", 1, 0},
  };
  for (const auto& row : kRows) {
    unsigned code = 77;
    EXPECT_EQ(voUtf8ToUcs2(reinterpret_cast<const unsigned char*>(row.bytes), code), row.used) << row.code;
    EXPECT_EQ(code, row.code);
  }
}

}  // namespace
