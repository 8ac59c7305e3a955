// What the conversion tests share.
#pragma once

#include <memory>
#include <ostream>
#include <random>
#include <string>
#include <string_view>

#include "vomsg/charset/convert/VoMsgConverterFactory.h"
#include "vomsg/charset/convert/VoMsgJISToUTF8JpConverter.h"
#include "vomsg/charset/convert/VoMsgSJISToUTF8JpConverter.h"
#include "vomsg/charset/convert/VoMsgUTF8ToJISJpConverter.h"
#include "vomsg/charset/convert/VoMsgUTF8ToSJISJpConverter.h"

struct Converted {
  VoErrorCode code;
  std::string text;
  bool operator==(const Converted&) const = default;
};
inline std::ostream& operator<<(std::ostream& out, const Converted& result) {
  return out << std::hex << result.code << " \"" << result.text << '"';
}

using ConverterPtr = std::unique_ptr<VoMsgCharsetConverter>;

// The factory's converter. Behind the name "own utf-8" are the Japanese classes that it does not hand out.
inline ConverterPtr makeConverter(const char* to, const char* from, bool enforce = true) {
  const std::string toName = to ? to : "", fromName = from ? from : "";
  const signed char flag = enforce;
  if (toName == "own utf-8" && fromName == "iso-2022-jp") return std::make_unique<VoMsgJISToUTF8JpConverter>(flag, '?');
  if (toName == "own utf-8") return std::make_unique<VoMsgSJISToUTF8JpConverter>(flag, '?');
  if (fromName == "own utf-8" && toName == "iso-2022-jp") return std::make_unique<VoMsgUTF8ToJISJpConverter>(flag, '?');
  if (fromName == "own utf-8") return std::make_unique<VoMsgUTF8ToSJISJpConverter>(flag, '?');
  return ConverterPtr(VoMsgConverterFactory::getInstance()->createConverter(to, from, flag, '?'));
}

// Converts into another string, and over the text itself, which must come to the same.
inline Converted run(VoMsgCharsetConverter& converter, std::string_view text) {
  std::string in(text);
  in.shrink_to_fit();
  std::string out = "what was there before";
  const VoErrorCode code = converter.convert(out, in);
  if (converter.convert(in, in) != code || in != out) return {0, "differs in place"};
  return {code, out};
}

inline Converted convert(const char* to, const char* from, std::string_view text, bool enforce = true) {
  const ConverterPtr converter = makeConverter(to, from, enforce);
  return converter ? run(*converter, text) : Converted{0, "no converter"};
}

// Up to `longest` bytes of the alphabet.
inline std::string randomText(std::mt19937& random, std::string_view alphabet, std::size_t longest) {
  std::string text(random() % (longest + 1), '\0');
  for (char& c : text) c = alphabet[random() % alphabet.size()];
  return text;
}
