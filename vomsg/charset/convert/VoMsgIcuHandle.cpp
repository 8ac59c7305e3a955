#include "vomsg/charset/convert/VoMsgIcuHandle.h"

#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>

#include <algorithm>
#include <array>

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
      sink(piece, static_cast<std::size_t>(to - piece), last && status != U_BUFFER_OVERFLOW_ERROR);
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

// What the bytes are worth as replacements.
constexpr auto kReplacementUnits = [] {
  std::array<char16_t, 256> units{};
  for (std::size_t byte = 0; byte < units.size(); ++byte) units[byte] = static_cast<char16_t>(byte);
  return units;
}();

// What ICU calls at invalid input; the context points to the unit to write for it.
void U_CALLCONV writeReplacement(const void* context, UConverterToUnicodeArgs* args, const char*, int32_t,
                                 UConverterCallbackReason reason, UErrorCode* status) {
  if (reason > UCNV_IRREGULAR) return;  // a reset or the end, no character
  *status = U_ZERO_ERROR;
  ucnv_cbToUWriteUChars(args, static_cast<const char16_t*>(context), 1, 0, status);
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

void replaceInvalidInIcu(UConverter& converter, char replaceChar) noexcept {
  UErrorCode status = U_ZERO_ERROR;
  const char16_t* const unit = &kReplacementUnits[static_cast<unsigned char>(replaceChar)];
  ucnv_setToUCallBack(&converter, writeReplacement, unit, nullptr, nullptr, &status);
}

void stopAtInvalidInIcu(UConverter& converter) noexcept {
  UErrorCode status = U_ZERO_ERROR;
  ucnv_setToUCallBack(&converter, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
}

int maxBytesPerChar(const UConverter& converter) noexcept { return ucnv_getMaxCharSize(&converter); }

bool decodeWithIcu(UConverter& converter, std::string_view bytes, std::u16string& text) {
  return decodePieces(converter, bytes,
                      [&](const char16_t* piece, std::size_t count, bool) { text.append(piece, count); });
}

bool encodeWithIcu(UConverter& converter, std::u16string_view text, std::string& bytes) {
  ucnv_resetFromUnicode(&converter);
  const auto append = [&](std::string_view block) { bytes.append(block); };
  for (; text.size() > kPiece; text.remove_prefix(kPiece))
    if (!encodePiece(converter, text.substr(0, kPiece), false, append)) return false;
  return encodePiece(converter, text, true, append);
}

VoErrorCode transcodeWithIcu(UConverter& from, UConverter& to, std::string_view bytes, std::string& result,
                             AdjustUnits adjust) {
  ucnv_resetFromUnicode(&to);
  result.reserve(result.size() + bytes.size());
  bool encoded = true;
  bool ended = false;
  const auto append = [&](std::string_view block) {
    if (ended) return;
    const std::string_view text = block.substr(0, block.find('\0'));
    result.append(text);
    ended = text.size() < block.size();
  };
  const bool decoded = decodePieces(from, bytes, [&](char16_t* piece, std::size_t count, bool last) {
    if (adjust) adjust(piece, count);
    if (encoded) encoded = encodePiece(to, {piece, count}, last, append);
  });
  return !decoded ? kVoConverterMissing : !encoded ? kVoConversionFailed : kVoSuccess;
}

VoErrorCode rewriteWithIcu(const char* to, const char* from, std::string_view bytes, Replacement replacement,
                           std::string& result, AdjustUnits adjust) {
  const IcuHandle decoder = openIcu(from);
  const IcuHandle encoder = openIcu(to);
  if (!decoder || !encoder) return kVoConverterMissing;
  if (replacement.allowed) {
    replaceInvalidInIcu(*decoder, replacement.byte);
    substituteInIcu(*encoder, replacement.byte);
  } else {
    stopAtInvalidInIcu(*decoder);
    stopInIcu(*encoder);
  }
  return voFailed(transcodeWithIcu(*decoder, *encoder, bytes, result, adjust)) ? kVoConversionFailed : kVoSuccess;
}

}  // namespace vomsg::detail
