// A caller's value for a field of a header block. There are three kinds of field: lists of addresses, of which only the
// display names may be encoded; structured values with parameters, which stay ASCII where they are; and text. Each is
// made complete on a draft first, which then changes places with the field: so a failure changes nothing, and whoever
// holds the field keeps it.
#include <algorithm>
#include <memory>
#include <string>
#include <string_view>

#include "vomsg/charset/convert/VoCharsetName.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgLogLine.h"
#include "vomsg/header/VoMsgEntityHeader.h"
#include "vomsg/header/VoMsgFieldEncoding.h"
#include "vomsg/header/VoMsgHeaderName.h"
#include "vomsg/header/VoMsgStructuredValue.h"

using namespace vomsg::detail;

namespace {

constexpr char kLogSource[] = "VoMsgEntityHeader";
constexpr char kUsAscii[] = "us-ascii";

// An address list with its display names encoded; what stands in angle brackets is never touched. An encoded word
// must not take an address in (RFC 2047, section 5).
VoErrorCode encodeAddressNames(const char* field, const char* value, const char* srcCharset, const char* dstCharset,
                               std::string& out) {
  std::string_view rest = value;
  std::string_view address;
  std::string encoded;
  while (cutAddress(rest, address)) {
    if (!out.empty()) out += ", ";
    const std::size_t angle = address.rfind('<');
    if (isAscii(address) || angle == address.npos) {
      out += address;
      continue;
    }
    std::string name(address.substr(0, angle));
    name.erase(std::remove(name.begin(), name.end(), '"'), name.end());
    name.erase(name.find_last_not_of(" \t") + 1);
    const VoErrorCode code = encodeFieldValue(encoded, field, name, srcCharset, dstCharset);
    if (voFailed(code)) return code;
    out += encoded;
    out += ' ';
    out += address.substr(angle);
  }
  return kVoSuccess;
}

}  // namespace

VoErrorCode VoMsgEntityHeader::setHeaderValue(const char* name, const char* value, const char* srcCharset,
                                              const char* dstCharset) {
  const VoErrorCode code = guarded([&]() -> VoErrorCode {
    if (!name || !value || (dstCharset && !voIsRightCharsetName(dstCharset))) return kVoBadArgument;
    if (!isFieldName(name) && (!*name || findHeader(name) == mpHeaderList.size())) return kVoBadArgument;
    settleAddresses();
    if (isStructuredHeader(name)) return setStructured(name, value, srcCharset, dstCharset);
    if (!isAddressName(headerNameOf(name))) return setText(name, value, srcCharset, dstCharset);
    std::string list;
    if (isAscii(value)) srcCharset = dstCharset = kUsAscii;  // nothing to encode
    const VoErrorCode encoded = encodeAddressNames(name, value, srcCharset, dstCharset, list);
    return voFailed(encoded) ? encoded : setAddresses(name, list.c_str());
  });
  return VO_LOGGED(_logTag(), code);
}

// What a field of that name looks like before it is changed: a copy of the first one, or a new one without value.
std::unique_ptr<VoMsgHeaderField> VoMsgEntityHeader::draftOf(const char* name) const {
  const std::size_t at = findHeader(name);
  std::unique_ptr<VoMsgHeaderField> draft(at < mpHeaderList.size() ? mpHeaderList[at]->newCopy()
                                                                   : new VoMsgHeaderField(name, ""));
  return draft && draft->getName() ? std::move(draft) : nullptr;
}

// Puts the changed draft of a field in its place, or at the end.
VoErrorCode VoMsgEntityHeader::install(std::unique_ptr<VoMsgHeaderField> made) {
  const std::size_t at = findHeader(made->getName());
  made->setNewHeader(1);
  if (at < mpHeaderList.size()) {
    mpHeaderList[at]->_exchangeContent(*made);
    mpHeaderList[at]->setNewHeader(1);
  } else {
    take(at, std::move(made));
  }
  setEdited();
  return kVoSuccess;
}

VoErrorCode VoMsgEntityHeader::setText(const char* name, const char* value, const char* srcCharset,
                                       const char* dstCharset) {
  std::unique_ptr<VoMsgHeaderField> draft = draftOf(name);
  if (!draft) return kVoNoMemory;
  const VoErrorCode code = draft->storeEncoded(value, srcCharset, dstCharset);
  return voFailed(code) ? code : install(std::move(draft));
}

// The parameters that the value brings are set one by one, and those it does not name stay. Only what is not ASCII is
// encoded: a media type in an encoded word would be none.
VoErrorCode VoMsgEntityHeader::setStructured(const char* name, const char* value, const char* srcCharset,
                                             const char* dstCharset) {
  std::unique_ptr<VoMsgHeaderField> draft = draftOf(name);
  if (!draft) return kVoNoMemory;
  StructuredValue parts;
  parseStructuredValue(parts, value, 0);
  const char* const main = parts.count > 0 ? parts.value.c_str() : value;
  const auto source = [&](std::string_view text) { return isAscii(text) ? kUsAscii : srcCharset; };
  const auto target = [&](std::string_view text) { return isAscii(text) ? kUsAscii : dstCharset; };
  VoErrorCode code = draft->storeEncoded(main, source(main), target(main));
  for (std::size_t i = 0; i < parts.count && !voFailed(code); ++i) {
    const StructuredParameter& parameter = parts.parameters[i];
    code = draft->setEncodedParameter(parameter.name.c_str(), parameter.value.c_str(), source(parameter.value),
                                      target(parameter.value));
  }
  return voFailed(code) ? code : install(std::move(draft));
}
