// The value of a field: read decoded, set encoded. Its parameters are in VoMsgHeaderFieldParameters.cpp.
//
// A value is decoded once, as a whole, and that text stays in the multi-string under the charset its encoded words
// named; every other charset is converted from it and kept there too. Nothing of this touches the raw value.
#include "vomsg/header/VoMsgHeaderField.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "vomsg/charset/convert/VoCharsetName.h"
#include "vomsg/charset/convert/VoConvertCharset.h"
#include "vomsg/charset/convert/VoMsgTextConversion.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgLogLine.h"
#include "vomsg/foundation/VoMsgTreeEpoch.h"
#include "vomsg/header/VoMsgEncodedWord.h"
#include "vomsg/header/VoMsgEntityHeader.h"
#include "vomsg/header/VoMsgFieldEncoding.h"
#include "vomsg/header/VoMsgLineBreaks.h"

using namespace vomsg::detail;

namespace {

constexpr char kLogSource[] = "VoMsgHeaderField";
constexpr char kUsAscii[] = "us-ascii";
constexpr char kIndent[] = "    ";
constexpr std::size_t kMaxCharsetName = 64;

// A name with a line break, or a blank in front that would continue the line before, is not taken.
bool isUsableName(std::string_view name) { return !hasLineBreak(name) && (name.empty() || !isBlank(name.front())); }

// "c:..." where a charset belongs: a path that happened to look like an encoded word.
bool looksLikePath(std::string_view charset) {
  return charset.size() > 1 && charset[1] == ':' && toLower(charset[0]) >= 'a' && toLower(charset[0]) <= 'z';
}

}  // namespace

VoMsgHeaderField::VoMsgHeaderField(const char* name, const char* rawValue)
    : mName(isUsableName(viewOf(name)) ? copyCStringOrNull(name) : nullptr) {
  guarded([&] { return store(rawValue, viewOf(rawValue).find("=?") != std::string_view::npos); });
  mValueMatters = true;
}

VoMsgHeaderField::~VoMsgHeaderField() = default;

VoMsgHeaderField* VoMsgHeaderField::newCopy() const {
  return guardedOr(static_cast<VoMsgHeaderField*>(nullptr), [&]() -> VoMsgHeaderField* {
    auto copy = std::make_unique<VoMsgHeaderField>(getName(), getRawFieldValue());
    if ((getName() && !copy->getName()) || (getRawFieldValue() && !copy->getRawFieldValue())) return nullptr;
    copy->mParameterList.reserve(mParameterList.size());
    for (const auto& parameter : mParameterList) {
      copy->mParameterList.emplace_back(parameter->newCopy());
      if (!copy->mParameterList.back()) return nullptr;
    }
    copy->mHasParameterList = !mParameterList.empty();
    copy->_setDefaultCharset(getDefaultCharset());
    if (getDefaultCharset() && !copy->getDefaultCharset()) return nullptr;
    return copy.release();
  });
}

void VoMsgHeaderField::dumpHeaderField(std::FILE* out) const {
  if (!out) return;
  const char* const flag = mIsNewHeader == 0 ? "false" : mIsNewHeader == 1 ? "true" : "----";
  const char* const raw = getRawFieldValue();
  std::fprintf(out, "%s%sisNewHeader       : %s\n", kIndent, kIndent, flag);
  std::fprintf(out, "%s%sname              : %s\n", kIndent, kIndent, mName ? mName.get() : "");
  std::fprintf(out, "%s%svalue             : %s\n", kIndent, kIndent, raw ? raw : "");
  // Eight digits on every platform: the low half is enough to tell lists apart.
  std::fprintf(out, "%s%sparameterList     : H'%.8x\n", kIndent, kIndent,
               static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(&mParameterList) & 0xFFFFFFFFu));
  for (const auto& parameter : mParameterList) parameter->dumpHeaderParameter(out);
}

const char* VoMsgHeaderField::logTag() const { return mpBlock ? mpBlock->_logTag() : ""; }

void VoMsgHeaderField::_exchangeContent(VoMsgHeaderField& other) noexcept {
  mValue.swap(other.mValue);
  std::swap(mHasEncodedWord, other.mHasEncodedWord);
  std::swap(mDecoded, other.mDecoded);  // points into the value, which moves along
  mCleaned.swap(other.mCleaned);
  std::swap(mHasParameterList, other.mHasParameterList);
  mParameterList.swap(other.mParameterList);
  mRfc2231List.swap(other.mRfc2231List);
}

void VoMsgHeaderField::_setDefaultCharset(const char* charset) { mDefaultCharset = copyCStringOrNull(charset); }

const char* VoMsgHeaderField::getRawFieldValue() const { return mValue ? mValue->getString() : nullptr; }

VoErrorCode VoMsgHeaderField::store(const char* raw, bool hasEncodedWord) {
  std::unique_ptr<VoMsgMultiString> value;
  if (raw) {
    value = std::make_unique<VoMsgMultiString>(hasLineBreak(raw) ? repairFolds(raw).c_str() : raw);
    if (!value->getString()) return kVoNoMemory;
  }
  mValue = std::move(value);
  mHasEncodedWord = hasEncodedWord;
  mDecoded = {};
  mCleaned.reset();
  if (mValueMatters && equalNoCase(viewOf(getName()), "Content-Type")) noteTreeChange();
  return kVoSuccess;
}

VoErrorCode VoMsgHeaderField::setRawFieldValue(const char* raw) {
  return VO_LOGGED(logTag(), guarded([&] { return store(raw, viewOf(raw).find("=?") != std::string_view::npos); }));
}

bool VoMsgHeaderField::decode() {
  if (mDecoded.tried || !mHasEncodedWord) return true;
  char* charset = nullptr;
  char* text = nullptr;
  const VoErrorCode code = voDecodeHeaderValue(charset, text, getRawFieldValue());
  const CString charsetOwner(charset);
  const CString textOwner(text);
  if (voFailed(code)) return false;
  mDecoded.tried = true;
  if (!text || viewOf(charset).size() > kMaxCharsetName) return true;
  const char* const name = charset ? charset : kUsAscii;
  mValue->addString(text, name);
  mDecoded.text = mValue->getString(name);
  mDecoded.charset = mValue->getCharsetRef(name);
  mDecoded.isDeclared = charset != nullptr;
  return true;
}

const char* VoMsgHeaderField::getFieldValue(const char* charset) {
  const char* const raw = getRawFieldValue();
  if (!charset || !raw) return nullptr;
  return guardedOr(static_cast<const char*>(nullptr), [&]() -> const char* {
    if (!decode()) return nullptr;
    // Asked before the copies are: a decoded text without declared charset is kept as "us-ascii", and the answer must
    // be the same on every call.
    if (equalNoCase(charset, kUsAscii)) return raw;
    if (const char* known = mValue->getString(charset)) return known;
    if (!mDecoded.text) return raw;
    if (equalNoCase(viewOf(mDecoded.charset), charset)) return mDecoded.text;
    std::string converted;
    if (convertText(converted, charset, mDecoded.charset, mDecoded.text) != Conversion::done) return raw;
    mValue->addString(converted.c_str(), charset);
    return mValue->getString(charset);
  });
}

const char* VoMsgHeaderField::getFieldValueEx(const char*& charsetOut) {
  charsetOut = nullptr;
  const char* const raw = getRawFieldValue();
  if (!raw) return nullptr;
  return guardedOr(static_cast<const char*>(nullptr), [&]() -> const char* {
    if (!decode()) return nullptr;
    if (!mDecoded.text || !mDecoded.isDeclared || looksLikePath(viewOf(mDecoded.charset))) return raw;
    const char* text = mDecoded.text;
    if (voIsEqualCharsetName(mDecoded.charset, "iso-2022-jp")) {
      if (!cleanJapanese()) return nullptr;
      text = mCleaned.get();
    }
    charsetOut = mDecoded.charset;
    return text;
  });
}

// Words encoded one by one and joined are full of escape sequences that switch forth and back between nothing; the
// way through UTF-8 leaves only those that are needed.
bool VoMsgHeaderField::cleanJapanese() {
  if (mCleaned) return true;
  const char* const utf8 = getFieldValue("utf-8");
  if (!utf8) return false;
  std::string cleaned;
  if (convertText(cleaned, mDecoded.charset, "utf-8", utf8) != Conversion::done) return false;
  mCleaned = copyCString(cleaned.c_str());
  return mCleaned != nullptr;
}

VoErrorCode VoMsgHeaderField::setFieldValue(const char* value, const char* srcCharset, const char* dstCharset) {
  return VO_LOGGED(logTag(), guarded([&] { return storeEncoded(value, srcCharset, dstCharset); }));
}

VoErrorCode VoMsgHeaderField::storeEncoded(const char* value, const char* srcCharset, const char* dstCharset) {
  if (!value || (dstCharset && !voIsRightCharsetName(dstCharset))) return kVoBadArgument;
  std::string raw;
  VoErrorCode code = encodeFieldValue(raw, viewOf(mName.get()), value, srcCharset, dstCharset);
  if (!voFailed(code)) code = store(raw.c_str(), true);
  if (!voFailed(code)) mIsNewHeader = 1;
  return code;
}
