// One piece of a text with attachments inside it: a stretch of text, or a uuencode or BinHex block. It knows where it
// lies; name and content are read when somebody asks.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "vomsg/embedded/VoMsgEmbededScanner.h"
#include "vomsg/entity/VoMsgHeaderlessEntity.h"

class VoMsgMultiEmbededEntity;
namespace vomsg::detail {
class MessageSource;
}

class VOMSG_API VoMsgEmbededEntity : public VoMsgHeaderlessEntity {
 public:
  explicit VoMsgEmbededEntity(const vomsg::detail::EmbeddedPiece& piece);
  ~VoMsgEmbededEntity() override;
  std::uint32_t getEntityTypeID() const override;

  // Where the piece lies in the text it was found in.
  unsigned getBodyOffset() const { return mPiece.offset; }
  unsigned getBodySize() const { return mPiece.size; }
  // The file name in the block, which is read again each time and not kept; empty for text.
  VoErrorCode readName(std::string& name) const;

  const char* getContentType() const override;  // "text/plain" or "application/octet-stream"
  const char* getCharset() const override;      // of a stretch of text: as of the whole text; else null
  const char* getEncoding() const override;     // "x-uuencode", "mac-binhex40", or null
  // From the block: never trust it as a path. Without `charset` as it stands there, else converted from the charset of
  // the text; in one that names none, a name that is UTF-8 is taken for that and any other for windows-1252. Null for
  // text. Borrowed until the next call.
  const char* getFileName(const char* charset) const override;
  unsigned getContentSize() const override;
  bool isMultipartEntity() const override;  // false

  // The block decoded; the text as it is. getRawContent gives the block as it stands, getTextContent text converted
  // from the charset of the whole. kVoReadFailed, kVoWriteFailed; kVoDecodeFailed: a BinHex block is damaged.
  const VoMsgResourceLocator* getContent(int& err, const VoMsgResourceLocator* target) override;
  const VoMsgResourceLocator* getTextContent(int& err, const VoMsgResourceLocator* target,
                                             const char* charset) override;
  const VoMsgResourceLocator* getRawContent(int& err, const VoMsgResourceLocator* target) override;

  // New content; the text around it stays. Encodings are "uuencode", "x-uuencode" and "mac-binhex40", and for text
  // "7bit", "8bit" and "binary"; null keeps the piece what it is. Content with 254 equal bytes in a row, which BinHex
  // cannot say, becomes a uuencode block instead. The resource's name becomes the file name, except from replaceContent
  // and replaceTextContent; content types have no place in a block and are ignored.
  // kVoBadArgument: null; kVoNotSupported: "quoted-printable"; kVoBadEncoding: any other encoding;
  // kVoConversionFailed: the charset of the whole text cannot say the new text.
  VoErrorCode setContent(VoMsgResourceLocator* content, const char* contentType, const char* encoding) override;
  VoErrorCode setTextContent(VoMsgResourceLocator* content, const char* contentType, const char* charset) override;
  VoErrorCode setRawContent(VoMsgResourceLocator* content, const char* contentType, const char* encoding) override;
  VoErrorCode replaceContent(VoMsgResourceLocator* content, const char* encoding) override;
  VoErrorCode replaceTextContent(VoMsgResourceLocator* content, const char* charset,
                                 VoMsgReplaceOption option) override;
  VoErrorCode setFileName(const char* name) override;  // kVoNotSupported for text
  VoErrorCode setAttachment(VoMsgResourceLocator* content) override;

  void dumpEntityInf(std::FILE* out) override;

  const VoMsgResourceLocator* _getContent(int& err, const VoMsgResourceLocator* target) override;
  const VoMsgResourceLocator* _getRawContent(int& err, const VoMsgResourceLocator* target) override;
  const VoMsgResourceLocator* _getTextContent(int& err, const VoMsgResourceLocator* target,
                                              const char* charset) override;
  VoErrorCode copy(VoMsgEntity* from) override;
  VoMsgBufferedReader* getContextSource(int& err) override;  // over the whole text
  VoErrorCode _writeToResource(VoMsgBufferedWriter* writer) override;
  bool _isModified() override;  // new content or another name
  const char* _getEntityName() override;

 private:
  struct State;

  bool isBlock() const { return mPiece.kind != vomsg::detail::EmbeddedKind::text; }
  VoMsgMultiEmbededEntity* whole() const;
  State& state() const;
  const char* rawName() const;
  VoErrorCode presentName(std::string& name) const;
  template <class Sink>
  VoErrorCode withBytes(Sink&& sink) const;
  VoErrorCode fetch(bool decode, std::unique_ptr<VoMsgResourceLocator>& kept, const VoMsgResourceLocator*& resource);
  VoErrorCode kindFor(const char* encoding, vomsg::detail::EmbeddedKind& kind) const;
  VoErrorCode encode(const VoMsgResourceLocator& content, vomsg::detail::EmbeddedKind kind, const char* name,
                     VoMsgBufferedWriter& target, bool& isExact) const;
  VoErrorCode encodeInto(const VoMsgResourceLocator& bytes, const VoMsgResourceLocator& content,
                         vomsg::detail::EmbeddedKind& kind, const char* name) const;
  VoErrorCode install(VoMsgResourceLocator* content, const char* encoding, bool isEncoded, const char* name);
  VoErrorCode installText(VoMsgResourceLocator* content, const char* charset);

  vomsg::detail::EmbeddedPiece mPiece;
  mutable std::unique_ptr<State> mpState;  // what was read or changed; most pieces never need it
};
