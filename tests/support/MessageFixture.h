// Messages for tests: read from memory in a block of the exact size, or from a file; written back to a string.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "vomsg/entity/VoMsgRfc822Message.h"
#include "vomsg/foundation/VoMsgResourceLocator.h"

namespace vomsg::test {

enum class Source { memory, file };

class MessageFixture {
 public:
  explicit MessageFixture(std::string_view bytes, Source source = Source::memory);
  ~MessageFixture();
  MessageFixture(const MessageFixture&) = delete;
  MessageFixture& operator=(const MessageFixture&) = delete;

  VoMsgRfc822Message& operator*() { return *mMessage; }
  VoMsgRfc822Message* operator->() { return mMessage.get(); }

  VoErrorCode code = 0;  // of readFrom

 private:
  std::unique_ptr<unsigned char[]> mBlock;
  std::string mPath;
  std::unique_ptr<VoMsgRfc822Message> mMessage;
};

std::string written(VoMsgMailMessage& message);  // what writeTo gives; "write failed" when it fails
// All of a part of it; "" for null.
std::string bytesOf(const VoMsgResourceLocator* resource,
                    VoMsgResourceLocator::VoMsgResourceDataType part = VoMsgResourceLocator::dataPart);
std::string contentOf(VoMsgEntity& entity);               // decoded
std::vector<VoMsgEntity*> entitiesOf(VoMsgEntity& root);  // in document order
std::string outline(VoMsgEntity& root);                   // one line an entity: type, ranges, names
// Every message under the public corpus, empty where it is not there; the tests that use it then skip.
std::vector<std::pair<std::string, std::string>> corpusMessages();  // path, bytes
// The project's own samples.
std::vector<std::pair<std::string, std::string>> sampleMessages();

// A text resource over a string that must outlive it.
std::unique_ptr<VoMsgResourceLocator> resourceOver(std::string& text);

}  // namespace vomsg::test
