#include "vomsg/header/VoMsgHeaderBlockBuilder.h"

#include <algorithm>
#include <memory>
#include <new>
#include <utility>

#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgBoundaryTable.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/header/VoMsgEntityHeader.h"
#include "vomsg/header/VoMsgHeaderField.h"
#include "vomsg/header/VoMsgHeaderLines.h"
#include "vomsg/header/VoMsgLineBreaks.h"

namespace vomsg::detail {
namespace {

constexpr std::size_t kNowhere = static_cast<std::size_t>(-1);

bool sameContentType(const VoMsgHeaderField& a, const VoMsgHeaderField& b) {
  if (!equalNoCase(viewOf(a.getRawFieldValue()), viewOf(b.getRawFieldValue()))) return false;
  if (a.countParameter() != b.countParameter()) return false;
  for (unsigned i = 0; i < a.countParameter(); ++i) {
    if (!equalNoCase(viewOf(a.getParameterNameAt(i)), viewOf(b.getParameterNameAt(i)))) return false;
    if (viewOf(a.getRawParameterValueAt(i)) != viewOf(b.getRawParameterValueAt(i))) return false;
  }
  return true;
}

// A field whose copy of name or value could not be made would vanish from the message, or become another.
std::unique_ptr<VoMsgHeaderField> whole(std::unique_ptr<VoMsgHeaderField> field) {
  if (!field->getName() || !field->getRawFieldValue()) throw std::bad_alloc();
  return field;
}

}  // namespace

HeaderBlockBuilder::HeaderBlockBuilder(VoMsgEntityHeader& header, const char* defaultCharset, Purpose purpose)
    : mHeader(header),
      mpDefaultCharset(defaultCharset),
      mPurpose(purpose),
      mLimits(HeaderLimits::of(header.mIsChild)),
      mContentTypeAt(header.findHeader("Content-Type")) {
  if (mContentTypeAt == header.mpHeaderList.size()) mContentTypeAt = kNowhere;
}

VoErrorCode HeaderBlockBuilder::readBlock(VoMsgBufferedReader& reader, const VoMsgBoundaryList* boundaries) {
  BoundaryTable table;
  if (boundaries)
    std::for_each(boundaries->rbegin(), boundaries->rend(),
                  [&](const char* boundary) { table.push(viewOf(boundary)); });
  HeaderLines lines(reader, mScratch);
  const std::uint64_t start = lines.offset();
  HeaderEnd end = HeaderEnd::endOfData;
  const VoErrorCode code = walkHeaderBlock(lines, &table, *this, end);
  if (mPurpose == Purpose::parse)
    mHeader.setHeaderRange(static_cast<unsigned>(start), static_cast<unsigned>(lines.offset() - start));
  handDownCharset();
  return code;
}

VoErrorCode HeaderBlockBuilder::readLine(std::string_view text, std::uint64_t offset) {
  const HeaderLine line = cutHeaderLine(text, false);
  if (line.kind == HeaderLine::Kind::dropped) mark(HeaderMark::droppedLine, offset);
  if (line.kind != HeaderLine::Kind::field) return kVoSuccess;
  if (hasLineBreak(line.name)) return kVoBadArgument;
  return add(headerNameOf(line.name), line.name, line.value, offset);
}

VoErrorCode HeaderBlockBuilder::add(HeaderName kind, std::string_view name, std::string_view value,
                                    std::uint64_t offset) {
  mParameterCount = 0;
  if (isStructuredName(kind)) {
    addStructured(kind, name, value, offset);
  } else {
    mName.assign(name);
    mText.assign(value);
    mHeader.take(mHeader.mpHeaderList.size(), whole(std::make_unique<VoMsgHeaderField>(mName.c_str(), mText.c_str())));
    if (isAddressName(kind)) mHeader.splitAddresses(mHeader.addresses(kind), kind, value);
  }
  if (mPurpose == Purpose::rebuild) return kVoSuccess;
  const bool isTooMuch = mLimits.tooManyFields(mHeader.mpHeaderList.size()) ||
                         mLimits.tooManyParameters(mParameterCount) ||
                         (isAddressName(kind) && mLimits.tooManyAddresses(mHeader.addresses(kind).items.size()));
  return isTooMuch ? kVoMalformed : kVoSuccess;
}

void HeaderBlockBuilder::mark(HeaderMark mark, std::uint64_t offset) {
  if (mPurpose == Purpose::parse) mHeader.setMark(mark, static_cast<unsigned>(offset));
}

VoMsgHeaderField* HeaderBlockBuilder::makeStructured(std::string_view name, std::string_view value,
                                                     std::uint64_t offset) {
  parseStructuredValue(mValue, value, mLimits.parameters);
  if (mValue.needsQuoting) mark(HeaderMark::unquotedBoundary, offset);
  mName.assign(name);
  auto field = whole(std::make_unique<VoMsgHeaderField>(mName.c_str(), mValue.value.c_str()));
  field->_setDefaultCharset(mpDefaultCharset);
  for (std::size_t i = 0; i < mValue.count; ++i) {
    const StructuredParameter& parameter = mValue.parameters[i];
    if (voFailed(field->addParameter(parameter.name.c_str(), parameter.value.c_str(), parameter.isEncoded,
                                     mpDefaultCharset)))
      throw std::bad_alloc();
  }
  mParameterCount = mValue.count;
  return field.release();
}

void HeaderBlockBuilder::addStructured(HeaderName kind, std::string_view name, std::string_view value,
                                       std::uint64_t offset) {
  auto& list = mHeader.mpHeaderList;
  const bool isReplacement = kind == HeaderName::contentType && mContentTypeAt != kNowhere;
  if (isReplacement) mark(HeaderMark::repeatedContentType, offset);
  std::unique_ptr<VoMsgHeaderField> field(makeStructured(name, value, offset));
  if (isReplacement) {
    if (!sameContentType(*list[mContentTypeAt], *field)) mHeader.mContentTypesDiffer = true;
    list.erase(list.begin() + static_cast<std::ptrdiff_t>(mContentTypeAt));
  }
  if (kind == HeaderName::contentType) mContentTypeAt = list.size();
  mHeader.take(list.size(), std::move(field));
}

// The charset that Content-Type declares is also that of 8-bit text in the header, which carries no label of its own.
void HeaderBlockBuilder::handDownCharset() {
  const char* charset = mpDefaultCharset;
  if (const VoMsgHeaderField* contentType = mHeader.getHeader("Content-Type")) {
    const char* const declared = contentType->getRawParameterValue("charset");
    if (declared && *declared) charset = declared;
  }
  const auto give = [charset](auto& object) {
    object._setDefaultCharset(charset);
    if (charset && !object.getDefaultCharset()) throw std::bad_alloc();
  };
  for (const auto& field : mHeader.mpHeaderList) give(*field);
  for (const auto& list : mHeader.mAddressLists)
    for (const auto& address : list.items) give(*address);
}

}  // namespace vomsg::detail
