// Disclaimers and signature stripping on any message. A refused one leaves the message as it was; after one that
// succeeded everything that is no text is there as before, the message can be read again, and a copy is like it.
#include "fuzz/FuzzSupport.h"
#include "vomsg/entity/VoMsgRfc822Message.h"

using namespace vomsg::fuzz;

namespace {

// The decoded contents of the leaves that a disclaimer has no business with. What declares no type, or nothing that can
// be understood, is a text.
std::vector<std::string> attachmentsOf(VoMsgEntity& root) {
  std::vector<std::string> contents;
  for (VoMsgEntity* const entity : entitiesOf(root)) {
    if (entity->hasChildEntity() || entity->isMultipartEntity()) continue;
    const char* const type = entity->getContentType();
    if (!entity->isContentType("image", nullptr) && !entity->isContentType("application", nullptr)) continue;
    int code = 0;
    contents.push_back(std::string(type) + "\n" + bytesOf(entity->getContent(code, nullptr)));
  }
  return contents;
}

bool holdsAll(std::vector<std::string> all, std::vector<std::string> wanted) {
  std::sort(all.begin(), all.end());
  std::sort(wanted.begin(), wanted.end());
  return std::includes(all.begin(), all.end(), wanted.begin(), wanted.end());
}

constexpr const char* kCharsets[] = {"utf-8", "us-ascii", "iso-8859-1", "iso-2022-jp", "utf-16", "no-such", nullptr};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 5) return 0;
  Choices choices(data, size);
  const int option = static_cast<int>(choices.number(256));
  const auto position = choices.number(2) == 0 ? kVoDisclaimerTop : kVoDisclaimerBottom;
  const char* const charset = kCharsets[choices.number(std::size(kCharsets))];
  const char* const prefer = kCharsets[choices.number(std::size(kCharsets))];
  const std::string words = choices.text();
  const std::string_view source = choices.rest();

  VoMsgRfc822Message message;
  const VoErrorCode read = message.readFrom(inPlace(source));
  const std::string before = writeOut(message);
  const std::vector<std::string> attachments = attachmentsOf(message);

  std::unique_ptr<VoMsgResourceLocator> disclaimer(copyOf(words));
  srand48(1);
  const VoErrorCode code = message.insertDisclaimerMessage(position, disclaimer.get(), option, charset, prefer);
  if (voFailed(code)) {
    require(writeOut(message) == before, "a refused disclaimer changes nothing");
  } else {
    static_cast<void>(disclaimer.release());
    require(holdsAll(attachmentsOf(message), attachments), "the tree keeps every attachment");
  }
  const std::string disclaimed = writeOut(message);
  require(writeOut(message) == disclaimed, "it is written the same again");
  if (!voFailed(code) && !voFailed(read)) {
    VoMsgRfc822Message again;
    const VoErrorCode reread = again.readFrom(inPlace(disclaimed));
    const bool wraps = (option & kVoDisclaimerModeMask) >= kVoDisclaimerWrap;
    require(!voFailed(reread) || wraps, "a disclaimed message can be read");
  }

  const bool isStripped = !voFailed(message.stripSignaturePart());
  const std::string stripped = writeOut(message);
  if (!isStripped) require(stripped == disclaimed, "stripping that failed changes nothing");
  if (voFailed(code)) require(stripped == before, "what was not edited keeps its signature");
  const std::unique_ptr<VoMsgMailMessage> copy(message.split());
  require(copy && writeOut(*copy) == stripped, "a copy is written like its original");
  return 0;
}
