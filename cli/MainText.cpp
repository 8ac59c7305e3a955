#include "cli/MainText.h"

#include "vomsg/entity/VoMsgRfc822Message.h"

namespace cli {

namespace {

// The first of the wanted kind, else the first of any.
VoMsgEntity* mainTextOfStream(VoMsgEntity* stream, bool preferHtml) {
  VoMsgEntity* first = nullptr;
  for (VoMsgEntity* part = stream->getChildEntity(); part != nullptr; part = part->getNextSiblingEntity()) {
    if (!part->isContentType("text", nullptr) || part->getFileName("utf-8") != nullptr) continue;
    if (part->isContentType("text", "html") == preferHtml) return part;
    if (first == nullptr) first = part;
  }
  return first;
}

}  // namespace

VoMsgEntity* mainText(VoMsgEntity* root, bool preferHtml) {
  auto* const message = dynamic_cast<VoMsgRfc822Message*>(root);
  return message != nullptr ? message->_findMessageBody(preferHtml) : mainTextOfStream(root, preferHtml);
}

}  // namespace cli
