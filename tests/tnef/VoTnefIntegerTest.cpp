#include "vomsg/tnef/VoTnefInteger.h"

#include <gtest/gtest.h>

#include <tuple>

#include "tests/support/WindowStreams.h"
#include "tests/tnef/StreamBuilder.h"
#include "vomsg/tnef/VoMsgTnefText.h"

namespace vomsg::test {
namespace {

TEST(TnefInteger, FillsUpWhatTheEndCutsOff) {
  const std::string bytes = "\x78\x9F\x3E\x22";
  constexpr unsigned kWant[] = {0, 0x78, 0x9F78, 0x3E9F78, 0x223E9F78};
  for (std::size_t n = 0; n <= bytes.size(); ++n) {
    WindowReader four(std::string_view(bytes).substr(0, n), 1);
    EXPECT_EQ(_tnefGetInt32(&four), kWant[n]) << n;
    WindowReader two(std::string_view(bytes).substr(0, n), 1);
    EXPECT_EQ(_tnefGetInt16(&two), kWant[n] & 0xFFFF) << n;
  }
  EXPECT_EQ(_tnefGetInt32(nullptr) + _tnefGetInt16(nullptr), 0u);
}

TEST(TnefInteger, WritesAndSumsBytesAsUnsigned) {
  LimitedWriter writer;
  unsigned short sum = 0xFFFF;
  _tnefSetInt32(&writer, 0x223E9F78, sum);
  _tnefSetInt16(&writer, 0xFF01, sum);
  _tnefSetInt32(&writer, 0xFFFFFFFF);
  _tnefSetInt16(&writer, 0x0100);
  _tnefSetInt32(nullptr, 1, sum);
  writer.flush();
  EXPECT_EQ(writer.text, le32(0x223E9F78) + le16(0xFF01) + le32(0xFFFFFFFF) + le16(0x0100));
  EXPECT_EQ(sum, (0xFFFF + 0x78 + 0x9F + 0x3E + 0x22 + 0x01 + 0xFF) & 0xFFFF);

  const std::string bytes(3000, '\xFF');
  EXPECT_EQ(_tnefCalcCheckSum(bytes.data(), 3000), (3000 * 255) & 0xFFFF);
  EXPECT_EQ(_tnefCalcCheckSum(bytes.data(), 0), 0);
  EXPECT_EQ(_tnefCalcCheckSum(resourceOf(bytes).get()), (3000 * 255) & 0xFFFF);
  EXPECT_EQ(_tnefCalcCheckSum(static_cast<VoMsgResourceLocator*>(nullptr)), 0);
}

TEST(TnefText, ConvertsBetweenUtf16AndUtf8) {
  const std::tuple<std::string, std::string, bool> rows[] = {
      {"", "", true},
      {le16('z') + le16(0xE9) + le16(0x20AC), "z\xC3\xA9\xE2\x82\xAC", true},
      {le16(0xD83D) + le16(0xDE00), "\xF0\x9F\x98\x80", true},
      {le16(0xDBFF) + le16(0xDFFF), "\xF4\x8F\xBF\xBF", true},
      {le16('z') + le16(0) + le16('y'), "z", false},                     // stops at the NUL
      {le16('z') + "y", "z", false},                                     // an odd byte
      {le16(0xD83D) + le16('z'), "\xEF\xBF\xBDz", false},                // half a pair
      {le16(0xDE00) + le16(0xD83D), "\xEF\xBF\xBD\xEF\xBF\xBD", false},  // the other half first
  };
  for (const auto& [utf16, utf8, isSameBack] : rows) {
    EXPECT_EQ(detail::utf8FromUtf16(utf16), utf8);
    EXPECT_EQ(detail::utf16FromUtf8(utf8) == utf16, isSameBack) << utf8;
  }
  for (const char* bad : {"\x80", "\xC3", "\xC0\x80", "\xE2\x82", "\xED\xA0\x80", "\xF5\x80\x80\x80", "\xFF"})
    EXPECT_EQ(detail::utf16FromUtf8(bad).substr(0, 2), le16(0xFFFD)) << bad;
}

}  // namespace
}  // namespace vomsg::test
