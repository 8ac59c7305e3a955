// A MIME entity (RFC 2045, RFC 2046): a header block and a body cut out of a message's source. After parsing it
// knows ranges only; fields and bodies become objects when somebody asks for them.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "vomsg/entity/VoMsgEntity.h"
#include "vomsg/entity/VoMsgEntityBody.h"
#include "vomsg/entity/VoMsgEntityLayout.h"
#include "vomsg/foundation/VoObjectStub.h"
#include "vomsg/header/VoMsgEntityHeader.h"

class VoMsgMimeEntity;
class VoMsgSingleBody;
class VoMsgMultipartBody;
namespace vomsg::detail {
class MessageSource;
class BoundaryTable;
class EditUndos;
}  // namespace vomsg::detail

class VOMSG_API VoMsgRfc822Entity : public virtual VoMsgEntity {
 public:
  ~VoMsgRfc822Entity() override;

  // The contract of what is overridden stands in VoMsgEntity.h; here is what is particular to MIME entities.

  // --- the tree. A leaf that gets a part becomes a multipart/mixed: its content, with every Content-* field, moves to
  // a new first part, which is no edit of that content. A boundary that the new part's bytes hold too is drawn anew.
  // Removing the last part leaves an empty multipart.
  VoErrorCode appendChildEntity(VoMsgEntity* child) override;
  VoErrorCode insertChildEntityAt(VoMsgEntity* child, unsigned i) override;
  VoErrorCode removeChildEntityAt(unsigned i) override;

  // --- header fields. The first question makes the field objects from the source; until then a part costs none. When
  // the source cannot be read now, getters answer as if there were nothing, and setters fail.
  const char* getHeaderValue(const char* name, const char* charset) const override;
  const char* getRawHeaderValue(const char* name) const override;
  const char* getHeaderParameterValue(const char* name, const char* param, const char* charset) const override;
  const char* getRawHeaderParameterValue(const char* name, const char* param) const override;
  // Content fields take their parameters along in `value`, which are set one by one; address fields get their display
  // names encoded and nothing else.
  VoErrorCode setHeaderValue(const char* name, const char* value, const char* srcCharset,
                             const char* dstCharset) override;
  VoErrorCode setHeaderParameterValue(const char* name, const char* param, const char* value, const char* srcCharset,
                                      const char* dstCharset) override;
  unsigned countHeaders() const override;
  VoMsgHeaderField* getHeaderAt(unsigned i) const override;
  VoMsgHeaderField* getHeader(const char* name) const override;
  VoErrorCode appendHeader(VoMsgHeaderField* field) override;
  VoErrorCode insertHeaderAt(VoMsgHeaderField* field, unsigned i) override;
  VoErrorCode removeHeaderAt(unsigned i) override;
  VoErrorCode removeHeader(const char* name) override;
  VoErrorCode removeHeaderParameter(const char* name, const char* param) override;
  // kVoNoSuchHeader: no such field; kVoOutOfRange: it has no i-th parameter.
  VoErrorCode removeHeaderParameterAt(const char* name, unsigned i);

  // --- what the content is (RFC 2045, sections 5 and 6; RFC 2183)
  const char* getContentType() const override;  // "text/plain" as written, without parameters
  const char* getCharset() const override;
  const char* getEncoding() const override;
  // The "filename" of Content-Disposition, else the "name" of Content-Type.
  const char* getFileName(const char* charset) const override;
  unsigned getContentSize() const override;
  const char* getBoundary() const;  // of Content-Type, borrowed; null when it declares none

  // --- content. What was decoded is kept with the body, which copies made by split() share. A setter encodes at once,
  // drops what lay in the old content, a nested message or attachments in a text, and brings Content-Type,
  // Content-Transfer-Encoding and the file name in line; fields that say the right thing already are left alone.
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
  bool isMultipartEntity() const override;

  bool isModified() override;

  // --- addresses (RFC 5322, section 3.4). `name` is From, To, Cc or Bcc; another one has none and takes none.
  unsigned countUserAddress(const char* name) const override;
  VoMsgUserAddress* getUserAddressAt(const char* name, unsigned i) const override;
  VoErrorCode appendUserAddress(const char* name, VoMsgUserAddress* address) override;
  VoErrorCode appendUserAddress(const char* name, const char* address) override;
  VoErrorCode insertUserAddressAt(const char* name, VoMsgUserAddress* address, unsigned i) override;
  VoErrorCode insertUserAddressAt(const char* name, const char* address, unsigned i) override;
  VoErrorCode removeUserAddressAt(const char* name, unsigned i) override;

  void dumpEntityInf(std::FILE* out) override;

  VoErrorCode setFileName(const char* name) override;
  VoErrorCode setContentType(const char* contentType) override;
  VoErrorCode setAttachment(VoMsgResourceLocator* content) override;
  unsigned getResourceSize(VoMsgResourceLocator* resource) override;
  VoErrorCode appendEntity(VoMsgEntity* entity) override;

  // --- for the library's own use, and for hosts that compose by hand
  const VoMsgResourceLocator* _getContent(int& err, const VoMsgResourceLocator* target) override;
  const VoMsgResourceLocator* _getRawContent(int& err, const VoMsgResourceLocator* target) override;
  const VoMsgResourceLocator* _getTextContent(int& err, const VoMsgResourceLocator* target,
                                              const char* charset) override;
  // Fields are copied, body and source shared; children are not copied. kVoBadArgument: `from` is no MIME entity.
  VoErrorCode copy(VoMsgEntity* from) override;
  VoMsgBufferedReader* getContextSource(int& err) override;

  VoErrorCode _readHeaderPart(const char* defaultCharset) override;
  VoErrorCode _readBodyPart(VoMsgBoundaryType& end) override;
  VoErrorCode _writeBoundarySeparator(VoMsgBufferedWriter* writer, bool first) override;
  VoErrorCode _writeBoundaryBegin(VoMsgBufferedWriter* writer) override;
  VoErrorCode _writeBoundaryEnd(VoMsgBufferedWriter* writer) override;
  VoErrorCode _writeToResource(VoMsgBufferedWriter* writer) override;
  bool _isModified() override;

  // Where the entity lies in the resource it is read from: bytes from its start, and lengths. The header block includes
  // its empty line. 0 for what was never read. An edit does not move them.
  unsigned getHeaderOffset() const { return mLayout.headerOffset; }
  unsigned getHeaderSize() const { return mLayout.headerSize; }
  unsigned getBodyOffset() const { return mLayout.bodyOffset; }
  unsigned getBodySize() const { return mLayout.bodySize; }
  // How text without conversion losses would be read: the charset declared, detected or assumed for the text
  // content, for hosts that want to show it. The name is borrowed until the next call.
  enum class CharsetOrigin : std::uint8_t { declared, detected, assumed };
  const char* getTextCharset(CharsetOrigin& origin);

  struct Inside;  // the way in for the library's own parser, writer and editing; no caller needs it

  // The header block; made from the source on first use. Borrowed; null when the source cannot be read now or memory is
  // short, and asked again the next time.
  VoMsgEntityHeader* getEntityHeader() const;
  std::string_view _declaredBoundary() const;  // of a multipart, borrowed from its header block; else mostly empty

 protected:
  VoMsgRfc822Entity();

  VoMsgEntityHeader& _buildHeader(const char* defaultCharset) const;
  VoMsgEntityHeader& _header() const;  // as getEntityHeader(), but throws where that gives null
  template <class Change>
  VoErrorCode _changeHeader(const char* function, Change change);
  VoErrorCode _logged(const char* function, VoErrorCode code);
  // What ends a line that is added: what ends the header block, of whose source `reader` is a reader.
  std::string_view _lineEnd(VoMsgBufferedReader* reader) const;
  // What ends the lines of its text: LF where the first line of the message around it ends in LF alone, else CR LF.
  std::string_view _textLineEnd() const;
  VoMsgEntityBody* _body() const;
  VoMsgSingleBody* _singleBody() const;  // null for a multipart
  // Makes a new body when there is none, when it is shared, or when it is of the other kind.
  VoMsgEntityBody* _createEntityBody(bool multipart);

  VoErrorCode _addChild(VoMsgEntity* child, unsigned i);  // all ones: behind the last one
  void _noteRemoval(const VoMsgEntity& child);            // of a child that is about to go
  // Turns a leaf into multipart/mixed: what it held becomes its first part.
  VoErrorCode _changeSingleToMulti();
  VoErrorCode _makeMultipartHeader();
  VoErrorCode _editMultipartHeader();
  VoErrorCode _editMultipartHeaderParameter();
  VoErrorCode _separateBoundaries(VoMsgEntity* child, vomsg::detail::EditUndos& undos);
  void _findDelimiters(const vomsg::detail::BoundaryTable& boundaries, std::vector<bool>& found, bool isFirst) const;
  void _removeMultipartHeader(vomsg::detail::EditUndos& undos);
  VoErrorCode _changeMultipartForEmbeded(std::unique_ptr<VoMsgMimeEntity>& first);
  static void _createBoundary(char* buffer, unsigned length);

  // Steps of the content setters.
  VoErrorCode _checkContentChange(VoMsgResourceLocator* content, const char* contentType, const char* encoding) const;
  VoErrorCode _setContent(VoMsgResourceLocator* content, const char* contentType, const char* encoding, bool isEncoded,
                          bool takeName, vomsg::detail::EditUndos& undos);
  VoErrorCode _setTextContent(VoMsgResourceLocator* content, const char* contentType, const char* charset,
                              VoMsgReplaceOption option, vomsg::detail::EditUndos& undos);
  VoErrorCode _describeContent(VoMsgResourceLocator* content, const char* contentType, const char* encoding,
                               bool takeName);
  VoErrorCode _setParameterIfChanged(const char* name, const char* param, const char* value, const char* charset);

  mutable VoObjectStub<VoMsgEntityHeader> mHeader;  // empty until asked for
  mutable VoObjectStub<VoMsgEntityBody> mBody;      // empty until asked for
  VoObjectStub<vomsg::detail::MessageSource> mMessageSource;
  VoMsgEntityLayout mLayout;
};
