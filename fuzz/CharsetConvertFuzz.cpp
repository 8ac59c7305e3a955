// Any bytes through every converter, with and without replacement, and cut into pieces for encoded words.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "vomsg/charset/convert/VoConvertCharset.h"
#include "vomsg/charset/convert/VoMsgConverterFactory.h"

namespace {

void require(bool holds) {
  if (!holds) std::abort();
}

constexpr const char* kCharsets[] = {"utf-8",     "gb2312",      "hz-gb-2312", "big5",  "iso-8859-7", "iso-8859-1",
                                     "Shift_jis", "iso-2022-jp", "euc-jp",     "utf-7", "koi8-r",     "us-ascii"};

std::string convert(const char* to, const char* from, std::string text, bool enforce, bool& done) {
  auto* factory = VoMsgConverterFactory::getInstance();
  VoMsgCharsetConverter* converter = factory->createConverter(to, from, enforce, '?');
  require(converter != nullptr);
  std::string out;
  done = !voFailed(converter->convert(out, text));
  factory->destoryConverter(converter);
  return out;
}

void checkPieces(const char* to, const char* from, std::string text) {
  std::list<char*>* lines = nullptr;
  // HZ takes up to three times the room: who wants encoded words of 75 characters asks for less.
  const unsigned room = std::strcmp(to, "hz-gb-2312") == 0 ? 16 : 40;
  if (voFailed(voDivisionConvert(from, to, text, room, &lines))) return;
  for (const char* line : *lines) {
    require(*line != '\0' && std::strlen(line) < 128);
    // An encoded word has 75 characters: these two charsets are written in base64.
    if (std::strcmp(to, "iso-2022-jp") == 0 || std::strcmp(to, "hz-gb-2312") == 0)
      require((std::strlen(line) + 2) / 3 * 4 + std::strlen(to) + 7 <= 75);
  }
  voFreeLineTable(lines);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string text(reinterpret_cast<const char*>(data + 1), size - 1);
  const char* const from = kCharsets[data[0] % std::size(kCharsets)];
  for (const char* to : kCharsets) {
    bool done = false;
    const std::string replaced = convert(to, from, text, true, done);
    require(done || std::strstr(from, "8859") || std::strstr(to, "8859"));  // those stop at a NUL that they make
    const std::string strict = convert(to, from, text, false, done);
    require(!done || strict == replaced);
    checkPieces(to, from, text);
  }
  return 0;
}
