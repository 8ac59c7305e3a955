#include "vomsg/tnef/VoMsgTnefNestedStreams.h"

#include <memory>
#include <vector>

#include "vomsg/entity/VoMsgEntityIterator.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgResourceBytes.h"
#include "vomsg/foundation/VoMsgResourceLocator.h"
#include "vomsg/tnef/VoMsgMapiAttachment.h"
#include "vomsg/tnef/VoMsgTnefBody.h"
#include "vomsg/tnef/VoMsgTnefContent.h"
#include "vomsg/tnef/VoMsgTnefMessage.h"

namespace vomsg::detail {

namespace {

// Once the messages inside have been put back, a change anywhere below shows in the message's own records.
bool isStreamModified(VoMsgTnefMessage& message) {
  if (message._isModified()) return true;
  for (VoMsgEntity* child = message.getChildEntity(); child; child = child->getNextSiblingEntity())
    if (child->_isModified()) return true;
  return false;
}

}  // namespace

// In document order a message comes before those inside it, so backwards the innermost come first.
VoErrorCode NestedStreams::install(VoMsgTnefMessage& message) {
  std::vector<VoMsgTnefMessage*> nested;
  VoMsgEntityIterator walk(&message);
  for (VoMsgEntity* entity = walk.first(); entity; entity = walk.next())
    if (entity != &message && entity->getEntityTypeID() == kVoEntityTnefMessage)
      if (auto* const found = dynamic_cast<VoMsgTnefMessage*>(entity)) nested.push_back(found);
  for (auto at = nested.rbegin(); at != nested.rend(); ++at) {
    if (!isStreamModified(**at)) continue;
    const VoErrorCode code = installOne(**at);
    if (voFailed(code)) return code;
  }
  return kVoSuccess;
}

VoErrorCode NestedStreams::installOne(VoMsgTnefMessage& nested) {
  auto* const child = dynamic_cast<VoMsgTnefEntity*>(nested.getParentEntity());
  VoMsgTnefEntity* const owner = child ? ownerOf(*child) : nullptr;
  VoMsgTnefBody* const body = owner ? owner->_getTnefBody() : nullptr;
  VoMsgMapiAttachment* const list = body ? body->_findList(child->valueOffset()) : nullptr;
  VoMsgMapiData* const value = list ? list->_findValue(child->valueOffset()) : nullptr;
  if (!value) return kVoTnefMalformed;

  std::unique_ptr<VoMsgResourceLocator> stream = temporaryResource(nested.getStreamSize());
  if (!stream) return kVoNoMemory;
  {
    const std::unique_ptr<VoMsgBufferedWriter> writer(stream->getOutputStream(VoMsgResourceLocator::dataPart));
    if (!writer) return kVoWriteFailed;
    const VoErrorCode code = nested.writeStream(*writer, mSource);
    if (voFailed(code)) return code;
    if (!writer->flush()) return kVoWriteFailed;
  }
  return value->_setContent(std::move(stream), &mSource);
}

// What lies between two edited children of one list is walked once: the later one knows its owner already.
VoMsgTnefEntity* NestedStreams::ownerOf(VoMsgTnefEntity& child) {
  VoMsgTnefEntity* owner = nullptr;
  for (VoMsgEntity* entity = &child; entity && !owner; entity = entity->getNextSiblingEntity()) {
    const auto known = mOwners.find(entity);
    auto* const candidate = dynamic_cast<VoMsgTnefEntity*>(entity);
    if (known != mOwners.end())
      owner = known->second;
    else if (candidate && candidate->hasRecords())
      owner = candidate;
  }
  return mOwners[&child] = owner;
}

}  // namespace vomsg::detail
