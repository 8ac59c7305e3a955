#include "vomsg/foundation/VoUUID.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

#include "vomsg/foundation/VoMsgProcess.h"

namespace {

std::string textOf(const VoUUID_t& uuid) {
  const auto out = std::make_unique<char[]>(37);
  EXPECT_EQ(vo_stringFromUUID(&uuid, out.get()), kVoSuccess);
  return out.get();
}

TEST(VoUUID, IsDrawnFromTheSeededSequence) {
  srand48(42);
  const auto a = static_cast<unsigned>(lrand48()), b = static_cast<unsigned>(lrand48());
  const auto c = static_cast<unsigned>(lrand48()), d = static_cast<unsigned>(lrand48());
  char want[37];
  std::snprintf(want, sizeof want, "%.8X-%.4X-%.4X-%.2X%.2X-%.2X%.2X%.2X%.2X%.2X%.2X", a, b & 0xFFFF, b >> 16, c & 255,
                c >> 8 & 255, c >> 16 & 255, c >> 24, d & 255, d >> 8 & 255, d >> 16 & 255, d >> 24);
  VoUUID_t uuid;
  srand48(42);
  ASSERT_EQ(vo_createUUID(&uuid), kVoSuccess);
  EXPECT_EQ(textOf(uuid), want);
  EXPECT_EQ(textOf({0x89ABCDEF, 0x0123, 0x4567, {0xFE, 0xDC, 0xBA, 0x98, 0x76, 0x54, 0x32, 0x10}}),
            "89ABCDEF-0123-4567-FEDC-BA9876543210");
  EXPECT_EQ(vo_createUUID(nullptr), kVoBadArgument);
  EXPECT_EQ(vo_stringFromUUID(nullptr, want), kVoNoMemory);
  EXPECT_EQ(vo_stringFromUUID(&uuid, nullptr), kVoNoMemory);
}

TEST(VoUUID, EqualityLooksAtEveryByte) {
  VoUUID_t zero{}, other{};
  EXPECT_TRUE(vo_isEqualUUID(nullptr, nullptr) && vo_isEqualUUID(&zero, &other));
  EXPECT_FALSE(vo_isEqualUUID(&zero, nullptr) || vo_isEqualUUID(nullptr, &zero));
  for (std::size_t i = 0; i < sizeof other; ++i, other = {}) {
    reinterpret_cast<unsigned char*>(&other)[i] = 1;
    EXPECT_FALSE(vo_isEqualUUID(&zero, &other)) << i;
  }
}

TEST(VoMsgProcess, VersionIsCutAsSnprintfDoes) {
  char buffer[64];
  EXPECT_EQ(voMsgGetVersion(buffer, sizeof buffer), 32);
  EXPECT_STREQ(buffer, "[VO Message Module] 1.100.0.0000");
  EXPECT_EQ(voMsgGetVersion(buffer, 10), 32);
  EXPECT_STREQ(buffer, "[VO Messa");
}

}  // namespace
