// Builds TNEF streams byte by byte, and reads them into messages from exact-size memory.
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/MessageFixture.h"
#include "vomsg/foundation/VoMsgMemoryReader.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"
#include "vomsg/tnef/VoMsgTnefMessage.h"
#include "vomsg/tnef/VoTnefInteger.h"

namespace vomsg::test {

inline std::string le(std::uint64_t value, int size) {
  std::string bytes;
  for (int i = 0; i < size; ++i) bytes += static_cast<char>(value >> (8 * i) & 0xFF);
  return bytes;
}
inline std::string le16(unsigned value) { return le(value, 2); }
inline std::string le32(std::uint64_t value) { return le(value, 4); }
inline std::string padded(std::string bytes) { return bytes + std::string((4 - bytes.size() % 4) % 4, '\0'); }

inline unsigned sumOf(std::string_view bytes) {
  unsigned sum = 0;
  for (const char byte : bytes) sum += static_cast<unsigned char>(byte);
  return sum & 0xFFFF;
}

// The sum can be a wrong one.
inline std::string record(unsigned nameId, const std::string& data, unsigned level = 2, unsigned typeId = 6,
                          unsigned wrong = 0) {
  return le(level, 1) + le16(nameId) + le16(typeId) + le32(data.size()) + data + le16(sumOf(data) + wrong);
}

inline std::string stream(const std::string& records, unsigned key = 0x1234) {
  return le32(kVoTnefSignature) + le16(key) + records;
}

// --- property lists

using Values = std::vector<std::string>;  // each value as its type encodes it, length field and padding included

inline std::string prefixed(const std::string& data) { return le32(data.size()) + padded(data); }
inline std::string property(unsigned type, unsigned id, const std::string& value) {
  return le16(type) + le16(id) + value;
}
inline std::string counted(unsigned type, unsigned id, const Values& values) {
  std::string bytes = le16(type) + le16(id) + le32(values.size());
  for (const std::string& value : values) bytes += value;
  return bytes;
}
inline std::string text8(unsigned id, const std::string& text) {
  return counted(0x001E, id, {prefixed(text + std::string(1, '\0'))});
}
inline std::string wide(std::string_view ascii) {
  std::string bytes;
  for (const char c : ascii) bytes += {c, '\0'};
  return bytes + std::string(2, '\0');
}
inline std::string list(const Values& properties) {
  std::string bytes = le32(properties.size());
  for (const std::string& one : properties) bytes += one;
  return bytes;
}
inline const std::string kInterfaceId = "0123456789abcdef";
inline std::string object(unsigned id, const std::string& bytes) {
  return counted(0x000D, id, {prefixed(kInterfaceId + bytes)});
}

// --- usual streams

inline std::string attachment(const std::string& name, const std::string& data, const Values& properties = {}) {
  std::string bytes =
      record(0x9002, std::string(14, '\0')) + record(0x8010, name + std::string(1, '\0'), 2, 1) + record(0x800F, data);
  return properties.empty() ? bytes : bytes + record(0x9005, list(properties));
}

// --- messages

// A reader over a heap block of exactly the right size.
class ExactReader {
 public:
  explicit ExactReader(std::string_view bytes)
      : mBlock(new char[bytes.size()]),
        reader(reinterpret_cast<unsigned char*>(mBlock.get()), static_cast<unsigned>(bytes.size())) {
    std::memcpy(mBlock.get(), bytes.data(), bytes.size());
    reader.open();
  }
  std::string bytes() { return std::string(mBlock.get(), reader.getSize()); }

 private:
  std::unique_ptr<char[]> mBlock;

 public:
  VoMsgMemoryReader reader;
};

// A resource over borrowed bytes; yours.
inline VoMsgMemoryResource* inPlace(std::string_view bytes) {
  return new VoMsgMemoryResource(const_cast<char*>(bytes.data()), static_cast<unsigned>(bytes.size()), nullptr,
                                 nullptr);
}

struct ReadMessage {
  explicit ReadMessage(std::string_view bytes) : block(new char[bytes.size()]) {
    std::memcpy(block.get(), bytes.data(), bytes.size());
    code = message.readFrom(inPlace({block.get(), bytes.size()}));
  }
  VoMsgTnefEntity* child(unsigned i) { return dynamic_cast<VoMsgTnefEntity*>(message.getChildEntityAt(i)); }

  std::unique_ptr<char[]> block;
  VoMsgTnefMessage message;
  VoErrorCode code;
};

// What the getters give, or the code as "81011006".
inline std::string codeText(VoErrorCode code) {
  char text[9];
  std::snprintf(text, sizeof text, "%.8X", code);
  return text;
}
inline std::string contentOf(VoMsgEntity* entity) {
  if (!entity) return "(no entity)";
  int code = 0;
  VoMsgMemoryResource target(0, nullptr, nullptr);
  const VoMsgResourceLocator* const given = entity->getContent(code, &target);
  const VoMsgResourceLocator* const content = entity->getContent(code, nullptr);
  if (!content) return given ? "(only into a target)" : codeText(static_cast<VoErrorCode>(code));
  return given && bytesOf(given) == bytesOf(content) ? bytesOf(content) : "(not into a target)";
}

inline std::unique_ptr<VoMsgMemoryResource> resourceOf(const std::string& bytes, const char* name = nullptr) {
  return std::make_unique<VoMsgMemoryResource>(const_cast<char*>(bytes.data()), static_cast<unsigned>(bytes.size()),
                                               static_cast<signed char>(1), name, "utf-8");
}

}  // namespace vomsg::test
