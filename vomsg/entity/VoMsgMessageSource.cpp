#include "vomsg/entity/VoMsgMessageSource.h"

#include <sys/stat.h>

#include <cstdint>

#include "vomsg/foundation/VoMsgFileResource.h"
#include "vomsg/foundation/VoMsgRangeResource.h"
#include "vomsg/foundation/VoMsgStreamAccess.h"

namespace vomsg::detail {

namespace {

constexpr std::uint64_t kLargestSource = 0x7FFFFFFF;

bool fileStatus(VoMsgResourceLocator* resource, struct stat& status) {
  if (const auto* const range = dynamic_cast<RangeResource*>(resource)) resource = range->getWhole();
  const auto* const file = dynamic_cast<VoMsgFileResource*>(resource);
  const char* const path = file ? file->getFilePath(VoMsgResourceLocator::dataPart) : nullptr;
  return path && stat(path, &status) == 0;
}

}  // namespace

MessageSource::MessageSource(const VoObjectStub<VoMsgResourceLocator>& resource, int options)
    : mResource(resource), mOptions(options) {}
MessageSource::~MessageSource() = default;

VoMsgBufferedReader* MessageSource::openReader() {
  if (!mpReader && resource()) mpReader.reset(resource()->getInputStream(VoMsgResourceLocator::dataPart));
  return isOpen() || (mpReader && mpReader->open()) ? mpReader.get() : nullptr;
}

// A closed file reader would keep its buffers, and a digest has as many sources as messages.
void MessageSource::closeReader() { mpReader.reset(); }

bool MessageSource::isOpen() const { return mpReader && mpReader->isOpen(); }

std::string_view MessageSource::lineEnd() {
  constexpr std::string_view kPair = "\r\n";
  if (!mLineEnd.empty()) return mLineEnd;
  const OpenSource open(this);
  VoMsgBufferedReader* const reader = open.reader();
  if (!reader || !moveTo(*reader, 0)) return kPair;
  mLineEnd = kPair;
  while (ReaderWindow::fill(*reader)) {
    const std::string_view window = ReaderWindow::buffered(*reader);
    const std::size_t at = window.find_first_of(kPair);
    if (at != window.npos) return mLineEnd = window[at] == '\n' ? kPair.substr(1) : kPair;
    ReaderWindow::consume(*reader, window.size());
  }
  return mLineEnd;
}

OpenSource::OpenSource(MessageSource* source) : mpSource(source) {
  if (!source) return;
  mWasOpen = source->isOpen();
  mpReader = source->openReader();
}

OpenSource::~OpenSource() {
  if (mpSource && !mWasOpen) mpSource->closeReader();
}

// Sizes are 32 bits wide, so the file is asked itself.
bool isTooLarge(VoMsgResourceLocator* resource, VoMsgBufferedReader& reader) {
  struct stat status;
  if (fileStatus(resource, status)) return static_cast<std::uint64_t>(status.st_size) > kLargestSource;
  return reader.getSize() > kLargestSource;
}

bool isSameFile(VoMsgResourceLocator* a, VoMsgResourceLocator* b) {
  struct stat first;
  struct stat second;
  return fileStatus(a, first) && fileStatus(b, second) && first.st_dev == second.st_dev &&
         first.st_ino == second.st_ino;
}

}  // namespace vomsg::detail
