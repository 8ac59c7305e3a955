// Which parts of a message are its text, and which are attachments: what a reader sees as the letter, and what hangs on
// it.
#pragma once

#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "vomsg/entity/VoMsgRfc822Message.h"
#include "vomsg/mail/Part.h"

namespace vomsg::inner {

struct MainTexts {
  VoMsgEntity* plain = nullptr;
  VoMsgEntity* html = nullptr;
};

inline bool isText(const VoMsgEntity& entity, const char* subtype) {
  const char* const type = entity.getContentType();
  if (type == nullptr) return std::string_view(subtype) == "plain";
  return equalNoCase(type, std::string("text/") + subtype);
}

inline bool isTnef(const VoMsgEntity& entity) { return entity.getEntityTypeID() == kVoEntityTnefMessage; }

// A stream's own text: a stretch of the stream, without a name.
inline bool isTnefText(const VoMsgEntity& entity) {
  const auto* const part = dynamic_cast<const VoMsgTnefEntity*>(&entity);
  if (part == nullptr || entity.hasChildEntity()) return false;
  const auto type = part->getTnefEntityType();
  if (type == VoMsgTnefEntity::kText || type == VoMsgTnefEntity::kRichText) return true;
  return type == VoMsgTnefEntity::kRecord && entity.getFileName("utf-8") == nullptr && isText(entity, "plain");
}

inline void takeFirst(MainTexts& texts, VoMsgEntity* entity) {
  if (texts.plain == nullptr && isText(*entity, "plain")) texts.plain = entity;
  if (texts.html == nullptr && isText(*entity, "html")) texts.html = entity;
}

// The first inline text of each kind outside nested messages; a winmail.dat is asked only where there is none.
inline MainTexts findMainTexts(VoMsgEntity* root) {
  MainTexts texts;
  VoMsgEntity* stream = isTnef(*root) ? root : nullptr;
  for (VoMsgEntity* each = root; each != nullptr && (texts.plain == nullptr || texts.html == nullptr);) {
    const bool isNested = isMessage(*each) && each != root;
    if (isNested && stream == nullptr && isTnef(*each)) stream = each;
    const bool isContainer = each->isMultipartEntity() || isNested || each->_isMultiEmbededEntity();
    if (!isContainer && mime(*each) != nullptr && !VoMsgRfc822Message::_isAttachment(each)) takeFirst(texts, each);
    const bool descend = !isNested && !each->_isMultiEmbededEntity() && stream != root;
    each = stepFrom(each, root, descend);
  }
  if (texts.plain != nullptr || texts.html != nullptr || stream == nullptr) return texts;
  for (VoMsgEntity* each = stream->getChildEntity(); each != nullptr; each = each->getNextSiblingEntity()) {
    if (isTnefText(*each)) takeFirst(texts, each);
  }
  return texts;
}

// The text of a part in UTF-8; of a text with attachments inside it, what stands between these.
inline Result<std::string> textOf(VoMsgEntity* entity, Tree* tree) {
  const VoMsgEntity* const whole = entity->getChildEntity();
  if (whole == nullptr || !const_cast<VoMsgEntity*>(whole)->_isMultiEmbededEntity()) return Part(entity, tree).text();
  std::string all;
  for (VoMsgEntity* piece = whole->getChildEntity(); piece != nullptr; piece = piece->getNextSiblingEntity()) {
    if (piece->getEncoding() != nullptr) continue;
    Result<std::string> text = Part(piece, tree).text();
    if (!text) return text;
    all += *text;
  }
  return all;
}

// The Content-IDs that an HTML text names: what stands behind "cid:", up to what cannot be in one.
inline std::unordered_set<std::string> namedIds(std::string_view html) {
  std::unordered_set<std::string> ids;
  const auto hex = [](char c) {
    return c >= '0' && c <= '9' ? c - '0' : lower(c) >= 'a' && lower(c) <= 'f' ? lower(c) - 'a' + 10 : -1;
  };
  for (auto colon = html.find(':'); colon != html.npos; colon = html.find(':', colon + 1)) {
    if (colon < 3 || !equalNoCase(html.substr(colon - 3, 3), "cid")) continue;
    std::string id;
    for (std::size_t i = colon + 1; i < html.size(); ++i) {
      const char c = html[i];
      if (std::string_view("\"'<>() \t\r\n\\").find(c) != std::string_view::npos) break;
      if (c == '%' && i + 2 < html.size() && hex(html[i + 1]) >= 0 && hex(html[i + 2]) >= 0) {
        id += static_cast<char>(hex(html[i + 1]) * 16 + hex(html[i + 2]));
        i += 2;
      } else {
        id += c;
      }
    }
    if (!id.empty()) ids.insert(std::move(id));
  }
  return ids;
}

// Collects the leaves that are no part of the letter itself.
inline std::vector<Part> findAttachments(VoMsgEntity* root, Tree* tree) {
  const MainTexts texts = findMainTexts(root);
  std::unordered_set<std::string> shown;
  if (texts.html != nullptr) {
    Result<std::string> html = textOf(texts.html, tree);
    if (const std::string* const text = html.salvaged()) shown = namedIds(*text);
  }
  std::vector<Part> found;
  for (VoMsgEntity *each = root, *next = nullptr; each != nullptr; each = next) {
    const Part part(each, tree);
    VoMsgEntity* const child = each->getChildEntity();
    const bool isMain = each == texts.plain || each == texts.html || isTnefText(*each);
    bool descend = true;
    if (child != nullptr && isMessage(*child) && !(isTnef(*child) && mime(*each) != nullptr)) {
      // A nested message, whole: the part that carries it, and the message itself where the root is that part.
      found.push_back(each == root ? Part(child, tree) : part);
      descend = false;
    } else if (child != nullptr && child->_isMultiEmbededEntity()) {
      if (!isMain && !each->isMultipartEntity()) found.push_back(part);  // a text with attachments that is one itself
    } else if (part.isLeaf()) {
      const bool isPiece = dynamic_cast<VoMsgEmbededEntity*>(each) != nullptr && each->getEncoding() == nullptr;
      const bool isShown = !shown.empty() && part.isType("image") && shown.count(part.contentId().value_or("")) > 0;
      if (!isMain && !isPiece && !isShown && !part.isSignature()) found.push_back(part);
    }
    next = stepFrom(each, root, descend);
  }
  return found;
}

}  // namespace vomsg::inner
