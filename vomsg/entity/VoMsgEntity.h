// The base of everything in a message tree: MIME parts, messages, TNEF messages and their entities, attachments
// embedded in text. It owns the tree links; parents own children. One thread at a time.
#pragma once

#include <cstdint>
#include <cstdio>

#include "vomsg/foundation/VoErrorCode.h"
#include "vomsg/foundation/VoMsgBoundary.h"
#include "vomsg/foundation/VoMsgExport.h"

class VoMsgBufferedReader;
class VoMsgBufferedWriter;
class VoMsgHeaderField;
class VoMsgResourceLocator;
class VoMsgUserAddress;

// Entity type ids: flags in the top bits, the kind in the low ones.
inline constexpr std::uint32_t kVoEntityIsMessage = 0x20000000u;    // a message
inline constexpr std::uint32_t kVoEntityIsContainer = 0x40000000u;  // holds a nested message or children of its own
inline constexpr std::uint32_t kVoEntityMime = 1;                   // 0x40000001 when its first child is a message
inline constexpr std::uint32_t kVoEntityRfc822Message = 0x20000002u;
inline constexpr std::uint32_t kVoEntityEmbeded = 3;  // 0x40000003 when its first child is a message
inline constexpr std::uint32_t kVoEntityMultiEmbeded = 0x80000004u;
inline constexpr std::uint32_t kVoEntityTnef = 5;  // 0x40000005 when it has children
inline constexpr std::uint32_t kVoEntityTnefMessage = 0x20000006u;

namespace vomsg::detail {
struct TreeAccess;
}

// How replaceTextContent treats the declared charset.
enum VoMsgReplaceOption : int {
  kVoReplaceKeepCharset = 0,  // convert to the declared charset when that loses nothing
  kVoReplaceUseCharset = 1    // keep the bytes and declare the given charset
};

class VOMSG_API VoMsgEntity {
 public:
  VoMsgEntity(const VoMsgEntity&) = delete;
  VoMsgEntity& operator=(const VoMsgEntity&) = delete;
  virtual ~VoMsgEntity();  // destroys the subtree, without recursion

  // The flags and the kind above. The container flag follows the children that are there at the time of the call.
  virtual std::uint32_t getEntityTypeID() const = 0;

  // --- the tree. All pointers are borrowed; null where there is nothing. What counts or numbers children walks over
  // them: in a loop over the children follow getChildEntity() and getNextSiblingEntity() instead.
  virtual unsigned getIndex();         // position among the parent's children; 0 for a root. Walks over them
  virtual unsigned getNestingLevel();  // enclosing messages, the tree's root not counted. Kept until the tree changes
  virtual bool hasChildEntity() const;
  virtual unsigned countChildEntity() const;  // walks over the children
  virtual VoMsgEntity* getParentEntity() const;
  virtual VoMsgEntity* getNextSiblingEntity() const;
  virtual VoMsgEntity* getChildEntity() const;
  virtual VoMsgEntity* getChildEntityAt(unsigned i) const;  // walks over the children up to there

  // The entity takes the child over unless the call fails; a child that has a parent, or lies above, is refused. A leaf
  // becomes a multipart/mixed whose first part is what it held; a message gets a part around it. Insertion with `i`
  // equal to the number of children appends. kVoBadArgument: null, or refused; kVoOutOfRange: no such place.
  virtual VoErrorCode appendChildEntity(VoMsgEntity* child) = 0;
  virtual VoErrorCode insertChildEntityAt(VoMsgEntity* child, unsigned i) = 0;
  // Destroys the i-th child with its subtree. Children of a leaf, a message or attachments in its text, go with the
  // content and not by themselves. kVoNoChildren: neither a multipart nor a child in it; kVoOutOfRange: any other
  // index that is refused.
  virtual VoErrorCode removeChildEntityAt(unsigned i) = 0;

  // --- header fields (RFC 5322, RFC 2045). The first field of a name counts, names are compared without case. Texts
  // and fields handed out are borrowed until the field changes; null where there is none. A null name is
  // kVoBadArgument. The value without parameters, encoded words decoded (RFC 2047), in `charset`; as it stands when it
  // cannot be converted. "us-ascii" asks for the raw one.
  virtual const char* getHeaderValue(const char* name, const char* charset) const = 0;
  virtual const char* getRawHeaderValue(const char* name) const = 0;  // unfolded, but not decoded
  // The same of one parameter, its pieces joined and percent-coded bytes decoded (RFC 2231).
  virtual const char* getHeaderParameterValue(const char* name, const char* param, const char* charset) const = 0;
  virtual const char* getRawHeaderParameterValue(const char* name, const char* param) const = 0;
  // Sets the first field of that name, or appends one; its parameters stay. `value` is in `srcCharset` and is
  // stored in `dstCharset` (null: in `srcCharset`).
  virtual VoErrorCode setHeaderValue(const char* name, const char* value, const char* srcCharset,
                                     const char* dstCharset) = 0;
  // The same for a parameter of a field that is there. kVoNoSuchHeader: there is none.
  virtual VoErrorCode setHeaderParameterValue(const char* name, const char* param, const char* value,
                                              const char* srcCharset, const char* dstCharset) = 0;
  virtual unsigned countHeaders() const = 0;
  virtual VoMsgHeaderField* getHeaderAt(unsigned i) const = 0;
  virtual VoMsgHeaderField* getHeader(const char* name) const = 0;
  // The block takes `field` over unless the call fails. kVoBadArgument: null; kVoOutOfRange: no such place.
  virtual VoErrorCode appendHeader(VoMsgHeaderField* field) = 0;
  virtual VoErrorCode insertHeaderAt(VoMsgHeaderField* field, unsigned i) = 0;
  virtual VoErrorCode removeHeaderAt(unsigned i) = 0;
  virtual VoErrorCode removeHeader(const char* name) = 0;  // every field of that name; success when there is none
  virtual VoErrorCode removeHeaderParameter(const char* name, const char* param) = 0;

  // --- what the content is, as the header block declares it. Null where it declares nothing.
  virtual const char* getContentType() const = 0;                  // "text/plain", without parameters
  virtual const char* getCharset() const = 0;                      // the charset parameter of the type
  virtual const char* getEncoding() const = 0;                     // the transfer encoding, as written
  virtual const char* getFileName(const char* charset) const = 0;  // as in the mail: never trust it as a path
  virtual unsigned getContentSize() const = 0;                     // bytes of the decoded content, 0 for a multipart

  // --- content. Getters report through `err` and return a resource that the entity keeps (borrowed, valid until
  // the content changes; a converted text only until a text in another charset is asked for, be it of a copy made by
  // split() that still shares the body). With a `target` (borrowed) the content goes there and the target is returned.
  // Null on failure. kVoNoContent: a multipart, or an empty body; kVoReadFailed: no reader, or the source is not what
  // it was when it was parsed; kVoWriteFailed: no room; kVoBadArgument: the target is a resource or a file that
  // something in the tree is still read from, and was not touched.
  virtual const VoMsgResourceLocator* getContent(int& err, const VoMsgResourceLocator* target) = 0;  // decoded
  // Decoded and converted to `charset`, from the one declared, or else recognised; null leaves it as it is, and so
  // comes a text that cannot be converted.
  virtual const VoMsgResourceLocator* getTextContent(int& err, const VoMsgResourceLocator* target,
                                                     const char* charset) = 0;
  virtual const VoMsgResourceLocator* getRawContent(int& err, const VoMsgResourceLocator* target) = 0;  // still encoded
  // Setters copy what they need at once; the caller keeps its resource. A setter that fails has changed nothing. Null
  // for a type or an encoding leaves what is declared; a name that the resource has is declared as the file name. What
  // they set reads back byte for byte: where the encoding asked for cannot say it, or would leave a delimiter line of a
  // multipart around, base64 is declared and used instead. Only texts in a message whose lines end in LF alone get its
  // line ends. kVoBadArgument: no content; kVoNoContent: a multipart; kVoBadEncoding: no such encoding.
  virtual VoErrorCode setContent(VoMsgResourceLocator* content, const char* contentType, const char* encoding) = 0;
  // `content` is a text in `charset`. Its line ends become those of the message, LF or CR LF; it goes into the declared
  // charset when that loses nothing, and is labelled with the given one otherwise; UTF-16 and UTF-32 become UTF-8.
  virtual VoErrorCode setTextContent(VoMsgResourceLocator* content, const char* contentType, const char* charset) = 0;
  // `content` is encoded already, as `encoding` says.
  virtual VoErrorCode setRawContent(VoMsgResourceLocator* content, const char* contentType, const char* encoding) = 0;
  // As setContent and setTextContent, without a look at type and name.
  virtual VoErrorCode replaceContent(VoMsgResourceLocator* content, const char* encoding) = 0;
  virtual VoErrorCode replaceTextContent(VoMsgResourceLocator* content, const char* charset,
                                         VoMsgReplaceOption option) = 0;
  virtual bool isMultipartEntity() const = 0;  // by its type; whether it has parts, hasChildEntity() says

  // --- classification
  // A prefix test on purpose: ("multipart", null) accepts every multipart. False where no type is declared.
  virtual bool isContentType(const char* type, const char* subtype) const;
  // Signed data (RFC 8551) by type or name, or lies in a multipart/signed, or is one (RFC 1847). What the entities
  // around contribute is kept until a type or the tree changes; so below.
  virtual bool isSignedPart();
  // Enveloped data, or lies in a multipart/encrypted. Unlike above, an octet-stream named *.p7m counts.
  virtual bool isEncryptedPart();
  virtual bool isModified();  // a caller changed something in this subtree; what was refused does not count

  // --- addresses of From, To, Cc and BCC. Entities without addresses: 0, null, kVoNotSupported. Addresses handed out
  // are borrowed; the field takes over what is given, unless the call fails. A text is parsed as one address.
  virtual unsigned countUserAddress(const char* name) const;
  virtual VoMsgUserAddress* getUserAddressAt(const char* name, unsigned i) const;
  virtual VoErrorCode appendUserAddress(const char* name, VoMsgUserAddress* address);
  virtual VoErrorCode appendUserAddress(const char* name, const char* address);
  virtual VoErrorCode insertUserAddressAt(const char* name, VoMsgUserAddress* address, unsigned i);
  virtual VoErrorCode insertUserAddressAt(const char* name, const char* address, unsigned i);
  virtual VoErrorCode removeUserAddressAt(const char* name, unsigned i);

  virtual void dumpEntityInf(std::FILE* out) = 0;  // for people: what the entity is, its fields, its body
  virtual void _dumpEntityInf(std::FILE* out);     // the part that all kinds share: addresses of the links
  virtual VoMsgEntity* createWrapperEntity();      // null where an entity needs no wrapper; else the caller's

  // Sets the file name of both places, Content-Disposition (made an attachment when missing) and Content-Type. UTF-8.
  virtual VoErrorCode setFileName(const char* name) = 0;
  virtual VoErrorCode setContentType(const char* contentType) = 0;  // with its parameters, if any
  // Base64 content of an attachment; without a type so far, application/octet-stream.
  virtual VoErrorCode setAttachment(VoMsgResourceLocator* content) = 0;
  virtual unsigned getResourceSize(VoMsgResourceLocator* resource) = 0;  // bytes of the data part; 0 for null
  virtual VoErrorCode appendEntity(VoMsgEntity* entity) = 0;             // as appendChildEntity

  // The getters without their log line, for the library's own use.
  virtual const VoMsgResourceLocator* _getContent(int& err, const VoMsgResourceLocator* target) = 0;
  virtual const VoMsgResourceLocator* _getRawContent(int& err, const VoMsgResourceLocator* target) = 0;
  virtual const VoMsgResourceLocator* _getTextContent(int& err, const VoMsgResourceLocator* target,
                                                      const char* charset) = 0;
  virtual bool _isMultiEmbededEntity();             // holds the pieces of a text with blocks in it
  virtual VoErrorCode copy(VoMsgEntity* from) = 0;  // becomes a copy of one entity of the same kind, without children
  // The opened reader that this entity's bytes come from; borrowed. Null with success where there is none.
  virtual VoMsgBufferedReader* getContextSource(int& err);

  // --- steps of reading and writing, which messages drive
  virtual VoErrorCode _readHeaderPart(const char* defaultCharset) = 0;  // `defaultCharset`: of bytes above 0x7F
  virtual VoErrorCode _readBodyPart(VoMsgBoundaryType& end) = 0;        // `end`: the delimiter that ended it
  // "--" and the boundary; unless it is the `first`, behind a line end. Begin and end add what follows it.
  virtual VoErrorCode _writeBoundarySeparator(VoMsgBufferedWriter* writer, bool first) = 0;
  virtual VoErrorCode _writeBoundaryBegin(VoMsgBufferedWriter* writer);
  virtual VoErrorCode _writeBoundaryEnd(VoMsgBufferedWriter* writer);
  virtual VoErrorCode _writeToResource(VoMsgBufferedWriter* writer) = 0;  // header block, body and children
  virtual VoErrorCode _writeEntityToResource(VoMsgEntity* entity, VoMsgBufferedWriter* writer);
  virtual bool _isModified() = 0;  // a caller changed this very entity: its header, its body, its list of children
  virtual const char* _getEntityName() = 0;  // the class, for dumps
  virtual const char* _getUUIDString();      // the log tag of the message around this entity; never null

  std::uint32_t getEntityID() const { return mEntityID; }  // unique in the process, from 1
  // The first entity with that id in document order, from this entity on; null when there is none. Walks over them.
  VoMsgEntity* getChildEntityByID(std::uint32_t id);

  // Operations of this kind made on a subtree ask for its root often; amortised over a walk this is constant.
  VoMsgEntity* _getRootEntity();

 protected:
  friend struct vomsg::detail::TreeAccess;
  VoMsgEntity();

  // The tree rules that the public operations of every kind are built on; they mark nothing as changed.
  void _appendChild(VoMsgEntity* child);  // with its whole chain of siblings
  bool _insertChildAt(VoMsgEntity* child, unsigned i);
  bool _removeChildAt(unsigned i);
  bool _removeChildAfter(VoMsgEntity* before);  // null: the first one
  void _freeTree();                             // destroys every descendant

  VoMsgEntity* mpParent = nullptr;
  VoMsgEntity* mpSibling = nullptr;
  VoMsgEntity* mpCild = nullptr;
  std::uint32_t mReserved = 0;  // for the kinds' own use
  std::uint32_t mEntityID;
  VoMsgEntity* mpLastChild = nullptr;  // so that appending never walks the children

 private:
  // What climbing to the root told, in the epoch in which it was asked (0: never). It is told to every entity on the
  // way, so a valid memo has valid ones above it, and a walk over a tree of any depth climbs each edge once.
  struct Ancestry {
    VoMsgEntity* root = nullptr;
    std::uint32_t epoch = 0;
    std::uint32_t level : 29;
    std::uint32_t hasProtection : 1;  // the two below are known as well
    std::uint32_t inSigned : 1;       // this entity or one around it is a multipart/signed
    std::uint32_t inEncrypted : 1;    // the same for multipart/encrypted
    Ancestry() : level(0), hasProtection(0), inSigned(0), inEncrypted(0) {}
  };

  const Ancestry& ancestry(bool withProtection);
  bool isKept(bool withProtection) const;
  void learnFrom(const VoMsgEntity* parent, bool withProtection);

  Ancestry mAncestry;
};
