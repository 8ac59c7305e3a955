// The parameters of a field. Values that arrive in pieces (RFC 2231) are put together on first demand and kept, one
// entry a name, until the parameters change.
#include <algorithm>
#include <string_view>

#include "vomsg/charset/convert/VoCharsetName.h"
#include "vomsg/charset/convert/VoMsgTextConversion.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgLogLine.h"
#include "vomsg/foundation/VoMsgTreeEpoch.h"
#include "vomsg/header/VoMsgFieldEncoding.h"
#include "vomsg/header/VoMsgHeaderField.h"
#include "vomsg/header/VoMsgHeaderName.h"
#include "vomsg/header/VoMsgLineBreaks.h"
#include "vomsg/header/VoMsgRfc2231.h"

using namespace vomsg::detail;

namespace {

constexpr char kLogSource[] = "VoMsgHeaderField";
constexpr char kUsAscii[] = "us-ascii";

bool isUsableTarget(const char* charset) { return !charset || voIsRightCharsetName(charset); }

VoMsgHeaderParameter* findIn(const ParameterList& list, const char* name) {
  const auto found = std::find_if(list.begin(), list.end(), [&](const auto& parameter) {
    return parameter->getName() && equalNoCase(parameter->getName(), name);
  });
  return found == list.end() ? nullptr : found->get();
}

std::unique_ptr<VoMsgHeaderParameter> makeParameter(const char* name, const char* value, bool isEncoded,
                                                    const char* charset) {
  auto parameter = std::make_unique<VoMsgHeaderParameter>(name, value, isEncoded, charset);
  const bool complete = parameter->getName() && (!value || parameter->getRawParameterValue());
  return complete ? std::move(parameter) : nullptr;
}

}  // namespace

VoMsgHeaderParameter* VoMsgHeaderField::find(const char* name) const {
  return name ? findIn(mParameterList, name) : nullptr;
}

void VoMsgHeaderField::changeParameters() {
  mRfc2231List.clear();
  mHasParameterList = true;
  mIsNewHeader = 1;
  if (find("boundary")) noteBoundaryChange();
}

// Positional access, and plain values.

unsigned VoMsgHeaderField::countParameter() const { return static_cast<unsigned>(mParameterList.size()); }

const char* VoMsgHeaderField::getParameterNameAt(unsigned i) const {
  return i < mParameterList.size() ? mParameterList[i]->getName() : nullptr;
}

const char* VoMsgHeaderField::getRawParameterValueAt(unsigned i) const {
  return i < mParameterList.size() ? mParameterList[i]->getRawParameterValue() : nullptr;
}

const char* VoMsgHeaderField::getParameterValueAt(unsigned i, const char* charset) {
  return i < mParameterList.size() ? mParameterList[i]->getParameterValue(charset) : nullptr;
}

const char* VoMsgHeaderField::getParameterValueAtEx(unsigned i, const char*& charsetOut) {
  charsetOut = nullptr;
  return i < mParameterList.size() ? mParameterList[i]->getParameterValueEx(charsetOut) : nullptr;
}

const char* VoMsgHeaderField::getRawParameterValue(const char* name) const {
  const VoMsgHeaderParameter* const parameter = find(name);
  return parameter ? parameter->getRawParameterValue() : nullptr;
}

// Values by name.

const char* VoMsgHeaderField::getParameterValue(const char* name, const char* charset) {
  if (!name || !charset) return nullptr;
  return guardedOr(static_cast<const char*>(nullptr), [&]() -> const char* {
    if (hasRFC2231(name)) {
      const VoMsgHeaderParameter* entry = findIn(mRfc2231List, name);
      const char* known = entry ? entry->getMultiString()->getString(charset) : nullptr;
      if (known) return known;
      std::string assembled;
      if (getConvertRFC2231Value(name, charset, assembled)) {
        entry = findIn(mRfc2231List, name);
        return entry ? entry->getMultiString()->getString(charset) : nullptr;
      }
    }
    VoMsgHeaderParameter* const parameter = find(name);
    return parameter ? parameter->getParameterValue(charset) : nullptr;
  });
}

const char* VoMsgHeaderField::getParameterValueEx(const char* name, const char*& charsetOut) {
  charsetOut = nullptr;
  if (!name) return nullptr;
  return guardedOr(static_cast<const char*>(nullptr), [&]() -> const char* {
    if (hasRFC2231(name)) {
      std::string charset;
      const char* value = getRfc2231Charset(name, charset) ? getParameterValue(name, charset.c_str()) : nullptr;
      if (!value) {
        charset = kUsAscii;
        value = getParameterValue(name, kUsAscii);
      }
      if (const VoMsgHeaderParameter* const entry = findIn(mRfc2231List, name)) {
        charsetOut = entry->getMultiString()->getCharsetRef(charset.c_str());
        return value;
      }
    }
    VoMsgHeaderParameter* const parameter = find(name);
    return parameter ? parameter->getParameterValueEx(charsetOut) : nullptr;
  });
}

// Changes.

// A new parameter is named as RFC 2045 has it; what stands in the field already may be named anything.
bool VoMsgHeaderField::canTake(const char* parameterName) const {
  return parameterName && (isToken(parameterName) || find(parameterName));
}

VoErrorCode VoMsgHeaderField::addParameter(const char* name, const char* value, bool isEncoded, const char* charset) {
  const bool broken = value && hasLineBreak(value);
  auto parameter = makeParameter(name, broken ? joinLines(value).c_str() : value, isEncoded, charset);
  if (!parameter) return kVoNoMemory;
  mParameterList.push_back(std::move(parameter));
  mHasParameterList = true;
  mRfc2231List.clear();
  return kVoSuccess;
}

VoErrorCode VoMsgHeaderField::appendRawParameter(const char* name, const char* value, bool isEncoded,
                                                 const char* charset) {
  return VO_LOGGED(logTag(), guarded([&] {
                     return canTake(name) ? addParameter(name, value, isEncoded, charset) : kVoBadArgument;
                   }));
}

VoErrorCode VoMsgHeaderField::insertEncoded(std::size_t at, const char* name, const char* value, const char* srcCharset,
                                            const char* dstCharset) {
  std::string text;
  if (value) {
    const VoErrorCode code = encodeText(text, value, srcCharset, dstCharset);
    if (voFailed(code)) return code;
  }
  auto parameter = makeParameter(name, value ? text.c_str() : nullptr, value != nullptr, nullptr);
  if (!parameter) return kVoNoMemory;
  mParameterList.insert(mParameterList.begin() + static_cast<std::ptrdiff_t>(at), std::move(parameter));
  changeParameters();
  return kVoSuccess;
}

VoErrorCode VoMsgHeaderField::appendParameter(const char* name, const char* value, const char* srcCharset,
                                              const char* dstCharset) {
  return VO_LOGGED(logTag(), guarded([&] {
                     if (!canTake(name) || !isUsableTarget(dstCharset)) return kVoBadArgument;
                     return insertEncoded(mParameterList.size(), name, value, srcCharset, dstCharset);
                   }));
}

VoErrorCode VoMsgHeaderField::insertParameterAt(unsigned i, const char* name, const char* value, const char* srcCharset,
                                                const char* dstCharset) {
  return VO_LOGGED(logTag(), guarded([&] {
                     if (!canTake(name) || !isUsableTarget(dstCharset)) return kVoBadArgument;
                     if (i > mParameterList.size()) return kVoOutOfRange;
                     return insertEncoded(i, name, value, srcCharset, dstCharset);
                   }));
}

VoErrorCode VoMsgHeaderField::setParameterValue(const char* name, const char* value, const char* srcCharset,
                                                const char* dstCharset) {
  return VO_LOGGED(logTag(), guarded([&] { return setEncodedParameter(name, value, srcCharset, dstCharset); }));
}

// The new parameter is complete before the old one, or its pieces, go.
VoErrorCode VoMsgHeaderField::setEncodedParameter(const char* name, const char* value, const char* srcCharset,
                                                  const char* dstCharset) {
  if (!name || !(canTake(name) || hasRFC2231(name)) || (value && !isUsableTarget(dstCharset))) return kVoBadArgument;
  const VoMsgHeaderParameter* const existing = value ? find(name) : nullptr;
  std::string text;
  if (value) {
    const VoErrorCode code = encodeText(text, value, srcCharset, dstCharset);
    if (voFailed(code)) return existing && code != kVoBadArgument ? kVoEncodeFailed : code;
  }
  auto made =
      makeParameter(existing ? existing->getName() : name, value ? text.c_str() : nullptr, value != nullptr, nullptr);
  if (!made) return kVoNoMemory;
  if (existing) {
    std::find_if(mParameterList.begin(), mParameterList.end(), [&](const auto& p) {
      return p.get() == existing;
    })->swap(made);
  } else {
    mParameterList.push_back(std::move(made));
  }
  removePieces(name);
  changeParameters();
  return kVoSuccess;
}

VoErrorCode VoMsgHeaderField::removeParameterAt(unsigned i) {
  VoErrorCode code = kVoSuccess;
  if (!mHasParameterList) {
    code = kVoNoSuchHeader;
  } else if (i >= mParameterList.size()) {
    code = kVoOutOfRange;
  } else {
    mParameterList.erase(mParameterList.begin() + static_cast<std::ptrdiff_t>(i));
    changeParameters();
  }
  return VO_LOGGED(logTag(), code);
}

void VoMsgHeaderField::_keepLastParameter(const char* name) {
  auto left = std::count_if(mParameterList.begin(), mParameterList.end(),
                            [&](const auto& parameter) { return equalNoCase(viewOf(parameter->getName()), name); });
  const auto goes = [&](const auto& parameter) {
    return equalNoCase(viewOf(parameter->getName()), name) && left-- > 1;
  };
  mParameterList.erase(std::remove_if(mParameterList.begin(), mParameterList.end(), goes), mParameterList.end());
  mRfc2231List.clear();
}

void VoMsgHeaderField::_dropParameters() {
  mParameterList.clear();
  mRfc2231List.clear();
}

bool VoMsgHeaderField::removePieces(const char* name) {
  const auto kept = std::remove_if(mParameterList.begin(), mParameterList.end(), [&](const auto& parameter) {
    return isPieceOf(viewOf(parameter->getName()), name);
  });
  const bool found = kept != mParameterList.end();
  mParameterList.erase(kept, mParameterList.end());
  return found;
}

VoErrorCode VoMsgHeaderField::removeParameter(const char* name) {
  if (!name || !mHasParameterList) return VO_LOGGED(logTag(), kVoBadArgument);
  bool removed = removePieces(name);
  if (!removed) {
    const auto found = std::find_if(mParameterList.begin(), mParameterList.end(), [&](const auto& parameter) {
      return equalNoCase(viewOf(parameter->getName()), name);
    });
    removed = found != mParameterList.end();
    if (removed) mParameterList.erase(found);
  }
  if (removed) changeParameters();
  return kVoSuccess;
}

// RFC 2231.

bool VoMsgHeaderField::hasRFC2231(const char* name) const {
  return name && std::any_of(mParameterList.begin(), mParameterList.end(),
                             [&](const auto& parameter) { return isPieceOf(viewOf(parameter->getName()), name); });
}

std::string VoMsgHeaderField::getSequenceNo(const char* pieceName) {
  return guardedOr(std::string(), [&] { return std::string(pieceNumber(viewOf(pieceName))); });
}

void VoMsgHeaderField::_cutFirstZero(std::string& number) {
  const std::size_t significant = number.find_first_not_of('0');
  if (significant == number.npos) {
    number.assign(1, '0');
  } else {
    number.erase(0, significant);
  }
}

bool VoMsgHeaderField::_isSmallSequenceNo(const std::string& a, const std::string& b) { return isSmallerNumber(a, b); }

void VoMsgHeaderField::_incrementString(std::string& number) {
  if (number.empty()) return;
  std::size_t at = number.size();
  while (at > 0 && number[at - 1] == '9') number[--at] = '0';
  if (at > 0) {
    ++number[at - 1];
  } else {
    number.insert(number.begin(), '1');
  }
}

const char* VoMsgHeaderField::getSeqRawParameterValue(const char* name, std::string& seq, bool* isEncodedOut) const {
  if (!name || !isEncodedOut) return nullptr;
  const VoMsgHeaderParameter* best = nullptr;
  std::string_view bestNumber;
  for (const auto& parameter : mParameterList) {
    const std::string_view parameterName = viewOf(parameter->getName());
    if (!isPieceOf(parameterName, name)) continue;
    if (parameterName.size() == viewOf(name).size() + 1) {
      seq.clear();
      *isEncodedOut = true;
      return parameter->getRawParameterValue();
    }
    const std::string_view number = pieceNumber(parameterName);
    if (number.empty() || isSmallerNumber(number, seq)) continue;
    if (!best || isSmallerNumber(number, bestNumber)) {
      best = parameter.get();
      bestNumber = number;
    }
  }
  if (!best) return nullptr;
  seq = bestNumber;
  *isEncodedOut = viewOf(best->getName()).back() == '*';
  return best->getRawParameterValue();
}

bool VoMsgHeaderField::getConvertRFC2231Value(const char* name, const char* charset, std::string& out) {
  if (!name || !charset) return false;
  return guardedOr(false, [&] {
    VoMsgHeaderParameter* entry = findIn(mRfc2231List, name);
    if (!entry) {
      std::string text;
      std::string declared;
      if (!Rfc2231Pieces(mParameterList, name).assemble(text, declared)) return false;
      auto made = makeParameter(name, text.c_str(), false, declared.empty() ? kUsAscii : declared.c_str());
      if (!made) return false;
      entry = made.get();
      mRfc2231List.push_back(std::move(made));
    }
    VoMsgMultiString& value = *entry->getMultiString();
    if (!value.getString(charset)) {
      const char* const text = value.getString();
      const bool done = convertText(out, charset, value.getCharset(), text) == Conversion::done;
      value.addString(done ? out.c_str() : text, charset);
    }
    out = viewOf(value.getString(charset));
    return true;
  });
}

bool VoMsgHeaderField::getRfc2231Charset(const char* name, std::string& out) const {
  return name && guardedOr(false, [&] { return Rfc2231Pieces(mParameterList, name).findCharset(out); });
}
