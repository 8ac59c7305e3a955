#include "tests/support/MessageFixture.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "vomsg/entity/VoMsgEntityIterator.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgFileResource.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"

namespace vomsg::test {
namespace {

std::vector<std::pair<std::string, std::string>> messagesUnder(const char* folder) {
  std::vector<std::pair<std::string, std::string>> messages;
  std::error_code error;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder, error)) {
    const std::string extension = entry.path().extension();
    if (!entry.is_regular_file() || (extension != ".eml" && extension != ".msg" && extension != ".txt")) continue;
    std::ifstream file(entry.path(), std::ios::binary);
    messages.emplace_back(std::filesystem::relative(entry.path(), folder),
                          std::string(std::istreambuf_iterator<char>(file), {}));
  }
  std::sort(messages.begin(), messages.end());
  return messages;
}

}  // namespace

MessageFixture::MessageFixture(std::string_view bytes, Source source) : mMessage(new VoMsgRfc822Message) {
  if (source == Source::memory) {
    mBlock = std::make_unique<unsigned char[]>(bytes.size());
    std::copy(bytes.begin(), bytes.end(), mBlock.get());
    code = mMessage->readFrom(
        new VoMsgMemoryResource(mBlock.get(), static_cast<unsigned>(bytes.size()), nullptr, nullptr));
    return;
  }
  char name[] = "/tmp/vomsg-test-XXXXXX";
  const int file = mkstemp(name);
  mPath = name;
  if (file < 0 || write(file, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) std::abort();
  close(file);
  code = mMessage->readFrom(new VoMsgFileResource(name, nullptr, nullptr));
}

MessageFixture::~MessageFixture() {
  mMessage.reset();
  if (!mPath.empty()) unlink(mPath.c_str());
}

std::string written(VoMsgMailMessage& message) {
  VoMsgMemoryResource target(0u, nullptr, nullptr);
  return voFailed(message.writeTo(&target)) ? "write failed" : bytesOf(&target);
}

std::string bytesOf(const VoMsgResourceLocator* resource, VoMsgResourceLocator::VoMsgResourceDataType part) {
  if (!resource) return {};
  std::string bytes(resource->getSize(part), '\0');
  const std::unique_ptr<VoMsgBufferedReader> reader(resource->getInputStream(part));
  bytes.resize(reader ? reader->read(bytes.data(), static_cast<unsigned>(bytes.size())) : 0);
  return bytes;
}

std::string contentOf(VoMsgEntity& entity) {
  int err = 0;
  return bytesOf(entity.getContent(err, nullptr));
}

std::vector<VoMsgEntity*> entitiesOf(VoMsgEntity& root) {
  std::vector<VoMsgEntity*> all;
  VoMsgEntityIterator walk(&root);
  for (VoMsgEntity* entity = walk.first(); entity; entity = walk.next()) all.push_back(entity);
  return all;
}

std::string outline(VoMsgEntity& root) {
  std::string text;
  for (VoMsgEntity* entity : entitiesOf(root)) {
    for (VoMsgEntity* up = entity; up != &root; up = up->getParentEntity()) text += ' ';
    const char* const type = entity->getContentType();
    text += type ? type : "-";
    if (const auto* const mime = dynamic_cast<VoMsgRfc822Entity*>(entity)) {
      text.append(" ").append(std::to_string(mime->getHeaderOffset()));
      text.append("+").append(std::to_string(mime->getHeaderSize()));
      text.append(" ").append(std::to_string(mime->getBodyOffset()));
      text.append("+").append(std::to_string(mime->getBodySize()));
    }
    text += "\n";
  }
  return text;
}

std::vector<std::pair<std::string, std::string>> corpusMessages() { return messagesUnder(VOMSG_TEST_CORPUS); }
std::vector<std::pair<std::string, std::string>> sampleMessages() { return messagesUnder(VOMSG_TEST_DATA "/messages"); }

std::unique_ptr<VoMsgResourceLocator> resourceOver(std::string& text) {
  return std::make_unique<VoMsgMemoryResource>(text.data(), static_cast<unsigned>(text.size()), nullptr, nullptr);
}

}  // namespace vomsg::test
