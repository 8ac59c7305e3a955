// A whole message: read, walk, take every content, write back, edit, read again, edit at random. What must hold for any
// bytes: an unedited message without marks comes out as it was; one that is written anew stays as it is from then on;
// bodies lie inside their resource, parts inside their multipart, in order and apart from one another.
#include "fuzz/FuzzSupport.h"
#include "vomsg/entity/VoMsgMimeEntity.h"
#include "vomsg/entity/VoMsgRfc822Message.h"
#include "vomsg/header/VoMsgHeaderField.h"

using namespace vomsg::fuzz;

namespace {

void lookAtHeader(VoMsgRfc822Entity& entity) {
  for (unsigned i = 0; i < entity.countHeaders(); ++i) {
    VoMsgHeaderField* const field = entity.getHeaderAt(i);
    field->getFieldValue("utf-8");
    const char* charset = nullptr;
    field->getFieldValueEx(charset);
    for (unsigned p = 0; p < field->countParameter(); ++p)
      field->getParameterValue(field->getParameterNameAt(p), "utf-8");
  }
  for (const char* name : {"From", "To", "Cc", "BCC"}) {
    for (unsigned i = 0; i < entity.countUserAddress(name); ++i) entity.getUserAddressAt(name, i);
  }
}

void checkRanges(const VoMsgRfc822Entity& entity) {
  const std::uint64_t bodyEnd = std::uint64_t{entity.getBodyOffset()} + entity.getBodySize();
  require(std::uint64_t{entity.getHeaderOffset()} + entity.getHeaderSize() <= entity.getBodyOffset(),
          "the body lies behind the header");
  std::uint64_t at = entity.getBodyOffset();
  for (VoMsgEntity* child = entity.getChildEntity(); child != nullptr; child = child->getNextSiblingEntity()) {
    if (child->getEntityTypeID() != kVoEntityMime &&
        child->getEntityTypeID() != (kVoEntityMime | kVoEntityIsContainer)) {
      continue;  // read from a resource of its own
    }
    const auto* part = dynamic_cast<const VoMsgRfc822Entity*>(child);
    require(part->getHeaderOffset() >= at, "parts are in order and apart");
    at = std::uint64_t{part->getBodyOffset()} + part->getBodySize();
    require(at <= bodyEnd, "a part lies inside its multipart");
  }
}

// Whether a header block of the tree is to be written anew.
bool walk(VoMsgRfc822Message& message) {
  bool marked = false;
  VoMsgEntityIterator all(&message);
  for (VoMsgEntity* entity = all.first(); entity != nullptr; entity = all.next()) {
    int code = 0;
    entity->getFileName("utf-8");
    entity->isSignedPart();
    entity->isEncryptedPart();
    entity->getContentSize();
    entity->getContent(code, nullptr);
    entity->getTextContent(code, nullptr, "utf-8");
    entity->getRawContent(code, nullptr);
    auto* const mime = dynamic_cast<VoMsgRfc822Entity*>(entity);
    if (mime == nullptr) continue;
    lookAtHeader(*mime);
    checkRanges(*mime);
    marked = marked || mime->getEntityHeader()->getMark() != vomsg::detail::HeaderMark::none;
  }
  return marked;
}

// Edits that the input itself chooses: content, parts that come and go, the message attached to itself.
void edit(VoMsgRfc822Message& message, std::string_view choices) {
  for (const char c : choices) {
    const auto choice = static_cast<unsigned char>(c);
    std::vector<VoMsgRfc822Entity*> entities;
    VoMsgEntityIterator all(&message);
    for (VoMsgEntity* entity = all.first(); entity != nullptr && entities.size() < 100; entity = all.next())
      if (auto* const mime = dynamic_cast<VoMsgRfc822Entity*>(entity)) entities.push_back(mime);
    VoMsgRfc822Entity& entity = *entities[choice / 4 % entities.size()];
    const unsigned place = choice % 7;
    static constexpr char kContent[] = "--b\r\n\0\n text =\r";
    const VoMsgMemoryResource content(const_cast<char*>(kContent), sizeof kContent, nullptr, nullptr);
    auto* const resource = const_cast<VoMsgMemoryResource*>(&content);
    static constexpr const char* kEncodings[] = {"base64", "quoted-printable", "7bit", "x-uuencode", "mac-binhex40"};
    if (choice % 4 == 0) {
      entity.setContent(resource, nullptr, kEncodings[choice % 5]);
    } else if (choice % 4 == 1) {
      auto part = std::make_unique<VoMsgMimeEntity>();
      part->setContent(resource, "text/plain", kEncodings[choice % 5]);
      if (!voFailed(entity.insertChildEntityAt(part.get(), place))) part.release();
    } else if (choice % 4 == 2) {
      entity.removeChildEntityAt(place);
    } else if (entities.size() < 20) {
      std::unique_ptr<VoMsgMailMessage> copy(message.split());
      if (!voFailed(entity.appendChildEntity(copy.get()))) copy.release();
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  VoMsgRfc822Message message;
  message.readFrom(inPlace({reinterpret_cast<const char*>(data), size}));
  const bool marked = walk(message);
  require(!message.isModified(), "reading changes nothing");
  const std::string first = writeOut(message);
  const std::string_view source(reinterpret_cast<const char*>(data), size);
  require(marked || first == source, "an unedited message is written as it was");
  const std::unique_ptr<VoMsgMailMessage> copy(message.split());
  require(copy != nullptr && writeOut(*copy) == first, "a copy is written like its original");

  VoMsgRfc822Message again;
  again.readFrom(copyOf(first));
  if (marked) require(writeOut(again) == first, "what was written anew stays as it is");

  // One edit must survive the way out and back in.
  if (!voFailed(again.setHeaderValue("X-Fuzz", "seen", "us-ascii", "us-ascii"))) {
    const std::string edited = writeOut(again);
    VoMsgRfc822Message third;
    third.readFrom(copyOf(edited));
    const char* value = third.getHeaderValue("X-Fuzz", "us-ascii");
    require(value != nullptr && std::string_view(value) == "seen", "an edited field reads back");
  }

  edit(message, source.substr(size - std::min<std::size_t>(size, 4)));
  const std::string edited = writeOut(message);
  VoMsgRfc822Message fourth;
  fourth.readFrom(copyOf(edited));
  walk(fourth);
  return 0;
}
