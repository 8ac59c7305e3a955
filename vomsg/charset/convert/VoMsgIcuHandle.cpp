#include "vomsg/charset/convert/VoMsgIcuHandle.h"

#include <unicode/ucnv.h>

#include <algorithm>

namespace vomsg::detail {
namespace {

constexpr std::size_t kPiece = 4096;
// ICU takes at most 2^31 - 1 bytes a call.
constexpr std::size_t kLongestInput = std::size_t{1} << 24;

bool mayReachIcu(std::string_view name) {
  return !name.empty() && std::none_of(name.begin(), name.end(), [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7F || c == '/' || c == '\\';
  });
}

// Hands the text of `bytes` to `sink` piece by piece, the last one (perhaps empty) marked as such; false when ICU
// fails.
template <class Sink>
bool decodePieces(UConverter& converter, std::string_view bytes, Sink&& sink) {
  ucnv_resetToUnicode(&converter);
  char16_t piece[kPiece];
  for (;;) {
    const std::string_view now = bytes.substr(0, kLongestInput);
    const bool last = now.size() == bytes.size();
    const char* from = now.data();
    UErrorCode status = U_BUFFER_OVERFLOW_ERROR;
    while (status == U_BUFFER_OVERFLOW_ERROR) {
      char16_t* to = piece;
      status = U_ZERO_ERROR;
      ucnv_toUnicode(&converter, &to, piece + kPiece, &from, now.data() + now.size(), nullptr, last, &status);
      if (U_FAILURE(status) && status != U_BUFFER_OVERFLOW_ERROR) return false;
      sink(std::u16string_view(piece, static_cast<std::size_t>(to - piece)), last && status != U_BUFFER_OVERFLOW_ERROR);
    }
    if (last) return true;
    bytes.remove_prefix(now.size());
  }
}

// The other way. Only the call with the last piece ends the conversion.
template <class Sink>
bool encodePiece(UConverter& converter, std::u16string_view text, bool last, Sink&& sink) {
  char block[kPiece];
  const char16_t* from = text.data();
  UErrorCode status = U_BUFFER_OVERFLOW_ERROR;
  while (status == U_BUFFER_OVERFLOW_ERROR) {
    char* to = block;
    status = U_ZERO_ERROR;
    ucnv_fromUnicode(&converter, &to, block + kPiece, &from, text.data() + text.size(), nullptr, last, &status);
    sink(std::string_view(block, static_cast<std::size_t>(to - block)));
  }
  return U_SUCCESS(status);
}

}  // namespace

void IcuCloser::operator()(UConverter* converter) const noexcept { ucnv_close(converter); }

IcuHandle openIcu(const char* name) noexcept {
  if (!name || !mayReachIcu(name)) return nullptr;
  UErrorCode status = U_ZERO_ERROR;
  IcuHandle converter(ucnv_open(name, &status));
  // Warnings are negative and harmless: an ambiguous alias opens all the same.
  if (U_FAILURE(status)) return nullptr;
  ucnv_setFallback(converter.get(), false);
  return converter;
}

void substituteInIcu(UConverter& converter, char replaceChar) noexcept {
  UErrorCode status = U_ZERO_ERROR;
  ucnv_setSubstChars(&converter, &replaceChar, 1, &status);
  status = U_ZERO_ERROR;
  ucnv_setFromUCallBack(&converter, UCNV_FROM_U_CALLBACK_SUBSTITUTE, nullptr, nullptr, nullptr, &status);
}

void stopInIcu(UConverter& converter) noexcept {
  UErrorCode status = U_ZERO_ERROR;
  ucnv_setFromUCallBack(&converter, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
}

int maxBytesPerChar(const UConverter& converter) noexcept { return ucnv_getMaxCharSize(&converter); }

bool decodeWithIcu(UConverter& converter, std::string_view bytes, std::u16string& text) {
  return decodePieces(converter, bytes, [&](std::u16string_view piece, bool) { text.append(piece); });
}

bool encodeWithIcu(UConverter& converter, std::u16string_view text, std::string& bytes) {
  ucnv_resetFromUnicode(&converter);
  const auto append = [&](std::string_view block) { bytes.append(block); };
  for (; text.size() > kPiece; text.remove_prefix(kPiece))
    if (!encodePiece(converter, text.substr(0, kPiece), false, append)) return false;
  return encodePiece(converter, text, true, append);
}

VoErrorCode transcodeWithIcu(UConverter& from, UConverter& to, std::string_view bytes, std::string& result) {
  ucnv_resetFromUnicode(&to);
  bool encoded = true;
  bool ended = false;
  const auto append = [&](std::string_view block) {
    if (ended) return;
    const std::string_view text = block.substr(0, block.find('\0'));
    result.append(text);
    ended = text.size() < block.size();
  };
  const bool decoded = decodePieces(from, bytes, [&](std::u16string_view piece, bool last) {
    if (encoded) encoded = encodePiece(to, piece, last, append);
  });
  return !decoded ? kVoConverterMissing : !encoded ? kVoConversionFailed : kVoSuccess;
}

}  // namespace vomsg::detail
