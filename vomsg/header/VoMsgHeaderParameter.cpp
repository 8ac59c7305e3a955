#include "vomsg/header/VoMsgHeaderParameter.h"

#include <string>

#include "vomsg/charset/convert/VoMsgTextConversion.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/header/VoMsgEncodedWord.h"

using vomsg::detail::Conversion;
using vomsg::detail::CString;
using vomsg::detail::guardedOr;

namespace {
constexpr char kUsAscii[] = "us-ascii";
constexpr char kIndent[] = "    ";
}  // namespace

VoMsgHeaderParameter::VoMsgHeaderParameter(const char* name, const char* value, bool isEncoded, const char* charset)
    : mName(vomsg::detail::copyCStringOrNull(name)), mIsEncoded(isEncoded) {
  setRawParameterValue(value, isEncoded, charset);
}

VoMsgHeaderParameter::~VoMsgHeaderParameter() = default;

VoMsgHeaderParameter* VoMsgHeaderParameter::newCopy() const {
  return guardedOr(static_cast<VoMsgHeaderParameter*>(nullptr), [&]() -> VoMsgHeaderParameter* {
    auto copy = std::make_unique<VoMsgHeaderParameter>(getName(), getRawParameterValue(), mIsEncoded,
                                                       mValue ? mValue->getCharset() : nullptr);
    const bool complete = (copy->getName() || !getName()) && (copy->getRawParameterValue() || !getRawParameterValue());
    return complete ? copy.release() : nullptr;
  });
}

void VoMsgHeaderParameter::setRawParameterValue(const char* value, bool isEncoded, const char* charset) {
  mIsEncoded = isEncoded;
  mDecoded.reset();
  mValue = guardedOr(std::unique_ptr<VoMsgMultiString>(), [&] {
    std::unique_ptr<VoMsgMultiString> text;
    if (!value) return text;
    if (isEncoded || !charset) {
      text = std::make_unique<VoMsgMultiString>(value);
    } else {
      text = std::make_unique<VoMsgMultiString>(value, charset);
      text->addString(value, charset);
    }
    return text;
  });
}

const char* VoMsgHeaderParameter::getRawParameterValue() const { return mValue ? mValue->getString() : nullptr; }

const char* VoMsgHeaderParameter::getParameterValue(const char* charset) {
  const char* const raw = getRawParameterValue();
  if (!charset || !raw) return nullptr;
  return guardedOr(static_cast<const char*>(nullptr), [&]() -> const char* {
    if (const char* known = mValue->getString(charset)) return known;
    if (mIsEncoded) {
      char* decoded = nullptr;
      const VoErrorCode code = voDecodeHeaderValue(charset, raw, &decoded);
      const CString owner(decoded);
      if (voFailed(code) || !decoded) return nullptr;
      mValue->addString(decoded, charset);
      return mValue->getString(charset);
    }
    const char* const own = mValue->getCharset();
    std::string converted;
    const Conversion result = vomsg::detail::convertText(converted, charset, own ? own : kUsAscii, raw);
    mValue->addString(result == Conversion::missing ? raw : converted.c_str(), charset);
    // The copy of a failed conversion stays on purpose: the first call tells of the failure, later ones give what
    // could be converted.
    return result == Conversion::failed ? nullptr : mValue->getString(charset);
  });
}

const char* VoMsgHeaderParameter::getParameterValueEx(const char*& charsetOut) {
  charsetOut = nullptr;
  const char* const raw = getRawParameterValue();
  if (!raw || !mIsEncoded) return raw;
  // Kept apart from the copies per charset: this decoding joins neighbouring words, which the converting one does
  // not, and the answers of getParameterValue() must not depend on who asked first.
  if (!mDecoded) {
    char* charset = nullptr;
    char* decoded = nullptr;
    const VoErrorCode code = voDecodeHeaderValue(charset, decoded, raw);
    const CString charsetOwner(charset);
    const CString decodedOwner(decoded);
    if (voFailed(code) || !decoded) return nullptr;
    mDecoded =
        guardedOr(std::unique_ptr<VoMsgString>(), [&] { return std::make_unique<VoMsgString>(decoded, charset); });
    if (!mDecoded) return nullptr;
  }
  charsetOut = mDecoded->getCharset();
  return mDecoded->getString();
}

void VoMsgHeaderParameter::dumpHeaderParameter(std::FILE* out) const {
  if (!out) return;
  const char* const raw = getRawParameterValue();
  std::fprintf(out, "%s%s%sname              : %s\n", kIndent, kIndent, kIndent, mName ? mName.get() : "");
  std::fprintf(out, "%s%s%svalue             : %s\n", kIndent, kIndent, kIndent, raw ? raw : "");
}
