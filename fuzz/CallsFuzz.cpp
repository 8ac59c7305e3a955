// Sequences of public calls, on one message in three places side by side: in memory, in a file, and behind a reader
// that shows a few bytes at a time. What must hold after each call: all say the same; writing twice gives the same
// bytes; a copy is written like its original; a refused call changes nothing; what was written can be read.
#include <unistd.h>

#include <fstream>

#include "fuzz/FuzzSupport.h"
#include "tests/support/WindowStreams.h"
#include "vomsg/entity/VoMsgMimeEntity.h"
#include "vomsg/entity/VoMsgRfc822Message.h"
#include "vomsg/foundation/VoMsgFileResource.h"

using namespace vomsg::fuzz;

namespace {

// Shows its bytes through a small window.
class WindowResource : public VoMsgMemoryResource {
 public:
  WindowResource(std::string_view bytes, std::size_t window)
      : VoMsgMemoryResource(const_cast<char*>(bytes.data()), static_cast<unsigned>(bytes.size()), 0, nullptr, nullptr),
        mBytes(bytes),
        mWindow(window) {}
  VoMsgBufferedReader* getInputStream(VoMsgResourceDataType type) const override {
    return type == dataPart ? new vomsg::test::WindowReader(mBytes, mWindow) : nullptr;
  }

 private:
  std::string_view mBytes;
  std::size_t mWindow;
};

class TemporaryFile {
 public:
  explicit TemporaryFile(std::string_view bytes) {
    char name[] = "/tmp/vomsg-fuzz-XXXXXX";
    const int file = mkstemp(name);
    require(file >= 0 && write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()), "a file");
    close(file);
    mPath = name;
  }
  ~TemporaryFile() { unlink(mPath.c_str()); }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  const std::string& path() const { return mPath; }

 private:
  std::string mPath;
};

std::string text(const char* value) { return value ? std::string("'") + value + "'" : "null"; }
std::string number(std::uint64_t value) { return std::to_string(value) + ' '; }

VoMsgResourceLocator* resource(const std::string& bytes) {
  return new VoMsgMemoryResource(const_cast<char*>(bytes.data()), static_cast<unsigned>(bytes.size()), 1, "n.txt",
                                 "utf-8");
}

constexpr const char* kEncodings[] = {"base64", "quoted-printable", "7bit", "8bit", "x-uuencode", nullptr, "nonsense"};
constexpr const char* kNames[] = {"Subject", "To", "Content-Type", "Content-Transfer-Encoding", "X-Other", "From"};
constexpr const char* kCharsets[] = {"utf-8", "us-ascii", "iso-8859-1", "iso-2022-jp", "no-such", nullptr};

// What one call said. `changes` tells whether it was one that edits; `failed` whether it was refused.
struct Said {
  std::string words;
  bool changes = false, failed = false;
  void code(VoErrorCode code) {
    words += number(code);
    changes = true;
    failed = voFailed(code);
  }
};

void ask(VoMsgEntity& entity, Choices& choices, Said& said) {
  const char* const name = kNames[choices.number(std::size(kNames))];
  const char* const charset = kCharsets[choices.number(std::size(kCharsets))];
  int code = 0;
  switch (choices.number(10)) {
    case 0:
      said.words += text(entity.getHeaderValue(name, charset));
      break;
    case 1:
      said.words += text(entity.getHeaderParameterValue(name, "boundary", charset));
      break;
    case 2:
      said.words += text(entity.getFileName(charset)) + text(entity.getContentType());
      break;
    case 3:
      said.words += text(entity.getCharset()) + text(entity.getEncoding());
      break;
    case 4:
      said.words += number(entity.getContentSize()) + number(entity.countHeaders());
      break;
    case 5:
      said.words += bytesOf(entity.getContent(code, nullptr)) + number(static_cast<unsigned>(code));
      break;
    case 6:
      said.words += bytesOf(entity.getTextContent(code, nullptr, charset)) + number(static_cast<unsigned>(code));
      break;
    case 7:
      said.words += bytesOf(entity.getRawContent(code, nullptr)) + number(static_cast<unsigned>(code));
      break;
    case 8:
      said.words += number(entity.isSignedPart()) + number(entity.isEncryptedPart());
      break;
    default:
      said.words += number(entity.countUserAddress(name)) + number(entity.countChildEntity()) +
                    number(entity.getNestingLevel()) + number(entity.getIndex()) + number(entity.isModified());
  }
}

void change(VoMsgEntity& entity, Choices& choices, Said& said) {
  const char* const name = kNames[choices.number(std::size(kNames))];
  const char* const charset = kCharsets[choices.number(std::size(kCharsets))];
  const char* const encoding = kEncodings[choices.number(std::size(kEncodings))];
  const unsigned place = choices.number(4);
  const unsigned kind = choices.number(16);
  const std::string value = choices.text();
  const std::unique_ptr<VoMsgResourceLocator> content(resource(value));
  switch (kind) {
    case 0:
      return said.code(entity.setHeaderValue(name, value.c_str(), "utf-8", charset));
    case 1:
      return said.code(entity.setHeaderParameterValue(name, "name", value.c_str(), "utf-8", charset));
    case 2:
      return said.code(entity.removeHeader(name));
    case 3:
      return said.code(entity.removeHeaderAt(place));
    case 4:
      return said.code(entity.removeHeaderParameter(name, "boundary"));
    case 5:
      return said.code(entity.appendUserAddress(name, value.c_str()));
    case 6:
      return said.code(entity.removeUserAddressAt(name, place));
    case 7:
      return said.code(entity.setFileName(value.c_str()));
    case 8:
      return said.code(entity.setContentType(value.c_str()));
    case 9:
      return said.code(entity.setContent(content.get(), "text/plain", encoding));
    case 10:
      return said.code(entity.setTextContent(content.get(), "text/plain", charset));
    case 11:
      return said.code(entity.replaceContent(content.get(), encoding));
    case 12:
      return said.code(entity.replaceTextContent(content.get(), charset, kVoReplaceKeepCharset));
    case 13:
      return said.code(entity.removeChildEntityAt(place));
    case 14:
      return said.code(entity.setAttachment(content.get()));
    default: {
      auto part = std::make_unique<VoMsgMimeEntity>();
      part->setContent(content.get(), "text/plain", encoding);
      said.code(place == 3 ? entity.appendChildEntity(part.get()) : entity.insertChildEntityAt(part.get(), place));
      if (!said.failed) part.release();
    }
  }
}

Said call(VoMsgMailMessage& message, Choices& choices) {
  Said said;
  const unsigned kind = choices.number(8);
  const std::vector<VoMsgEntity*> entities = entitiesOf(message);
  VoMsgEntity& entity = *entities[choices.number(entities.size())];
  if (kind < 4)
    ask(entity, choices, said);
  else if (kind < 7)
    change(entity, choices, said);
  else
    said.code(message.stripSignaturePart());
  return said;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const std::size_t window = 1 + data[0] % 64;
  const std::size_t callBytes = std::min<std::size_t>(data[1] % 64, size - 2);
  const std::string_view source(reinterpret_cast<const char*>(data) + 2 + callBytes, size - 2 - callBytes);
  const TemporaryFile file(source);
  constexpr std::size_t kPlaces = 3;
  VoMsgRfc822Message messages[kPlaces];
  VoMsgResourceLocator* const sources[kPlaces] = {inPlace(source),
                                                  new VoMsgFileResource(file.path().c_str(), nullptr, nullptr),
                                                  new WindowResource(source, window)};
  const VoErrorCode code = messages[0].readFrom(sources[0]);
  for (std::size_t i = 1; i < kPlaces; ++i)
    require(messages[i].readFrom(sources[i]) == code, "a message is read alike wherever it lies");

  std::string before = writeOut(messages[0]);
  Choices choices(data + 2, callBytes);
  for (std::size_t calls = 0; !choices.empty() && calls < 12; ++calls) {
    Said said[kPlaces];
    Choices next = choices;
    for (std::size_t i = 0; i < kPlaces; ++i) {
      next = choices;
      srand48(static_cast<long>(calls));  // boundaries are drawn
      said[i] = call(messages[i], next);
      require(said[i].words == said[0].words, "a call says the same wherever the message lies");
    }
    choices = next;
    if (!said[0].changes) continue;
    const std::string after = writeOut(messages[0]);
    if (said[0].failed) require(after == before, "a refused call changes nothing");
    for (std::size_t i = 0; i < kPlaces; ++i)
      require(writeOut(messages[i]) == after, "a message is written alike, wherever it lies and however often");
    const std::unique_ptr<VoMsgMailMessage> copy(messages[calls % kPlaces].split());
    require(copy && writeOut(*copy) == after, "a copy is written like its original");
    before = after;
  }
  VoMsgRfc822Message again;
  again.readFrom(inPlace(before));
  writeOut(again);
  return 0;
}
