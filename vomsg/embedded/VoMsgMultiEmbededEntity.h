// A text with attachments inside it, as the child of the text part, or of the multipart behind whose close delimiter
// the text stands. Its children are VoMsgEmbededEntity pieces that together are the whole text, in order.
#pragma once

#include <cstdint>

#include "vomsg/entity/VoMsgHeaderlessEntity.h"
#include "vomsg/entity/VoMsgMessageSource.h"
#include "vomsg/foundation/VoObjectStub.h"

class VOMSG_API VoMsgMultiEmbededEntity : public VoMsgHeaderlessEntity {
 public:
  // The text is [offset, offset + size) of the source of the entity above when it is an epilogue; otherwise the
  // decoded content of that entity.
  struct Epilogue {
    std::uint32_t offset = 0;
    std::uint32_t size = 0;  // 0: not an epilogue
  };

  VoMsgMultiEmbededEntity();
  explicit VoMsgMultiEmbededEntity(Epilogue epilogue);
  ~VoMsgMultiEmbededEntity() override;
  std::uint32_t getEntityTypeID() const override;

  // Takes a piece out of the text. kVoOutOfRange: no such piece.
  VoErrorCode removeChildEntityAt(unsigned i) override;

  const char* getContentType() const override;  // "text/plain"
  // As the part above declares; "us-ascii-59428" for an epilogue, which nobody declares anything about.
  const char* getCharset() const override;
  const char* getEncoding() const override;                     // null
  const char* getFileName(const char* charset) const override;  // null
  unsigned getContentSize() const override;                     // 0: the pieces have the content
  bool isMultipartEntity() const override;                      // true

  // The pieces have the content: kVoNoContent.
  const VoMsgResourceLocator* getContent(int& err, const VoMsgResourceLocator* target) override;
  const VoMsgResourceLocator* getTextContent(int& err, const VoMsgResourceLocator* target,
                                             const char* charset) override;
  const VoMsgResourceLocator* getRawContent(int& err, const VoMsgResourceLocator* target) override;
  VoErrorCode setContent(VoMsgResourceLocator* content, const char* contentType, const char* encoding) override;
  VoErrorCode setTextContent(VoMsgResourceLocator* content, const char* contentType, const char* charset) override;
  VoErrorCode setRawContent(VoMsgResourceLocator* content, const char* contentType, const char* encoding) override;
  VoErrorCode replaceContent(VoMsgResourceLocator* content, const char* encoding) override;
  VoErrorCode replaceTextContent(VoMsgResourceLocator* content, const char* charset,
                                 VoMsgReplaceOption option) override;
  VoErrorCode setFileName(const char* name) override;
  VoErrorCode setAttachment(VoMsgResourceLocator* content) override;

  void dumpEntityInf(std::FILE* out) override;

  const VoMsgResourceLocator* _getContent(int& err, const VoMsgResourceLocator* target) override;
  const VoMsgResourceLocator* _getRawContent(int& err, const VoMsgResourceLocator* target) override;
  const VoMsgResourceLocator* _getTextContent(int& err, const VoMsgResourceLocator* target,
                                              const char* charset) override;
  VoErrorCode copy(VoMsgEntity* from) override;                        // the text is shared
  VoMsgBufferedReader* getContextSource(int& err) override;            // over the text
  VoErrorCode _writeToResource(VoMsgBufferedWriter* writer) override;  // the text with what was changed in it
  bool _isModified() override;                                         // a piece was removed
  const char* _getEntityName() override;

  bool isEpilogue() const { return mEpilogue.size > 0; }
  const Epilogue& epilogue() const { return mEpilogue; }
  // The text that the pieces lie in; shared with copies.
  vomsg::detail::MessageSource* textSource() const { return mText.getObject(); }
  void setTextSource(const VoObjectStub<vomsg::detail::MessageSource>& text) { mText = text; }

 private:
  VoObjectStub<vomsg::detail::MessageSource> mText;
  Epilogue mEpilogue;
  bool mPieceRemoved = false;
};
