// Any bytes as the body of a text: the blocks found in it are the same whether the body stands plain or in base64; the
// unedited message comes out as it was; new content for a block leaves everything around it where it is.
#include "fuzz/FuzzSupport.h"
#include "vomsg/encoding/VoBase64.h"
#include "vomsg/entity/VoMsgRfc822Message.h"
#include "vomsg/foundation/VoMsgMemoryWriter.h"

using namespace vomsg::fuzz;

namespace {

std::string base64(std::string_view bytes) {
  const VoMsgMemoryResource source(const_cast<char*>(bytes.data()), static_cast<unsigned>(bytes.size()), nullptr,
                                   nullptr);
  VoMsgMemoryWriter writer;
  require(!voFailed(voEncodeBase64(&writer, &source)) && writer.flush(), "base64 can be written");
  return {writer.getData() ? writer.getData() : "", writer.getLength()};
}

// Kind, name and content of everything below the root.
std::string account(VoMsgEntity& root) {
  std::string lines;
  for (VoMsgEntity* const entity : entitiesOf(root)) {
    if (entity == &root) continue;
    int code = 0;
    const char* const name = entity->getFileName("utf-8");
    lines += std::to_string(entity->getEntityTypeID()) + ' ' + (name ? name : "-") + ' ' +
             bytesOf(entity->getContent(code, nullptr)) + '\n';
  }
  return lines;
}

void replaceOne(const std::string& source, unsigned index) {
  VoMsgRfc822Message message;
  message.readFrom(inPlace(source));
  std::vector<VoMsgEntity*> blocks;
  for (VoMsgEntity* const entity : entitiesOf(message))
    if (entity->getEntityTypeID() == kVoEntityEmbeded) blocks.push_back(entity);
  if (blocks.empty()) return;
  VoMsgEntity& block = *blocks[index % blocks.size()];
  std::string bytes = "new content";
  const std::unique_ptr<VoMsgResourceLocator> content(inPlace(bytes));
  const bool isReplaced = !voFailed(block.replaceContent(content.get(), nullptr));
  const std::string output = writeOut(message);
  if (!isReplaced) return require(output == source, "a refused edit changes nothing");
  int code = 0;
  // Text in front of a block ends with its line.
  const std::string back = bytesOf(block.getContent(code, nullptr));
  require(back.substr(0, back.find_last_not_of("\r\n") + 1) == bytes && back.size() <= bytes.size() + 2,
          "new content reads back");
  VoMsgRfc822Message again;
  again.readFrom(inPlace(output));
  require(account(again) == account(message), "what was written is what the tree says");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string_view body(reinterpret_cast<const char*>(data), size);
  const std::string plain = "Content-Type: text/plain\r\n\r\n" + std::string(body);
  const std::string coded = "Content-Type: text/plain\r\nContent-Transfer-Encoding: base64\r\n\r\n" + base64(body);
  VoMsgRfc822Message first, second;
  first.readFrom(inPlace(plain));
  second.readFrom(inPlace(coded));
  require(account(first) == account(second), "blocks are found alike in plain and in encoded text");
  require(writeOut(first) == plain && writeOut(second) == coded, "an unedited message is written as it was");
  replaceOne(plain, data[size / 2]);
  replaceOne(coded, data[size / 2]);
  return 0;
}
