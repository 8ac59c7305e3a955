#include "vomsg/entity/VoMsgSingleBody.h"

#include "vomsg/encoding/VoMsgTransferEncoding.h"
#include "vomsg/entity/VoMsgMessageSource.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgDecodedBudget.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgRangeResource.h"
#include "vomsg/foundation/VoMsgStreamAccess.h"
#include "vomsg/foundation/VoMsgStreamCopy.h"

namespace {

using namespace vomsg::detail;

// Copies all of one resource into another.
VoErrorCode copyResource(const VoMsgResourceLocator& from, const VoMsgResourceLocator& to) {
  const std::unique_ptr<VoMsgBufferedReader> reader(from.getInputStream(VoMsgResourceLocator::dataPart));
  if (!reader) return kVoReadFailed;
  const std::unique_ptr<VoMsgBufferedWriter> writer(to.getOutputStream(VoMsgResourceLocator::dataPart));
  if (!writer) return kVoWriteFailed;
  return copyRest(*reader, *writer);
}

}  // namespace

VoMsgSingleBody::VoMsgSingleBody() = default;
VoMsgSingleBody::~VoMsgSingleBody() = default;

bool VoMsgSingleBody::isMultipart() const { return false; }

void VoMsgSingleBody::dumpEntityBody(std::FILE* out) const {
  if (!out) return;
  static constexpr char kIndent[] = "    ";
  std::fprintf(out, "%sBodyType          : VoMsgSingleBody\n", kIndent);
  std::fprintf(out, "%smBodyOffset       : D'%d\n", kIndent, mBodyOffset);
  std::fprintf(out, "%smBodySize         : D'%d\n", kIndent, mBodySize);
}

// Calls `sink(reader, length)` with a reader at the first encoded byte.
template <class Sink>
VoErrorCode VoMsgSingleBody::withEncodedBytes(VoMsgBufferedReader* reader, Sink&& sink) const {
  if (mpNewContent) {
    const std::uint32_t size = mpNewContent->getSize(VoMsgResourceLocator::dataPart);
    if (size == 0) return kVoNoContent;
    const std::unique_ptr<VoMsgBufferedReader> own(mpNewContent->getInputStream(VoMsgResourceLocator::dataPart));
    return own ? sink(*own, size) : kVoReadFailed;
  }
  if (mBodySize <= 0) return kVoNoContent;
  if (!reader || !moveTo(*reader, static_cast<std::uint64_t>(mBodyOffset))) return kVoReadFailed;
  return sink(*reader, static_cast<std::uint32_t>(mBodySize));
}

VoErrorCode VoMsgSingleBody::fetch(VoMsgBufferedReader* reader, const MessageSource* whole, TransferEncoding encoding,
                                   std::unique_ptr<VoMsgResourceLocator>& kept, const VoMsgResourceLocator*& resource) {
  if (kept) {
    if (resource) return copyResource(*kept, *resource);
    resource = kept.get();
    return kVoSuccess;
  }
  return withEncodedBytes(reader, [&](VoMsgBufferedReader& source, std::uint32_t length) {
    if (resource) {
      const CountedTarget counted(*resource);
      return decodeTransfer(encoding, counted.target(), source, length);
    }
    if (whole && !mpNewContent && encoding == TransferEncoding::identity) {
      if (std::uint64_t{length} > source.getSize() - std::uint64_t{source.getOffset()}) return kVoReadFailed;
      kept = std::make_unique<RangeResource>(whole->sharedResource(), whole->wholeState(),
                                             static_cast<std::uint32_t>(mBodyOffset), length);
      resource = kept.get();
      return kVoSuccess;
    }
    std::unique_ptr<VoMsgResourceLocator> target = decodedResource(decodedRoom(encoding, source, length));
    if (!target) return kVoWriteFailed;
    const VoErrorCode code = decodeTransfer(encoding, *target, source, length);
    if (voFailed(code)) return code;
    kept = std::move(target);
    resource = kept.get();
    return kVoSuccess;
  });
}

VoErrorCode VoMsgSingleBody::getContent(VoMsgBufferedReader* reader, const char* encoding,
                                        const VoMsgResourceLocator*& resource) {
  return getContent(reader, nullptr, encoding, resource);
}

VoErrorCode VoMsgSingleBody::getRawContent(VoMsgBufferedReader* reader, const VoMsgResourceLocator*& resource) {
  return getRawContent(reader, nullptr, resource);
}

VoErrorCode VoMsgSingleBody::getContent(VoMsgBufferedReader* reader, const MessageSource* whole, const char* encoding,
                                        const VoMsgResourceLocator*& resource) {
  return guarded([&] { return fetch(reader, whole, transferEncodingOf(encoding), mpDecoded, resource); });
}

VoErrorCode VoMsgSingleBody::getRawContent(VoMsgBufferedReader* reader, const MessageSource* whole,
                                           const VoMsgResourceLocator*& resource) {
  return guarded([&] { return fetch(reader, whole, TransferEncoding::identity, mpRaw, resource); });
}

VoErrorCode VoMsgSingleBody::countContent(VoMsgBufferedReader* reader, const char* encoding, unsigned& size) {
  size = 0;
  return guarded([&] {
    return withEncodedBytes(reader, [&](VoMsgBufferedReader& source, std::uint32_t length) {
      return countDecoded(transferEncodingOf(encoding), source, length, size);
    });
  });
}

void VoMsgSingleBody::setNewContent(std::unique_ptr<VoMsgResourceLocator> encoded) {
  mpNewContent = std::move(encoded);
  mIsNewBody = true;
  dropDecodedCopies();
}

void VoMsgSingleBody::dropDecodedCopies() {
  mpDecoded.reset();
  mpRaw.reset();
  mpText.reset();
}

const VoMsgResourceLocator* VoMsgSingleBody::keepText(std::unique_ptr<VoMsgResourceLocator> text,
                                                      const std::string& conversion) {
  mTextConversion = conversion;
  mpText = std::move(text);
  return mpText.get();
}

const VoMsgResourceLocator* VoMsgSingleBody::getKeptText(const std::string& conversion) const {
  return mTextConversion == conversion ? mpText.get() : nullptr;
}

const char* VoMsgSingleBody::keepTextCharset(const std::string& name) {
  mTextCharset = name;
  return mTextCharset.c_str();
}
