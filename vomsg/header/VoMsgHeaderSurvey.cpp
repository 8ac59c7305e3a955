#include "vomsg/header/VoMsgHeaderSurvey.h"

#include <array>
#include <utility>

#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/header/VoMsgHeaderLimits.h"
#include "vomsg/header/VoMsgHeaderLines.h"
#include "vomsg/header/VoMsgUserAddress.h"

namespace vomsg::detail {
namespace {

class Surveyor {
 public:
  Surveyor(HeaderSurvey& out, bool isChild) : mOut(out), mLimits(HeaderLimits::of(isChild)) {}

  unsigned wantedNames() const {
    constexpr unsigned structured = nameBit(HeaderName::contentType) | nameBit(HeaderName::contentEncoding) |
                                    nameBit(HeaderName::contentDisposition);
    constexpr unsigned addresses =
        nameBit(HeaderName::from) | nameBit(HeaderName::to) | nameBit(HeaderName::cc) | nameBit(HeaderName::bcc);
    return structured | (mLimits.addresses > 0 ? addresses : 0);
  }

  void mark(HeaderMark mark, std::uint64_t offset) {
    if (mOut.mark != HeaderMark::none) return;
    mOut.mark = mark;
    mOut.markOffset = static_cast<std::uint32_t>(offset);
  }

  VoErrorCode add(HeaderName name, std::string_view, std::string_view value, std::uint64_t offset) {
    ++mFields;
    bool isTooMuch = false;
    if (isAddressName(name))
      isTooMuch = mLimits.addresses > 0 && addAddresses(mAddresses[static_cast<std::size_t>(name)], value);
    else if (isStructuredName(name))
      isTooMuch = addStructured(name, value, offset);
    return isTooMuch || mLimits.tooManyFields(mFields) ? kVoMalformed : kVoSuccess;
  }

 private:
  // True when there are too many.
  bool addAddresses(std::size_t& count, std::string_view value) const {
    std::string_view address;
    while (cutAddress(value, address))
      if (mLimits.tooManyAddresses(++count)) return true;
    return false;
  }

  // True when it has too many parameters.
  bool addStructured(HeaderName name, std::string_view value, std::uint64_t offset) {
    switch (name) {
      case HeaderName::contentType:
        parseStructuredValue(mOut.spare, value, mLimits.parameters);
        if (mOut.hasContentType) {
          --mFields;
          mark(HeaderMark::repeatedContentType, offset);
          mOut.contentTypesDiffer |= !sameStructuredValue(mOut.contentType, mOut.spare);
        }
        std::swap(mOut.contentType, mOut.spare);
        mOut.hasContentType = true;
        return checkParameters(mOut.contentType, offset);
      case HeaderName::contentEncoding:
        return addFirst(mOut.hasEncoding, mOut.encoding, value, offset);
      default:
        return addFirst(mOut.hasDisposition, mOut.disposition, value, offset);
    }
  }

  bool addFirst(bool& has, StructuredValue& first, std::string_view value, std::uint64_t offset) {
    StructuredValue& target = has ? mOut.spare : first;
    has = true;
    parseStructuredValue(target, value, mLimits.parameters);
    return checkParameters(target, offset);
  }

  bool checkParameters(const StructuredValue& value, std::uint64_t offset) {
    if (value.needsQuoting) mark(HeaderMark::unquotedBoundary, offset);
    return mLimits.tooManyParameters(value.count);
  }

  HeaderSurvey& mOut;
  const HeaderLimits mLimits;
  std::size_t mFields = 0;
  std::array<std::size_t, kAddressNames> mAddresses{};
};

}  // namespace

void surveyHeaderBlock(HeaderSurvey& out, VoMsgBufferedReader& reader, bool isChild, const BoundaryTable* boundaries) {
  out.code = kVoSuccess;
  out.end = HeaderEnd::endOfData;
  out.mark = HeaderMark::none;
  out.markOffset = 0;
  out.contentTypesDiffer = false;
  out.hasContentType = out.hasEncoding = out.hasDisposition = false;

  Surveyor surveyor(out, isChild);
  HeaderLines lines(reader, out.scratch, surveyor.wantedNames());
  const std::uint64_t start = lines.offset();
  out.code = walkHeaderBlock(lines, boundaries, surveyor, out.end);
  out.offset = static_cast<std::uint32_t>(start);
  out.size = static_cast<std::uint32_t>(lines.offset() - start);
}

}  // namespace vomsg::detail
