#include "vomsg/foundation/VoErrorText.h"

namespace {

struct Row {
  VoErrorCode code;
  const char* text;
};

constexpr Row kRows[] = {
    {kVoSuccess, "it succeeded"},
    {kVoConverterMissing, "the charset cannot be converted"},
    {kVoNoMemory, "there is not enough memory"},
    {kVoRestructureFailed, "the part cannot be rearranged"},
    {kVoBadArgument, "an argument does not fit"},
    {kVoBadFormat, "the format is not known"},
    {kVoOutOfRange, "there is no such place"},
    {kVoWrapFailed, "the message cannot be wrapped"},
    {kVoReadFailed, "it cannot be read"},
    {kVoWriteFailed, "the output cannot be written"},
    {kVoNoSuchHeader, "there is no such header field"},
    {kVoNotSupported, "this kind of part does not support that"},
    {kVoDecodeFailed, "the content is not encoded as it claims"},
    {kVoEncodeFailed, "the value cannot be encoded"},
    {kVoNoChildren, "this part cannot hold parts"},
    {kVoBadEncoding, "the transfer encoding is not supported"},
    {kVoNoContent, "it has no content of its own"},
    {kVoContentHeaderFailed, "the fields of the content cannot be set"},
    {kVoContentParameterFailed, "a parameter of the content's fields cannot be set"},
    {kVoEncodingHeaderFailed, "the transfer encoding cannot be set"},
    {kVoTnefMalformed, "the TNEF data is malformed"},
    {kVoMalformed, "the message is malformed (too many or conflicting header fields)"},
    {kVoPartialMessage, "it is only a fragment of a message, or a reference to one"},
    {kVoConversionFailed, "some characters cannot be converted"},
    {kVoDisclaimerRefused, "a disclaimer cannot be put there"},
    {kVoDisclaimerCopyFailed, "the disclaimer cannot be copied"},
};

}  // namespace

const char* voErrorText(VoErrorCode code) {
  for (const Row& row : kRows) {
    if (row.code == code) return row.text;
  }
  return voFailed(code) ? "the library failed in a way it has no words for" : "it succeeded";
}
