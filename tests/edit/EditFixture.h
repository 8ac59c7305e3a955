// Disclaimers for the tests, and what a message says after it took one.
#pragma once

#include <string>
#include <string_view>

#include "tests/support/MessageFixture.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"

namespace vomsg::test {

// A disclaimer as a host hands it over; it frees itself unless the message took it.
class Text {
 public:
  explicit Text(std::string_view text)
      : mResource(new VoMsgMemoryResource(const_cast<char*>(text.data()), static_cast<unsigned>(text.size()),
                                          static_cast<signed char>(1), nullptr, nullptr)) {}
  VoMsgResourceLocator* get() const { return mResource.get(); }
  void taken() { static_cast<void>(mResource.release()); }

 private:
  std::unique_ptr<VoMsgResourceLocator> mResource;
};

inline VoErrorCode insert(VoMsgRfc822Message& message, std::string_view text, int option,
                          int position = kVoDisclaimerBottom, const char* charset = "utf-8",
                          const char* prefer = nullptr) {
  Text disclaimer(text);
  const VoErrorCode code = message.insertDisclaimerMessage(static_cast<VoMsgDisclaimerPosition_e>(position),
                                                           disclaimer.get(), option, charset, prefer);
  if (!voFailed(code)) disclaimer.taken();
  return code;
}

// The first entity of a type in document order, null when there is none.
inline VoMsgEntity* find(VoMsgEntity& root, std::string_view type) {
  for (VoMsgEntity* entity : entitiesOf(root))
    if (entity->getContentType() && entity->getContentType() == type) return entity;
  return nullptr;
}

inline std::size_t occurrences(std::string_view text, std::string_view part) {
  std::size_t n = 0;
  for (std::size_t at = text.find(part); at != text.npos; at = text.find(part, at + part.size())) ++n;
  return n;
}

}  // namespace vomsg::test
