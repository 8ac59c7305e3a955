// Turns a winmail.dat into ordinary parts that every mail program shows: its attachments, its text, its formatted text
// as "message.rtf". A message that is attached inside becomes a winmail.dat of its own, so that nothing is lost.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "vomsg/entity/VoMsgMimeEntity.h"
#include "vomsg/mail/MainTexts.h"
#include "vomsg/mail/Message.h"
#include "vomsg/mail/Part.h"

namespace vomsg {

namespace inner {

class WinmailOpener {
 public:
  // `carrier` is the part that holds `stream`.
  WinmailOpener(VoMsgEntity* carrier, VoMsgEntity* stream, Tree* tree, bool withText)
      : mCarrier(carrier), mStream(stream), mTree(tree), mWithText(withText) {}

  Status open() {
    for (VoMsgEntity* each = mStream->getChildEntity(); each != nullptr; each = each->getNextSiblingEntity()) {
      const Status made = make(each);
      if (!made) return made;
    }
    if (mParts.empty()) return Error(kVoNoContent);  // damaged, or with nothing in it: it stays what it is
    VoMsgEntity* const parent = mCarrier->getParentEntity();
    return parent != nullptr ? insert(parent, mCarrier->getIndex(), 0) : insert(mCarrier, 1, 1);
  }

 private:
  Status add(std::string_view bytes, const std::string& name, const std::string& type, bool asText) {
    auto part = std::make_unique<VoMsgMimeEntity>();
    View content(bytes, name.empty() ? nullptr : name.c_str());
    VoErrorCode code = asText ? part->setTextContent(&content, "text/plain", "utf-8")
                              : part->setContent(&content, type.c_str(), "base64");
    const char* const how = asText ? "inline" : "attachment";
    if (!voFailed(code)) code = part->setHeaderValue("Content-Disposition", how, "us-ascii", "us-ascii");
    if (!voFailed(code) && !name.empty()) code = part->setFileName(name.c_str());
    if (!voFailed(code)) mParts.push_back(std::move(part));
    return Status::of(code);
  }

  Status make(VoMsgEntity* entity) {
    const Part part(entity, mTree);
    if (part.carriesMessage() && isTnef(*entity->getChildEntity())) {
      std::string bytes;
      SinkResource<StringSink> target(StringSink{&bytes});
      const VoErrorCode code = dynamic_cast<VoMsgMailMessage&>(*entity->getChildEntity()).writeTo(&target);
      if (voFailed(code) || target.failed()) return Error(voFailed(code) ? code : kVoNoMemory);
      return add(bytes, "winmail.dat", "application/ms-tnef", false);
    }
    const bool isText = isTnefText(*entity);
    const bool isPlain = isText && part.isType("text", "plain");
    if (isPlain && !mWithText) return {};  // the letter has it already
    const Result<std::string> bytes = isPlain ? part.text() : part.bytes();
    if (!bytes) return bytes.error();
    return add(*bytes, isPlain ? "" : isText ? "message.rtf" : part.name().value_or(""), part.type(), isPlain);
  }

  // Puts the parts at `index` and takes out the one at `former` (behind them when it was the first one there).
  Status insert(VoMsgEntity* parent, unsigned index, unsigned intoRoot) {
    unsigned done = 0;
    VoErrorCode code = kVoSuccess;
    for (auto& part : mParts) {
      // The first one makes a multipart of the root, whose content becomes child 0.
      code =
          intoRoot > 0 ? parent->appendChildEntity(part.get()) : parent->insertChildEntityAt(part.get(), index + done);
      if (voFailed(code)) break;
      (void)part.release();
      ++done;
    }
    if (!voFailed(code)) {
      const unsigned former = intoRoot > 0 ? 0 : index + done;
      code = mTree->destroying(parent->getChildEntityAt(former), false,
                               [&] { return parent->removeChildEntityAt(former); });
    }
    if (voFailed(code)) {
      while (done > 0) parent->removeChildEntityAt(index + --done);
    }
    return Status::of(code);
  }

  VoMsgEntity* mCarrier;
  VoMsgEntity* mStream;
  Tree* mTree;
  bool mWithText;
  std::vector<std::unique_ptr<VoMsgMimeEntity>> mParts;
};

}  // namespace inner

// Opens every winmail.dat of the message itself; those in nested messages stay. `opened` counts them. A stream in which
// nothing can be read stays as it is.
inline Status openWinmail(Message& message, unsigned* opened = nullptr) {
  if (opened != nullptr) *opened = 0;
  VoMsgEntity* const root = message.entity();
  if (message.isTnef()) return Error(kVoNotSupported);
  std::vector<VoMsgEntity*> streams;
  for (VoMsgEntity* each = root; each != nullptr;) {
    const bool isNested = inner::isMessage(*each) && each != root;
    if (isNested && inner::isTnef(*each)) streams.push_back(each);
    each = inner::stepFrom(each, root, !isNested);
  }
  for (VoMsgEntity* const stream : streams) {
    const inner::MainTexts texts = inner::findMainTexts(root);
    const bool withText = texts.plain == nullptr || inner::mime(*texts.plain) == nullptr;
    inner::WinmailOpener opener(stream->getParentEntity(), stream, message.tree(), withText);
    const Status status = opener.open();
    if (status && opened != nullptr) ++*opened;
    if (!status && status.code() != kVoNoContent) return status;
  }
  return {};
}

}  // namespace vomsg
