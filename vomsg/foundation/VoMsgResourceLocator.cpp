#include "vomsg/foundation/VoMsgResourceLocator.h"

#include <new>
#include <string>

#include "vomsg/charset/convert/VoMsgTextConversion.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgMultiString.h"
#include "vomsg/foundation/VoMsgResourceManager.h"

using vomsg::detail::copyCString;
using vomsg::detail::copyCStringOrNull;

namespace {

constexpr std::uint32_t kUnknownCode = 0x3F3F3F3F;  // "????"

// `name` in another charset; empty when no converter handles the pair or the conversion yields nothing.
std::string convertName(const char* name, const char* toCharset, const char* fromCharset) {
  using vomsg::detail::Conversion;
  std::string converted;
  if (vomsg::detail::convertText(converted, toCharset, fromCharset, name) != Conversion::done) converted.clear();
  return converted;
}

}  // namespace

VoMsgResourceLocator::VoMsgResourceLocator(const char* name, const char* charset)
    : mNameCharset(copyCString(charset ? charset : "us-ascii")), mFileType(kUnknownCode), mFileCreator(kUnknownCode) {
  setResourceName(name, charset);
}

VoMsgResourceLocator::~VoMsgResourceLocator() = default;

std::uint32_t VoMsgResourceLocator::getFileType() const { return mFileType; }
std::uint32_t VoMsgResourceLocator::getFileCreator() const { return mFileCreator; }
std::uint16_t VoMsgResourceLocator::getFinderFlag() const { return mFinderFlag; }
void VoMsgResourceLocator::setFileType(std::uint32_t type) { mFileType = type; }
void VoMsgResourceLocator::setFileCreator(std::uint32_t creator) { mFileCreator = creator; }
void VoMsgResourceLocator::setFinderFlag(std::uint16_t flag) { mFinderFlag = flag; }

const char* VoMsgResourceLocator::getResourceName(const char* charset) const {
  if (!mpName || !mpName->getString()) return "";
  if (!charset) return mpName->getString();
  const char* const known = mpName->getString(charset);
  if (known) return known;
  return vomsg::detail::guardedOr("", [&] {
    const std::string converted = convertName(mpName->getString(), charset, mNameCharset.get());
    if (converted.empty()) return "";
    mpName->addString(converted.c_str(), charset);
    const char* const added = mpName->getString(charset);
    return added ? added : "";
  });
}

void VoMsgResourceLocator::setResourceName(const char* name, const char* charset) {
  vomsg::detail::guarded([&] {
    // Both are copied before the old ones go: the caller may hand in what getResourceName returned.
    std::unique_ptr<VoMsgMultiString> holder;
    if (name) {
      holder.reset(new VoMsgMultiString(name, charset));
      if (charset) holder->addString(name, charset);
    }
    if (charset) mNameCharset = copyCString(charset);
    mpName = std::move(holder);
    return kVoSuccess;
  });
}

void VoMsgResourceLocator::freeTmpResource() {
  if (mIsTemporary) VoMsgResourceManager::freeTmpResource(this);
}
