// Any value decodes, without and with conversion; any text reads back after encoding.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "vomsg/header/VoMsgEncodedWord.h"

namespace {

void require(bool holds) {
  if (!holds) std::abort();
}

std::string reported(const char* value) {
  char* charset = nullptr;
  char* out = nullptr;
  require(voDecodeHeaderValue(charset, out, value) == kVoSuccess && out);
  const std::string text = out;
  voFreeHeaderValue(charset);
  voFreeHeaderValue(out);
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string value(reinterpret_cast<const char*>(data), size);
  const char* const text = value.c_str();
  const std::size_t length = std::strlen(text);
  // Decoding only takes away; what has neither words nor folds stays as it is.
  require(reported(text).size() <= length);
  if (!std::strstr(text, "=?") && !std::strpbrk(text, "\r\n")) require(reported(text) == text);
  for (const char* charset : {"utf-8", "iso-8859-1", "iso-2022-jp"}) {
    char* out = nullptr;
    require(voDecodeHeaderValue(charset, text, &out) == kVoSuccess && out);
    voFreeHeaderValue(out);
    require(voEncodeHeaderValue(charset, text, &out, 1) == kVoSuccess && out);
    require(!std::strpbrk(out, "\r\n ") && reported(out) == text);
    voFreeHeaderValue(out);
  }
  return 0;
}
