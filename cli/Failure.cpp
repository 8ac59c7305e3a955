#include "cli/Failure.h"

#include <cstdio>

#include "vomsg/foundation/VoErrorText.h"

namespace cli {

namespace {

// What the user can do about it: the codes that are not the data's fault.
ExitCode exitOf(VoErrorCode code) {
  switch (code) {
    case kVoBadArgument:
    case kVoNoChildren:
      return kUsage;
    case kVoReadFailed:
      return kNoInput;
    case kVoWriteFailed:
      return kCannotCreate;
    default:
      return kBadData;
  }
}

}  // namespace

std::string hexCode(std::uint32_t code) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%08X", code);
  return text;
}

Failure failureOf(VoErrorCode code, const std::string& subject) {
  return {exitOf(code), subject + ": " + voErrorText(code) + " (" + hexCode(code) + ")"};
}

}  // namespace cli
