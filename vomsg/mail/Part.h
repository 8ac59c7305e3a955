// A part of a message: a handle, as cheap to copy as two pointers, that is valid until the part is removed or its
// message goes. Parts are everything in the tree: multiparts, leaves, nested messages and the parts that carry them,
// winmail.dat and what is in it, texts and the attachments inside them.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "vomsg/embedded/VoMsgEmbededEntity.h"
#include "vomsg/entity/VoMsgMimeEntity.h"
#include "vomsg/mail/Error.h"
#include "vomsg/mail/Fields.h"
#include "vomsg/mail/Resources.h"
#include "vomsg/mail/SafeName.h"
#include "vomsg/mail/Stream.h"
#include "vomsg/mail/Tree.h"
#include "vomsg/tnef/VoMsgTnefEntity.h"

namespace vomsg {

class Parts;

// Bytes of the outermost source. A part that stands there itself has its header block in front: `headerSize` bytes of
// `size`. A part inside encoded content has the range of the part that carries it.
struct SourceRange {
  std::uint32_t offset = 0;
  std::uint32_t size = 0;
  std::uint32_t headerSize = 0;
  bool isCarrier = false;
};

class Part : public Fields<Part> {
 public:
  Part(VoMsgEntity* entity, inner::Tree* tree) : mEntity(entity), mTree(tree) {}

  VoMsgEntity* entity() const { return mEntity; }  // borrowed: the interface below this one
  std::uint32_t id() const { return mEntity->getEntityID(); }
  friend bool operator==(const Part& a, const Part& b) { return a.mEntity == b.mEntity; }
  friend bool operator!=(const Part& a, const Part& b) { return a.mEntity != b.mEntity; }

  // --- what it is
  std::string type() const {  // in lower case: "text/plain", also where nothing is declared
    const char* const type = mEntity->getContentType();
    return type != nullptr ? inner::lowered(type) : "text/plain";
  }
  bool isType(const char* main, const char* sub = nullptr) const;  // isType("image"), isType("text", "html")
  std::optional<std::string> name() const {                        // as the sender calls it: never use it as a path
    const char* const name = mEntity->getFileName("utf-8");
    if (name == nullptr) return std::nullopt;
    return inner::asUtf8(name);
  }
  std::string safeName() const { return safeFileName(name().value_or(""), type()); }  // see safeFileName
  std::optional<std::string> charset() const { return text(mEntity->getCharset()); }
  std::optional<std::string> encoding() const { return text(mEntity->getEncoding()); }
  std::uint32_t size() const { return mEntity->getContentSize(); }  // of the decoded content, counted, not produced
  std::optional<std::string> contentId() const;                     // without its angle brackets
  bool isMultipart() const { return mEntity->isMultipartEntity(); }
  bool isLeaf() const { return !mEntity->hasChildEntity() && !isMultipart(); }
  bool isMessage() const { return inner::isMessage(*mEntity) && mEntity->getParentEntity() != nullptr; }  // nested
  bool carriesMessage() const {  // its content is a message, which is its one child
    const VoMsgEntity* const child = mEntity->getChildEntity();
    return child != nullptr && inner::isMessage(*child);
  }
  bool isSignature() const {
    return isType("application", "pkcs7-signature") || isType("application", "x-pkcs7-signature") ||
           isType("application", "pgp-signature");
  }
  unsigned depth() const {  // parts above this one
    unsigned levels = 0;
    for (const VoMsgEntity* up = mEntity->getParentEntity(); up != nullptr; up = up->getParentEntity()) ++levels;
    return levels;
  }
  std::optional<Part> parent() const {
    VoMsgEntity* const up = mEntity->getParentEntity();
    return up != nullptr ? std::optional<Part>(Part(up, mTree)) : std::nullopt;
  }
  Parts parts() const;  // this part and everything below it
  // Where it stands; nothing for a part that was made anew.
  std::optional<SourceRange> sourceRange() const;

  // --- its content. Nothing is kept by the message but what stream() reads from.
  Result<std::string> bytes() const { return fetched(&VoMsgEntity::getContent); }        // decoded
  Result<std::string> rawBytes() const { return fetched(&VoMsgEntity::getRawContent); }  // as it stands
  Result<std::string> text() const;                                                      // decoded, in UTF-8
  Result<Stream> stream() const;  // decoded, piece by piece; valid until the content changes

  // --- edits
  // New content in the transfer encoding that suits it; type and name stay. A text takes the line ends of its message.
  Status setBytes(std::string_view bytes);
  // New text, from UTF-8; the declared charset stays when it can say it.
  Status setText(std::string_view utf8);
  // A text, plain or HTML, in this part's place: its type, name and disposition go. With a name the text is an
  // attachment of that name. In winmail.dat and in texts the attachment stays one, holds the text, and is called after
  // what it was: "virus.exe.txt". A message itself is not replaced, but its one leaf may be.
  Status replaceWithText(std::string_view utf8, const std::string& name = {}, const char* type = "text/plain");
  // Takes the part out of its message; the handle is dead then. kVoNotSupported: the message itself.
  Status remove();

 private:
  friend class Message;
  using Getter = const VoMsgResourceLocator* (VoMsgEntity::*)(int&, const VoMsgResourceLocator*);

  static std::optional<std::string> text(const char* value) {
    return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
  }
  Result<std::string> fetched(Getter getter) const;
  Status describeText(const std::string& name);
  Status replaceMultipart(std::string_view utf8, const std::string& name, const char* type);
  VoMsgEntity* carrier() const { return isMessage() ? mEntity->getParentEntity() : mEntity; }

  VoMsgEntity* mEntity;
  inner::Tree* mTree;
};

// A part and everything below it in document order, for a `for` loop, which may remove and replace parts, the one it
// stands on or others, through this layer. One loop at a time over one object.
class Parts {
 public:
  class iterator {
   public:
    explicit iterator(Parts* parts) : mParts(parts) {}
    Part operator*() const { return {mParts->mCursor.current, mParts->mTree}; }
    iterator& operator++() {
      mParts->step();
      return *this;
    }
    // The end is wherever the walk is over.
    bool operator!=(const iterator&) const { return mParts->mCursor.current != nullptr; }

   private:
    Parts* mParts;
  };

  Parts(VoMsgEntity* root, inner::Tree* tree) : mTree(tree) {
    mCursor.root = root;
    mTree->cursors.push_back(&mCursor);
  }
  ~Parts() {
    auto& all = mTree->cursors;
    all.erase(std::find(all.begin(), all.end(), &mCursor));
  }
  Parts(const Parts&) = delete;
  Parts& operator=(const Parts&) = delete;

  iterator begin() {
    mCursor.current = mCursor.root;
    mCursor.isMoved = false;
    return iterator(this);
  }
  iterator end() { return iterator(this); }

 private:
  void step() {
    if (mCursor.isMoved) {
      mCursor.current = mCursor.ahead;
      mCursor.isMoved = false;
    } else {
      mCursor.current = inner::stepFrom(mCursor.current, mCursor.root);
    }
  }

  inner::Tree* mTree;
  inner::Cursor mCursor;
};

inline Parts Part::parts() const { return {mEntity, mTree}; }

inline bool Part::isType(const char* main, const char* sub) const {
  const std::string own = type();
  const std::string_view wanted = main;
  if (own.size() <= wanted.size() || own[wanted.size()] != '/') return false;
  if (!inner::equalNoCase(std::string_view(own).substr(0, wanted.size()), wanted)) return false;
  return sub == nullptr || inner::equalNoCase(std::string_view(own).substr(wanted.size() + 1), sub);
}

inline std::optional<std::string> Part::contentId() const {
  const char* const raw = mEntity->getRawHeaderValue("Content-ID");
  if (raw == nullptr) return std::nullopt;
  std::string_view id = inner::trimmed(raw);
  if (!id.empty() && id.front() == '<') id.remove_prefix(1);
  if (!id.empty() && id.back() == '>') id.remove_suffix(1);
  return std::string(id);
}

inline std::optional<SourceRange> Part::sourceRange() const {
  // Outward, message by message: what lies unencoded in its carrier lies behind the carrier's header block.
  std::optional<SourceRange> range;
  for (VoMsgEntity* each = mEntity; each != nullptr; each = each->getParentEntity()) {
    const VoMsgRfc822Entity* const part = inner::mime(*each);
    if (part == nullptr) {  // of winmail.dat, or of a text: what carries it has a place
      range.reset();
      continue;
    }
    const VoMsgEntity* const up = each->getParentEntity();
    const bool isNested = up != nullptr && inner::isMessage(*each);
    if (each == mEntity || !range) {
      if (part->getHeaderSize() == 0 && part->getBodySize() == 0) return std::nullopt;
      range = SourceRange{part->getHeaderOffset(), part->getHeaderSize() + part->getBodySize(), part->getHeaderSize(),
                          each != mEntity};
      if (range->isCarrier) range->headerSize = 0;
    }
    if (!isNested) continue;
    const char* const name = up->getEncoding();
    const std::string encoding = name != nullptr ? inner::lowered(name) : "";
    bool isEncoded = false;
    for (const char* each_ : {"base64", "quoted-printable", "uuencode", "x-uuencode", "mac-binhex40"}) {
      isEncoded = isEncoded || encoding == each_;
    }
    const VoMsgRfc822Entity* const carrying = inner::mime(*up);
    if (isEncoded || carrying == nullptr) {
      range.reset();
    } else {
      range->offset += carrying->getBodyOffset();
    }
  }
  return range;
}

inline Result<std::string> Part::fetched(Getter getter) const {
  std::string bytes;
  int code = 0;
  inner::SinkResource<inner::StringSink> target(inner::StringSink{&bytes});
  const VoMsgResourceLocator* const got = (mEntity->*getter)(code, &target);
  if (got == nullptr || voFailed(code)) {
    if (static_cast<VoErrorCode>(code) == kVoNoContent && !isMultipart()) return bytes;  // there is nothing in it
    return {Error(voFailed(code) ? static_cast<VoErrorCode>(code) : kVoNoMemory), std::move(bytes)};
  }
  if (target.failed()) return Error(kVoNoMemory);
  return bytes;
}

inline Result<std::string> Part::text() const {
  int code = 0;
  std::string bytes;
  inner::SinkResource<inner::StringSink> target(inner::StringSink{&bytes});
  const VoMsgResourceLocator* const got = mEntity->getTextContent(code, &target, "utf-8");
  if (got == nullptr || voFailed(code)) {
    if (static_cast<VoErrorCode>(code) == kVoNoContent && !isMultipart()) return bytes;
    return {Error(voFailed(code) ? static_cast<VoErrorCode>(code) : kVoNoMemory), std::move(bytes)};
  }
  if (target.failed()) return Error(kVoNoMemory);
  return bytes;
}

inline Result<Stream> Part::stream() const {
  int code = 0;
  const VoMsgResourceLocator* const got = mEntity->getContent(code, nullptr);
  if (got == nullptr) return Error(voFailed(code) ? static_cast<VoErrorCode>(code) : kVoNoMemory);
  std::unique_ptr<VoMsgBufferedReader> reader(got->getInputStream(VoMsgResourceLocator::dataPart));
  if (!reader) return Error(kVoReadFailed);
  return Stream(std::move(reader));
}

namespace inner {

// Whether the bytes can stand in a message as they are.
inline bool isSevenBit(std::string_view bytes) {
  std::size_t lineStart = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const char c = bytes[i];
    if (c == '\0' || static_cast<unsigned char>(c) >= 0x80) return false;
    if (c == '\r' && (i + 1 == bytes.size() || bytes[i + 1] != '\n')) return false;
    if (c != '\r' && c != '\n' && i - lineStart >= 998) return false;
    if (c == '\n') lineStart = i + 1;
  }
  return true;
}

}  // namespace inner

inline Status Part::setBytes(std::string_view bytes) {
  if (bytes.size() >= inner::kSizeLimit) return Error(kVoBadArgument);
  // Null keeps the part's own encoding, which serves unless it changes nothing and the bytes are no plain text.
  const char* encoding = nullptr;
  if (inner::mime(*mEntity) != nullptr) {
    const std::string own = inner::lowered(this->encoding().value_or(""));
    if (own != "base64" && own != "quoted-printable" && own != "uuencode" && own != "x-uuencode" &&
        own != "mac-binhex40") {
      encoding = inner::isSevenBit(bytes) ? "7bit" : "base64";
    }
  }
  inner::View content(bytes);
  return Status::of(mTree->destroying(mEntity, true, [&] { return mEntity->replaceContent(&content, encoding); }));
}

inline Status Part::setText(std::string_view utf8) {
  if (utf8.size() >= inner::kSizeLimit) return Error(kVoBadArgument);
  inner::View content(utf8);
  return Status::of(mTree->destroying(
      mEntity, true, [&] { return mEntity->replaceTextContent(&content, "utf-8", kVoReplaceKeepCharset); }));
}

// What the former content was called does not fit the text in its place.
inline Status Part::describeText(const std::string& name) {
  for (const char* field : {"Content-Disposition", "Content-ID", "Content-Description", "Content-Location",
                            "Content-MD5", "Content-Duration"}) {
    mEntity->removeHeader(field);
  }
  const VoMsgHeaderField* const type = mEntity->getHeader("Content-Type");
  std::vector<std::string> parameters;
  for (unsigned i = 0; type != nullptr && i < type->countParameter(); ++i) {
    const char* const parameter = type->getParameterNameAt(i);
    std::string_view plain = parameter != nullptr ? parameter : "charset";
    plain = plain.substr(0, plain.find('*'));  // a piece of a longer one
    if (!inner::equalNoCase(plain, "charset")) parameters.emplace_back(plain);
  }
  for (const std::string& each : parameters) mEntity->removeHeaderParameter("Content-Type", each.c_str());
  if (name.empty()) return {};
  const VoErrorCode code = mEntity->setHeaderValue("Content-Disposition", "attachment", "us-ascii", "us-ascii");
  return voFailed(code) ? Status::of(code) : Status::of(mEntity->setFileName(name.c_str()));
}

inline Status Part::replaceMultipart(std::string_view utf8, const std::string& name, const char* type) {
  VoMsgEntity* const target = carrier();
  VoMsgEntity* const parent = target->getParentEntity();
  if (parent == nullptr) return Error(kVoNotSupported);
  const unsigned index = target->getIndex();
  auto fresh = std::make_unique<VoMsgMimeEntity>();
  inner::View content(utf8);
  VoErrorCode code = fresh->setTextContent(&content, type, "utf-8");
  Part made(fresh.get(), mTree);
  if (!voFailed(code)) code = made.describeText(name).code();
  if (!voFailed(code)) code = parent->insertChildEntityAt(fresh.get(), index);
  if (voFailed(code)) return Error(code);
  (void)fresh.release();
  code = mTree->destroying(target, false, [&] { return parent->removeChildEntityAt(index + 1); });
  if (voFailed(code)) {
    parent->removeChildEntityAt(index);
    return Error(code);
  }
  mEntity = made.mEntity;
  return {};
}

inline Status Part::replaceWithText(std::string_view utf8, const std::string& name, const char* type) {
  if (utf8.size() >= inner::kSizeLimit || type == nullptr) return Error(kVoBadArgument);
  if (inner::mime(*mEntity) == nullptr && !isMessage()) {
    const std::string former = this->name().value_or("");
    const std::string called = !name.empty() ? name : former.empty() ? "notice.txt" : former + ".txt";
    inner::View content(utf8, called.c_str());
    return Status::of(mTree->destroying(mEntity, true, [&] {
      return mEntity->isContentType("text", "plain") && former.empty()
                 ? mEntity->replaceTextContent(&content, "utf-8", kVoReplaceKeepCharset)
                 : mEntity->setContent(&content, type, nullptr);
    }));
  }
  if (isMultipart() || isMessage()) return replaceMultipart(utf8, name, type);
  inner::View content(utf8);
  const VoErrorCode code =
      mTree->destroying(mEntity, true, [&] { return mEntity->setTextContent(&content, type, "utf-8"); });
  return voFailed(code) ? Status::of(code) : describeText(name);
}

inline Status Part::remove() {
  VoMsgEntity* const target = carrier();
  VoMsgEntity* const parent = target->getParentEntity();
  if (parent == nullptr) return Error(kVoNotSupported);
  const VoErrorCode code =
      mTree->destroying(target, false, [&] { return parent->removeChildEntityAt(target->getIndex()); });
  if (!voFailed(code)) mEntity = nullptr;
  return Status::of(code);
}

}  // namespace vomsg
