// A TNEF stream: read, walk, take every content, write back, edit. What must hold for any bytes: an unedited stream
// and its copy come out as they were; content is as long as its entity says; new content replaces the bytes of its
// record and no others; a property list that is written anew reads back with the properties it had.
#include "fuzz/FuzzSupport.h"
#include "vomsg/foundation/VoMsgMemoryReader.h"
#include "vomsg/foundation/VoMsgMemoryWriter.h"
#include "vomsg/tnef/VoMsgMapiAttachment.h"
#include "vomsg/tnef/VoMsgTnefAttachData.h"
#include "vomsg/tnef/VoMsgTnefBody.h"
#include "vomsg/tnef/VoMsgTnefMessage.h"

using namespace vomsg::fuzz;

namespace {

void checkList(VoMsgMapiAttachment& list, VoMsgBufferedReader& source) {
  VoMsgMemoryWriter writer;
  require(list._writeNewData(&writer, &source) == kVoSuccess && writer.flush(), "a list can be written anew");
  VoMsgMemoryReader reader(reinterpret_cast<unsigned char*>(const_cast<char*>(writer.getData())), writer.getLength());
  reader.open();
  reader.rseek(5, 0);
  VoMsgMapiAttachment again(list.getTnefLevel(), list.getTnefTypeID(), list.getTnefNameID());
  int code = 0;
  again.readData(code, nullptr, &reader);
  require(code == static_cast<int>(kVoSuccess), "a list written anew can be read");
  require(again.countProperties() == list.countProperties(), "it has the properties it had");
  for (std::uint32_t i = 0; i < list.countProperties(); ++i) {
    VoMsgMapiProperty& before = *list.getMapiPropertyAt(i);
    VoMsgMapiProperty& after = *again.getMapiPropertyAt(i);
    require(
        before.getMapiPropertyName() == after.getMapiPropertyName() && before.countMapiData() == after.countMapiData(),
        "a property has the values it had");
  }
}

void lookAt(VoMsgTnefEntity& entity) {
  entity.getFileName("utf-8");
  entity.getContentType();
  entity.getCharset();
  int code = 0;
  const VoMsgResourceLocator* const content = entity.getContent(code, nullptr);
  require(!content || content->getSize(VoMsgResourceLocator::dataPart) == entity.getContentSize(),
          "content is as long as its entity says");
  VoMsgTnefBody* const body = entity._getTnefBody();
  require(body != nullptr, "records can be read");
  VoMsgBufferedReader* const source = entity.getContextSource(code);
  for (std::size_t i = 0; i < body->countAttributes(); ++i)
    if (auto* const list = dynamic_cast<VoMsgMapiAttachment*>(body->getAttributeAt(i)))
      if (!list->_isBroken()) checkList(*list, *source);
}

// New content for the `index`-th child, when one record holds the old.
void checkEdit(std::string_view bytes, unsigned index) {
  VoMsgTnefMessage message;
  message.readFrom(inPlace(bytes));
  auto* const child = dynamic_cast<VoMsgTnefEntity*>(message.getChildEntityAt(index));
  VoMsgTnefBody* const body = child->_getTnefBody();
  const VoMsgTnefAttribute* const record = body->_getDataRecord();
  if (child->getTnefEntityType() != VoMsgTnefEntity::kRecord || !record || record->_isBroken()) return;
  const auto offset = static_cast<std::size_t>(record->getOffset());
  const auto size = static_cast<std::size_t>(record->getSize());
  VoMsgMemoryResource content(const_cast<char*>("N"), 1, nullptr, nullptr);
  require(child->replaceContent(&content, nullptr) == kVoSuccess, "an attachment can be replaced");
  std::string ids(bytes.substr(offset, std::min<std::size_t>(size, 5)));
  ids.resize(5);  // of a record that the end cut short
  std::string want = std::string(bytes.substr(0, offset)) + ids + std::string("\1\0\0\0N\x4E\0", 7);
  want += bytes.substr(offset + size);
  if (bytes.size() < 6) return;
  require(writeOut(message) == want, "new content replaces the bytes of its record and no others");
  const std::unique_ptr<VoMsgMailMessage> copy(message.split());
  require(copy && writeOut(*copy) == want, "a copy is written like its original");
}

// New content for an entity anywhere, streams inside streams included: refused, or written as a stream.
void checkDeepEdit(std::string_view bytes, unsigned index) {
  VoMsgTnefMessage message;
  message.readFrom(inPlace(bytes));
  VoMsgEntityIterator all(&message);
  VoMsgEntity* entity = all.first();
  while (entity && index-- > 0) entity = all.next();
  VoMsgMemoryResource content(const_cast<char*>("N"), 1, "n", nullptr);
  const bool isEdited = entity && !voFailed(entity->setContent(&content, "a/b", nullptr));
  const std::string output = writeOut(message);
  if (!isEdited) require(output == bytes, "a refused edit changes nothing");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  VoMsgTnefMessage message;
  message.readFrom(inPlace(bytes));
  require(writeOut(message) == bytes, "an unedited stream is written as it was");
  unsigned children = 0;
  VoMsgEntityIterator all(&message);
  for (VoMsgEntity* entity = all.first(); entity; entity = all.next()) {
    if (auto* const tnef = dynamic_cast<VoMsgTnefEntity*>(entity)) lookAt(*tnef);
    children += entity->getParentEntity() == &message;
  }
  require(!message.isModified(), "reading changes nothing");
  require(writeOut(message) == bytes, "an unedited stream is written as it was when its records have been read");
  const std::unique_ptr<VoMsgMailMessage> copy(message.split());
  require(copy && writeOut(*copy) == bytes, "a copy is written like its original");
  for (unsigned i = 0; i < children && i < 8; ++i) checkEdit(bytes, i);
  checkDeepEdit(bytes, static_cast<unsigned char>(bytes[size / 3]) % 32);
  while (children > 0) {
    const unsigned i = static_cast<unsigned>(bytes[size / 2]) % children;
    if (voFailed(message.removeChildEntityAt(i))) break;
    --children;
  }
  writeOut(message);
  return 0;
}
