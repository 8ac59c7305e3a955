#include "vomsg/foundation/VoMsgDump.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string>

#include "vomsg/foundation/VoMsgMemoryResource.h"
#include "vomsg/foundation/VoMsgResourceDump.h"

namespace {

std::string captured(const std::function<void(std::FILE*)>& dump) {
  char text[20000] = "";
  std::FILE* const out = fmemopen(text, sizeof text, "w");
  dump(out);
  std::fclose(out);
  return text;
}

TEST(VoMsgDump, ShowsAddressHexAndText) {
  static const char data[] = "abcdefghij\r\n\0\x7f\xffZQ";  // 17 bytes
  const auto address = static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(data));
  char want[200];
  const int first =
      std::snprintf(want, sizeof want, "%.8x: 61626364 65666768 696a0d0a 007fff5a         abcdefghij.....Z\n", address);
  std::snprintf(want + first, sizeof want - static_cast<std::size_t>(first), "%.8x: 51%42sQ               \n",
                address + 16, "");
  EXPECT_EQ(captured([](std::FILE* out) { dumpMemoryHex(out, data, 17); }), want);
  want[first] = '\0';
  EXPECT_EQ(captured([](std::FILE* out) { dumpMemoryHex(out, data, 16); }), want);
}

TEST(VoMsgResourceDump, DumpsEveryByteInPiecesThatEndLines) {
  std::string content(1280 * 2 + 1, 'y');
  VoMsgMemoryResource resource(content.data(), static_cast<unsigned>(content.size()), nullptr, nullptr),
      empty(0u, "", "");
  const std::string text = captured([&](std::FILE* out) {
    dumpContentResource(out, &resource);
    dumpContentResource(out, &empty);
    dumpContentResource(out, nullptr);
    dumpContentResource(nullptr, &resource);
    dumpMemoryHex(out, nullptr, 5);
  });
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 161);
  EXPECT_EQ(std::count(text.begin(), text.end(), 'y'), 1280 * 2 + 1);
}

}  // namespace
