// The way into a MIME entity for the library's own parser, writer and editing, which build and change entities without
// marking them as a caller's edits. Everything handed out is the entity's own.
#pragma once

#include <string_view>

#include "vomsg/entity/VoMsgMessageSource.h"
#include "vomsg/entity/VoMsgRfc822Entity.h"

struct VoMsgRfc822Entity::Inside {
  using Source = VoObjectStub<vomsg::detail::MessageSource>;

  static VoMsgEntityLayout& layout(VoMsgRfc822Entity& entity) { return entity.mLayout; }
  static const VoMsgEntityLayout& layout(const VoMsgRfc822Entity& entity) { return entity.mLayout; }
  // Empty until somebody asked for the block or the body.
  static VoObjectStub<VoMsgEntityHeader>& header(VoMsgRfc822Entity& entity) { return entity.mHeader; }
  static const VoObjectStub<VoMsgEntityHeader>& header(const VoMsgRfc822Entity& entity) { return entity.mHeader; }
  static VoObjectStub<VoMsgEntityBody>& body(VoMsgRfc822Entity& entity) { return entity.mBody; }
  static Source& source(VoMsgRfc822Entity& entity) { return entity.mMessageSource; }
  static const Source& source(const VoMsgRfc822Entity& entity) { return entity.mMessageSource; }

  // Both throw when the block cannot be read; the first one reads it anew.
  static VoMsgEntityHeader& buildHeader(VoMsgRfc822Entity& entity, const char* defaultCharset) {
    return entity._buildHeader(defaultCharset);
  }
  static VoMsgEntityHeader& readHeader(VoMsgRfc822Entity& entity) { return entity._header(); }
  static VoMsgEntityBody* createBody(VoMsgRfc822Entity& entity, bool multipart) {
    return entity._createEntityBody(multipart);
  }
  static std::string_view lineEnd(const VoMsgRfc822Entity& entity, VoMsgBufferedReader* reader) {
    return entity._lineEnd(reader);
  }
  static std::string_view textLineEnd(const VoMsgRfc822Entity& entity) { return entity._textLineEnd(); }
  static VoErrorCode makeMultipartHeader(VoMsgRfc822Entity& entity) { return entity._makeMultipartHeader(); }
  static VoErrorCode changeSingleToMulti(VoMsgRfc822Entity& entity) { return entity._changeSingleToMulti(); }
  static void noteRemoval(VoMsgRfc822Entity& entity, const VoMsgEntity& child) { entity._noteRemoval(child); }
};

namespace vomsg::detail {

using Inside = VoMsgRfc822Entity::Inside;

inline VoMsgEntityLayout& layoutOf(VoMsgRfc822Entity& entity) { return Inside::layout(entity); }
inline const VoMsgEntityLayout& layoutOf(const VoMsgRfc822Entity& entity) { return Inside::layout(entity); }

}  // namespace vomsg::detail
