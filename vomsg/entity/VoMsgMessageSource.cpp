#include "vomsg/entity/VoMsgMessageSource.h"

namespace vomsg::detail {

MessageSource::MessageSource(const VoObjectStub<VoMsgResourceLocator>& resource) : mResource(resource) {}
MessageSource::~MessageSource() = default;

VoMsgBufferedReader* MessageSource::openReader() {
  if (!mpReader && resource()) mpReader.reset(resource()->getInputStream(VoMsgResourceLocator::dataPart));
  return isOpen() || (mpReader && mpReader->open()) ? mpReader.get() : nullptr;
}

// A closed file reader would keep its buffers, and a digest has as many sources as messages.
void MessageSource::closeReader() { mpReader.reset(); }

bool MessageSource::isOpen() const { return mpReader && mpReader->isOpen(); }

OpenSource::OpenSource(MessageSource* source) : mpSource(source) {
  if (!source) return;
  mWasOpen = source->isOpen();
  mpReader = source->openReader();
}

OpenSource::~OpenSource() {
  if (mpSource && !mWasOpen) mpSource->closeReader();
}

}  // namespace vomsg::detail
