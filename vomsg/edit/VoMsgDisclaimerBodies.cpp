// Disclaimers inside the text that is there: which parts take one, and putting it into all of them or none.

#include <vector>

#include "vomsg/edit/VoMsgTextEditing.h"
#include "vomsg/entity/VoMsgEditUndo.h"
#include "vomsg/entity/VoMsgRfc822Message.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgLogLine.h"

namespace {

using namespace vomsg::detail;

constexpr char kLogSource[] = "VoMsgRfc822Message";

enum class TextType { none, plain, html, calendar };

// What stands in a digest without a type is a message.
TextType typeOf(const VoMsgEntity& entity) {
  const std::string_view type = viewOf(entity.getContentType());
  const VoMsgEntity* const parent = entity.getParentEntity();
  if (type.empty() && parent && parent->isContentType("multipart", "digest")) return TextType::none;
  if (type.empty() || equalNoCase(type, "text/plain")) return TextType::plain;
  if (equalNoCase(type, "text/html")) return TextType::html;
  return equalNoCase(type, "text/calendar") ? TextType::calendar : TextType::none;
}

const TextKind& kindOf(TextType type) {
  return type == TextType::html ? kHtmlText : type == TextType::calendar ? kCalendarText : kPlainText;
}

// A text that a reader is shown. It may have children, but only attachments that stand in the text.
struct Leaf {
  VoMsgRfc822Entity* entity;
  TextType type;
  std::size_t alternative;  // which one it is in: texts of the same number are shown together, 0 is outside of all
  std::size_t choice;       // the outermost multipart/alternative around it; 0 outside of all
  bool isEncrypted;         // asked on the way down: asking each leaf would climb a deep tree again and again
};

// The inline texts outside nested messages, in document order. Every direct child of a multipart/alternative begins an
// alternative, with whatever lies below it.
std::vector<Leaf> inlineTexts(VoMsgRfc822Entity& root) {
  struct Level {
    bool isAlternative;
    std::size_t number;
    std::size_t choice;
    bool isEncrypted;
  };
  std::vector<Leaf> leaves;
  std::vector<Level> open;
  std::size_t alternatives = 0;
  std::size_t choices = 0;
  VoMsgEntity* entity = &root;
  while (entity) {
    std::size_t number = open.empty() ? 0 : open.back().number;
    std::size_t choice = open.empty() ? 0 : open.back().choice;
    const bool isEncrypted = open.empty() ? root.isEncryptedPart() : open.back().isEncrypted;
    if (!open.empty() && open.back().isAlternative) number = ++alternatives;
    VoMsgEntity* next = nullptr;
    if (entity->isMultipartEntity()) {
      next = entity->getChildEntity();
      const bool isAlternative = VoMsgRfc822Message::_isAlternative(entity);
      if (isAlternative && choice == 0) choice = ++choices;
      const bool encrypts = equalNoCase(viewOf(entity->getContentType()), "multipart/encrypted");
      if (next) open.push_back({isAlternative, number, choice, isEncrypted || encrypts});
    } else if (auto* const mime = dynamic_cast<VoMsgRfc822Entity*>(entity)) {
      const VoMsgEntity* const child = entity->getChildEntity();
      const bool isText = !child || !(child->getEntityTypeID() & kVoEntityIsMessage);
      const TextType type = isText ? typeOf(*entity) : TextType::none;
      if (type != TextType::none && !VoMsgRfc822Message::_isAttachment(entity))
        leaves.push_back({mime, type, number, choice, isEncrypted});
    }
    while (!next && entity != &root && !(next = entity->getNextSiblingEntity())) {
      entity = entity->getParentEntity();
      open.pop_back();
    }
    entity = next;
  }
  return leaves;
}

// The first text of a type, and with one in an alternative the first text of every other alternative beside it, so
// that all of them say the same. Invitations are edited where they are asked for and nowhere else.
std::vector<Leaf> targetsFor(VoMsgRfc822Entity& root, TextType wanted) {
  const std::vector<Leaf> leaves = inlineTexts(root);
  std::vector<Leaf> targets;
  const Leaf* first = nullptr;
  for (const Leaf& leaf : leaves)
    if (leaf.type == wanted &&
        (!first || (first->alternative == 0 && leaf.alternative != 0 && wanted != TextType::plain)))
      first = &leaf;
  if (!first) return targets;
  targets.push_back(*first);
  if (first->alternative == 0 || wanted == TextType::plain) return targets;
  std::vector<bool> hasText(leaves.size() + 1);
  const auto mark = [&hasText](std::size_t number) {
    if (number >= hasText.size()) hasText.resize(number + 1);
    const bool was = hasText[number];
    hasText[number] = true;
    return !was;
  };
  mark(first->alternative);
  for (const Leaf& leaf : leaves) {
    if (leaf.choice != first->choice || (leaf.type == TextType::calendar && wanted != TextType::calendar)) continue;
    if (mark(leaf.alternative)) targets.push_back(leaf);
  }
  return targets;
}

VoErrorCode insertInto(VoMsgRfc822Message& message, const std::vector<Leaf>& targets,
                       VoMsgDisclaimerPosition_e position, VoMsgResourceLocator* resource, const char* srcCharset,
                       const char* preferCharset) {
  if (targets.empty()) return kVoDisclaimerRefused;
  EditUndos undos;
  Disclaimer disclaimer;
  const VoErrorCode loaded = loadDisclaimer(*resource, srcCharset, position == kVoDisclaimerTop, disclaimer);
  if (voFailed(loaded)) return loaded;
  const BoundaryTable delimiters = delimitersAround(message);
  std::vector<TextChange> changes;
  for (const Leaf& target : targets) {
    if (target.isEncrypted) return kVoDisclaimerRefused;
    changes.emplace_back();
    const VoErrorCode code =
        prepareText(*target.entity, kindOf(target.type), disclaimer, preferCharset, delimiters, changes.back());
    if (voFailed(code)) return code;
  }
  return installTexts(message, changes, undos);
}

const char* charsetOr(const char* preferCharset) { return preferCharset ? preferCharset : "utf-8"; }

}  // namespace

VoErrorCode VoMsgRfc822Message::_insertDiscMsgToText(VoMsgDisclaimerPosition_e position,
                                                     VoMsgResourceLocator* disclaimer, const char* srcCharset,
                                                     const char* preferCharset) {
  const auto targets = targetsFor(*this, TextType::plain);
  // HTML without a plain sibling: the answer makes the caller wrap the message, as he does with all HTML mail.
  if (targets.empty() && !targetsFor(*this, TextType::html).empty()) return kVoDisclaimerCopyFailed;
  return insertInto(*this, targets, position, disclaimer, srcCharset, preferCharset);
}

VoErrorCode VoMsgRfc822Message::_insertDiscMsgToHTML(VoMsgDisclaimerPosition_e position,
                                                     VoMsgResourceLocator* disclaimer, const char* srcCharset,
                                                     const char* preferCharset) {
  auto targets = targetsFor(*this, TextType::html);
  if (targets.empty()) {
    // The alternative is in a message that is attached under another type: the message's own text is plain.
    targets = targetsFor(*this, TextType::plain);
    if (!targets.empty() && targets[0].alternative != 0) targets.clear();
  }
  return insertInto(*this, targets, position, disclaimer, srcCharset, preferCharset);
}

VoErrorCode VoMsgRfc822Message::_insertDiscMsgToTextCalendar(VoMsgDisclaimerPosition_e position,
                                                             VoMsgResourceLocator* disclaimer, const char* srcCharset,
                                                             const char* preferCharset) {
  return insertInto(*this, targetsFor(*this, TextType::calendar), position, disclaimer, srcCharset, preferCharset);
}

VoErrorCode VoMsgRfc822Message::_defaultDisclaimerMessage(VoMsgDisclaimerPosition_e position,
                                                          VoMsgResourceLocator* disclaimer, const char* srcCharset,
                                                          const char* preferCharset) {
  VO_LOG(9, _getUUIDString(), "begin: _defaultDisclaimerMessage");
  const VoErrorCode code = guarded([&] {
    return disclaimer && srcCharset ? _insertDiscMsgToText(position, disclaimer, srcCharset, charsetOr(preferCharset))
                                    : kVoBadArgument;
  });
  VO_LOG(9, _getUUIDString(), "end  : _defaultDisclaimerMessage");
  return code;
}

VoErrorCode VoMsgRfc822Message::_defaultDisclaimerMessageHTML(VoMsgDisclaimerPosition_e position,
                                                              VoMsgResourceLocator* disclaimer, const char* srcCharset,
                                                              const char* preferCharset) {
  VO_LOG(9, _getUUIDString(), "begin: _defaultDisclaimerMessageHTML");
  const VoErrorCode code = guarded([&] {
    return disclaimer && srcCharset ? _insertDiscMsgToHTML(position, disclaimer, srcCharset, charsetOr(preferCharset))
                                    : kVoBadArgument;
  });
  VO_LOG(9, _getUUIDString(), "end  : _defaultDisclaimerMessageHTML");
  return code;
}

VoErrorCode VoMsgRfc822Message::_defaultDisclaimerMessageTextCalendar(VoMsgDisclaimerPosition_e position,
                                                                      VoMsgResourceLocator* disclaimer,
                                                                      const char* srcCharset,
                                                                      const char* preferCharset) {
  VO_LOG(9, _getUUIDString(), "begin: _defaultDisclaimerMessageTextCalendar");
  const VoErrorCode code = guarded([&] {
    return disclaimer && srcCharset
               ? _insertDiscMsgToTextCalendar(position, disclaimer, srcCharset, charsetOr(preferCharset))
               : kVoBadArgument;
  });
  VO_LOG(9, _getUUIDString(), "end  : _defaultDisclaimerMessageTextCalendar");
  return code;
}
