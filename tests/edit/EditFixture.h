// Disclaimers for the tests.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "tests/support/MessageFixture.h"

namespace vomsg::test {

// As a host does it: the disclaimer is its own unless the message took it.
inline VoErrorCode insert(VoMsgRfc822Message& message, std::string text, int option, int position,
                          const char* charset = "utf-8", const char* prefer = nullptr) {
  std::unique_ptr<VoMsgResourceLocator> disclaimer = resourceOver(text);
  const VoErrorCode code = message.insertDisclaimerMessage(static_cast<VoMsgDisclaimerPosition_e>(position),
                                                           disclaimer.get(), option, charset, prefer);
  if (!voFailed(code)) static_cast<void>(disclaimer.release());
  return code;
}

inline std::size_t occurrences(std::string_view text, std::string_view part) {
  std::size_t n = 0;
  for (std::size_t at = text.find(part); at != text.npos; at = text.find(part, at + part.size())) ++n;
  return n;
}

}  // namespace vomsg::test
