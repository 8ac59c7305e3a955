#include "vomsg/foundation/VoMsgDump.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <string>

#include "vomsg/foundation/VoMsgMemoryResource.h"
#include "vomsg/foundation/VoMsgResourceDump.h"

namespace {

std::string captured(const std::function<void(std::FILE*)>& dump) {
  char* text = nullptr;
  std::size_t size = 0;
  std::FILE* const out = open_memstream(&text, &size);
  dump(out);
  std::fclose(out);
  const std::string result(text, size);
  std::free(text);
  return result;
}

std::string address(const char* data) {
  char text[16];
  std::snprintf(text, sizeof text, "%.8x", static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(data)));
  return text;
}

TEST(VoMsgDump, ShowsAddressHexAndText) {
  static const char data[] = "abcdefghij\r\n\0\x7f\xffZQ";  // 17 bytes
  const std::string first = address(data) + ": 61626364 65666768 696a0d0a 007fff5a         abcdefghij.....Z\n";
  const std::string second = address(data + 16) + ": 51                                          Q               \n";
  for (const unsigned length : {0u, 16u, 17u})
    EXPECT_EQ(captured([&](std::FILE* out) { dumpMemoryHex(out, data, length); }), length == 0    ? ""
                                                                                   : length == 16 ? first
                                                                                                  : first + second);
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
