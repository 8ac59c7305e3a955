// What the fuzz targets share: resources over the input, messages written to strings, and choices taken from the input.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "vomsg/entity/VoMsgEntityIterator.h"
#include "vomsg/entity/VoMsgMailMessage.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"

namespace vomsg::fuzz {

inline void require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "violated: %s\n", what);
  std::abort();
}

// A new resource over the bytes themselves, so that a byte read behind their end is seen.
inline VoMsgResourceLocator* inPlace(std::string_view bytes) {
  return new VoMsgMemoryResource(const_cast<char*>(bytes.data()), static_cast<unsigned>(bytes.size()), 0, nullptr,
                                 nullptr);
}
// A new one over a copy of them.
inline VoMsgResourceLocator* copyOf(std::string_view bytes) {
  return new VoMsgMemoryResource(const_cast<char*>(bytes.data()), static_cast<unsigned>(bytes.size()), 1, nullptr,
                                 nullptr);
}

inline std::string bytesOf(const VoMsgResourceLocator* resource) {
  std::string bytes;
  if (resource == nullptr) return bytes;
  const std::unique_ptr<VoMsgBufferedReader> reader(resource->getInputStream(VoMsgResourceLocator::dataPart));
  char chunk[4096];
  while (const unsigned n = reader ? reader->read(chunk, sizeof chunk) : 0) bytes.append(chunk, n);
  return bytes;
}

inline std::string writeOut(VoMsgMailMessage& message) {
  VoMsgMemoryResource target(0u, nullptr, nullptr);
  require(!voFailed(message.writeTo(&target)), "a message that was read can be written");
  const auto* bytes = static_cast<const char*>(target.getMemoryPointer(VoMsgResourceLocator::dataPart));
  return bytes ? std::string(bytes, target.getSize(VoMsgResourceLocator::dataPart)) : std::string();
}

inline std::vector<VoMsgEntity*> entitiesOf(VoMsgEntity& root) {
  std::vector<VoMsgEntity*> entities;
  VoMsgEntityIterator all(&root);
  for (VoMsgEntity* entity = all.first(); entity != nullptr; entity = all.next()) entities.push_back(entity);
  return entities;
}

// The front of an input as numbers and short texts. An empty one gives zeros and empty texts.
class Choices {
 public:
  Choices(const std::uint8_t* data, std::size_t size) : mRest(reinterpret_cast<const char*>(data), size) {}

  bool empty() const { return mRest.empty(); }
  unsigned number(std::size_t below) {
    if (mRest.empty() || below == 0) return 0;
    const auto byte = static_cast<unsigned char>(mRest.front());
    mRest.remove_prefix(1);
    return static_cast<unsigned>(byte % below);
  }
  // Up to the next byte 0xFF, which goes too.
  std::string text() {
    const std::size_t end = std::min(mRest.find('\xFF'), mRest.size());
    std::string text(mRest.substr(0, end));
    mRest.remove_prefix(std::min(end + 1, mRest.size()));
    return text;
  }
  std::string_view rest() const { return mRest; }

 private:
  std::string_view mRest;
};

}  // namespace vomsg::fuzz
