#include "vomsg/entity/VoMsgMessageSource.h"

namespace vomsg::detail {

MessageSource::MessageSource(const VoObjectStub<VoMsgResourceLocator>& resource) : mResource(resource) {}
MessageSource::~MessageSource() = default;

VoMsgBufferedReader* MessageSource::openReader() {
  if (!mpReader && resource()) mpReader.reset(resource()->getInputStream(VoMsgResourceLocator::dataPart));
  if (!mpReader || (!mpReader->isOpen() && !mpReader->open())) return nullptr;
  return mpReader.get();
}

void MessageSource::closeReader() {
  if (mpReader) mpReader->close();
}

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
