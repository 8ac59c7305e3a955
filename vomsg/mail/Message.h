// A message, read from wherever it is and written to wherever it goes. What nobody changes comes out byte for byte.
//
//   vomsg::Result<vomsg::Message> message = vomsg::Message::open("in.eml");
//   if (!message) return complain(message.error().text());
//   for (vomsg::Part part : message->attachments()) std::cout << part.safeName() << '\n';
//   message->setSubject("Grüße");
//   message->write("out.eml");
#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "vomsg/entity/VoMsgRfc822Message.h"
#include "vomsg/foundation/VoMsgFileResource.h"
#include "vomsg/mail/Error.h"
#include "vomsg/mail/Fields.h"
#include "vomsg/mail/MainTexts.h"
#include "vomsg/mail/Part.h"
#include "vomsg/mail/Resources.h"
#include "vomsg/tnef/VoMsgTnefMessage.h"

namespace vomsg {

// A text that is added to a message; see docs/editing.md for where it goes.
struct Disclaimer {
  std::string text;                                          // UTF-8
  VoMsgDisclaimerPosition_e position = kVoDisclaimerBottom;  // or kVoDisclaimerTop
  int option = kVoDisclaimerBody | kVoDisclaimerHtml | kVoDisclaimerWrapOnRefusal | kVoDisclaimerTnefOk;
};

class Message : public Fields<Message> {
 public:
  // An empty message, to be composed.
  Message() : Message(std::make_unique<VoMsgRfc822Message>()) {}
  Message(Message&&) noexcept = default;
  Message& operator=(Message&&) noexcept = default;

  // Each reads a whole message; a bare TNEF stream is one too. A message that the library cannot take to its end is a
  // failure, with what was read of it as salvaged(): its unedited write still gives the source back.
  static Result<Message> open(const std::string& path);
  // A regular file is read in place, from where the descriptor stands; anything else is copied to its end first. The
  // descriptor stays the caller's and does not move, and may be closed.
  static Result<Message> read(int fd);
  static Result<Message> read(std::istream& in);                              // copied
  static Result<Message> parse(std::string_view bytes);                       // copied
  static Result<Message> from(std::unique_ptr<VoMsgResourceLocator> source);  // any other resource

  // A regular file there is replaced in place; its own source is refused with kVoBadArgument.
  Status write(const std::string& path) const;
  Status write(int fd) const;
  Status write(std::ostream& out) const;
  Result<std::string> toString() const;
  Result<Message> copy() const;  // independent of this one

  VoMsgMailMessage* message() const { return mTree->message.get(); }  // borrowed: the interface below this one
  VoMsgEntity* entity() const { return message(); }
  inner::Tree* tree() const { return mTree.get(); }  // for the files of this layer
  bool isTnef() const { return inner::isTnef(*message()); }
  bool isModified() const { return message()->isModified(); }

  // --- parts
  Part root() const { return {message(), mTree.get()}; }
  Parts parts() const { return {message(), mTree.get()}; }  // all of them, the message itself first
  std::optional<Part> textPart() const { return part(inner::findMainTexts(message()).plain); }
  std::optional<Part> htmlPart() const { return part(inner::findMainTexts(message()).html); }
  // The main texts in UTF-8; empty where there is none. Attachments that stand in a text are left out.
  Result<std::string> text() const { return textOf(inner::findMainTexts(message()).plain); }
  Result<std::string> html() const { return textOf(inner::findMainTexts(message()).html); }
  // The leaves that are neither the main texts nor images that the HTML names nor signatures, those in winmail.dat and
  // in texts too. A nested message is one attachment.
  std::vector<Part> attachments() const { return inner::findAttachments(message(), mTree.get()); }
  std::optional<Part> imageByCid(std::string_view cid) const;  // without "cid:" and brackets

  // --- fields
  std::string subject() const { return header("Subject").value_or(""); }
  std::vector<Address> from() const { return addresses("From"); }
  std::vector<Address> to() const { return addresses("To"); }
  std::vector<Address> cc() const { return addresses("Cc"); }
  std::vector<Address> bcc() const { return addresses("Bcc"); }
  std::vector<Address> replyTo() const { return addresses("Reply-To"); }
  std::optional<Date> date() const {
    const char* const value = message()->getRawHeaderValue("Date");
    return value != nullptr ? Date::parse(value) : std::nullopt;
  }
  std::string messageId() const {  // without its angle brackets
    const std::vector<std::string> all = inner::identifiers(message()->getRawHeaderValue("Message-ID"));
    return all.empty() ? std::string() : all.front();
  }
  std::vector<std::string> references() const { return inner::identifiers(message()->getRawHeaderValue("References")); }

  Status setSubject(const std::string& text) { return setHeader("Subject", text); }
  Status setFrom(const std::vector<Address>& list) { return setAddresses("From", list); }
  Status setTo(const std::vector<Address>& list) { return setAddresses("To", list); }
  Status setCc(const std::vector<Address>& list) { return setAddresses("Cc", list); }
  Status setBcc(const std::vector<Address>& list) { return setAddresses("Bcc", list); }
  Status setReplyTo(const std::vector<Address>& list) { return setAddresses("Reply-To", list); }
  Status setDate(const Date& date) { return setHeader("Date", date.rfc5322()); }
  Status setMessageId(const std::string& id) { return setHeader("Message-ID", "<" + id + ">"); }
  Status setReferences(const std::vector<std::string>& ids) {
    std::string all;
    for (const std::string& id : ids) all += (all.empty() ? "<" : " <") + id + ">";
    return setHeader("References", all);
  }

  // --- edits
  // kVoDisclaimerRefused and the other codes of VoMsgMailMessage::insertDisclaimerMessage; then nothing has changed.
  Status addDisclaimer(const Disclaimer& disclaimer);
  // Takes the signatures off that edits have broken: call it last.
  Status stripSignatures() {
    return Status::of(mTree->destroying(message(), true, [this] { return message()->stripSignaturePart(); }));
  }

 private:
  explicit Message(std::unique_ptr<VoMsgMailMessage> message)
      : mTree(std::make_unique<inner::Tree>(std::move(message))) {}

  static Result<Message> readInto(bool isTnef, std::unique_ptr<VoMsgResourceLocator> source);
  static bool isTnefStream(const char* start, std::size_t size) {
    return size >= 4 && std::string_view(start, 4) == "\x78\x9F\x3E\x22";
  }
  std::optional<Part> part(VoMsgEntity* entity) const {
    return entity != nullptr ? std::optional<Part>(Part(entity, mTree.get())) : std::nullopt;
  }
  Result<std::string> textOf(VoMsgEntity* entity) const {
    return entity != nullptr ? inner::textOf(entity, mTree.get()) : Result<std::string>(std::string());
  }
  bool isOwnSource(const struct stat& target) const {
    return mHasSource && S_ISREG(target.st_mode) && target.st_dev == mDevice && target.st_ino == mInode;
  }
  void rememberSource(const struct stat& source) {
    mHasSource = S_ISREG(source.st_mode);
    mDevice = source.st_dev;
    mInode = source.st_ino;
  }
  template <class Sink>
  Status writeTo(Sink sink) const {
    inner::SinkResource<Sink> target(sink);
    const VoErrorCode code = message()->writeTo(&target);
    return Status::of(voFailed(code) ? code : target.failed() ? kVoWriteFailed : kVoSuccess);
  }

  std::unique_ptr<inner::Tree> mTree;  // stays where it is, so that parts survive a move of the message
  bool mHasSource = false;             // a regular file: these two tell which
  dev_t mDevice = 0;
  ino_t mInode = 0;
};

inline Result<Message> Message::readInto(bool isTnef, std::unique_ptr<VoMsgResourceLocator> source) {
  std::unique_ptr<VoMsgMailMessage> empty;
  if (isTnef) {
    empty = std::make_unique<VoMsgTnefMessage>();
  } else {
    empty = std::make_unique<VoMsgRfc822Message>();
  }
  Message message(std::move(empty));
  const VoErrorCode code = message.message()->readFrom(source.release());
  if (!voFailed(code)) return Result<Message>(std::move(message));
  // The parser stops at the block it cannot take, which is the last thing in the tree.
  std::optional<std::uint32_t> offset;
  if (code == kVoMalformed) {
    VoMsgEntity* last = message.message();
    while (VoMsgEntity* child = last->getChildEntity()) {
      while (VoMsgEntity* const sibling = child->getNextSiblingEntity()) child = sibling;
      last = child;
    }
    const std::optional<SourceRange> range = Part(last, message.mTree.get()).sourceRange();
    if (range) offset = range->offset;
  }
  return {Error(code, offset), std::move(message)};
}

inline Result<Message> Message::open(const std::string& path) {
  int fd;
  do {
    fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
  } while (fd < 0 && errno == EINTR);
  const inner::Descriptor file(fd);
  struct stat status;
  if (fd < 0 || ::fstat(fd, &status) != 0 || S_ISDIR(status.st_mode)) return Error(kVoReadFailed);
  if (!S_ISREG(status.st_mode)) return read(fd);
  char start[4];
  const std::size_t size = inner::readAt(fd, start, sizeof start, 0);
  Result<Message> message =
      readInto(isTnefStream(start, size), std::make_unique<VoMsgFileResource>(path.c_str(), nullptr, nullptr));
  if (Message* const what = message.salvaged()) what->rememberSource(status);
  return message;
}

inline Result<Message> Message::read(int fd) {
  struct stat status;
  if (::fstat(fd, &status) != 0) return Error(kVoReadFailed);
  const off_t at = S_ISREG(status.st_mode) ? ::lseek(fd, 0, SEEK_CUR) : -1;
  if (at < 0) {
    std::unique_ptr<VoMsgResourceLocator> source;
    const Status done = inner::copyAll(fd, source);
    return done ? from(std::move(source)) : Result<Message>(done.error());
  }
  const int own = ::fcntl(fd, F_DUPFD_CLOEXEC, 3);
  if (own < 0) return Error(kVoReadFailed);
  const inner::SharedDescriptor file = std::make_shared<const inner::Descriptor>(own);
  const auto rest = static_cast<std::uint64_t>(status.st_size > at ? status.st_size - at : 0);
  if (rest >= inner::kSizeLimit) return Error(kVoReadFailed);
  Result<Message> message = from(
      std::make_unique<inner::RangeResource>(file, static_cast<std::uint64_t>(at), static_cast<std::uint32_t>(rest)));
  if (Message* const what = message.salvaged()) what->rememberSource(status);
  return message;
}

inline Result<Message> Message::read(std::istream& in) {
  std::unique_ptr<VoMsgResourceLocator> source;
  const Status done = inner::copyAll(in, source);
  return done ? from(std::move(source)) : Result<Message>(done.error());
}

inline Result<Message> Message::parse(std::string_view bytes) {
  if (bytes.size() >= inner::kSizeLimit) return Error(kVoReadFailed);
  std::unique_ptr<VoMsgResourceLocator> source = inner::copied(bytes);
  if (!source) return Error(kVoNoMemory);
  return readInto(isTnefStream(bytes.data(), bytes.size()), std::move(source));
}

inline Result<Message> Message::from(std::unique_ptr<VoMsgResourceLocator> source) {
  if (!source) return Error(kVoBadArgument);
  char start[4];
  std::size_t size = 0;
  if (const std::unique_ptr<VoMsgBufferedReader> reader{source->getInputStream(VoMsgResourceLocator::dataPart)}) {
    size = reader->read(start, sizeof start);
  }
  return readInto(isTnefStream(start, size), std::move(source));
}

inline Status Message::write(const std::string& path) const {
  struct stat status;
  if (::stat(path.c_str(), &status) == 0 && isOwnSource(status)) return Error(kVoBadArgument);
  VoMsgFileResource target(path.c_str(), nullptr, nullptr);
  return Status::of(message()->writeTo(&target));
}
inline Status Message::write(int fd) const {
  struct stat status;
  if (::fstat(fd, &status) != 0) return Error(kVoWriteFailed);
  if (isOwnSource(status)) return Error(kVoBadArgument);
  return writeTo(inner::DescriptorSink{fd});
}
inline Status Message::write(std::ostream& out) const { return writeTo(inner::StreamSink{&out}); }
inline Result<std::string> Message::toString() const {
  std::string bytes;
  const Status done = writeTo(inner::StringSink{&bytes});
  return done ? Result<std::string>(std::move(bytes)) : Result<std::string>(done.error());
}

inline Result<Message> Message::copy() const {
  std::unique_ptr<VoMsgMailMessage> twin(message()->split());
  if (!twin) return Error(kVoNoMemory);
  Message copied(std::move(twin));
  copied.mHasSource = mHasSource;
  copied.mDevice = mDevice;
  copied.mInode = mInode;
  return Result<Message>(std::move(copied));
}

inline std::optional<Part> Message::imageByCid(std::string_view cid) const {
  VoMsgEntity* const root = message();
  for (VoMsgEntity* each = root; each != nullptr;) {
    const Part candidate(each, mTree.get());
    if (candidate.isLeaf() && candidate.contentId().value_or("") == cid && !cid.empty()) return candidate;
    each = inner::stepFrom(each, root, !(inner::isMessage(*each) && each != root));
  }
  return std::nullopt;
}

inline Status Message::addDisclaimer(const Disclaimer& disclaimer) {
  std::unique_ptr<VoMsgResourceLocator> text = inner::copied(disclaimer.text);
  if (!text) return Error(kVoNoMemory);
  const VoErrorCode code = mTree->destroying(message(), true, [&] {
    return message()->insertDisclaimerMessage(disclaimer.position, text.get(), disclaimer.option, "utf-8", nullptr);
  });
  if (!voFailed(code)) (void)text.release();
  return Status::of(code);
}

}  // namespace vomsg
