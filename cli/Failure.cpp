#include "cli/Failure.h"

#include <cstdio>

namespace cli {

namespace {

struct Meaning {
  VoErrorCode code;
  ExitCode exit;
  const char* words;
};

constexpr Meaning kMeanings[] = {
    {kVoConverterMissing, kBadData, "the charset cannot be converted"},
    {kVoNoMemory, kBadData, "there is not enough memory"},
    {kVoBadArgument, kUsage, "an argument does not fit"},
    {kVoBadFormat, kBadData, "the format is not known"},
    {kVoReadFailed, kNoInput, "it cannot be read"},
    {kVoWriteFailed, kCannotCreate, "the output cannot be written"},
    {kVoNotSupported, kBadData, "this kind of part does not support that"},
    {kVoDecodeFailed, kBadData, "the content is not encoded as it claims"},
    {kVoNoChildren, kUsage, "this part cannot hold parts"},
    {kVoBadEncoding, kBadData, "the transfer encoding is not supported"},
    {kVoNoContent, kBadData, "it has no content of its own"},
    {kVoTnefMalformed, kBadData, "the TNEF data is malformed"},
    {kVoMalformed, kBadData, "the message is malformed (too many or conflicting header fields)"},
    {kVoPartialMessage, kBadData, "it is only a fragment of a message, or a reference to one"},
    {kVoConversionFailed, kBadData, "some characters cannot be converted"},
    {kVoDisclaimerRefused, kBadData, "a disclaimer cannot be put there"},
};

}  // namespace

std::string hexCode(std::uint32_t code) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%08X", code);
  return text;
}

Failure failureOf(VoErrorCode code, const std::string& subject) {
  for (const Meaning& meaning : kMeanings) {
    if (meaning.code == code) return {meaning.exit, subject + ": " + meaning.words + " (" + hexCode(code) + ")"};
  }
  return {kBadData, subject + ": the library failed with " + hexCode(code)};
}

}  // namespace cli
