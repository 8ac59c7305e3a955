// One-shot conversion, and conversion in pieces that fit into encoded words (RFC 2047).
#pragma once

#include <list>
#include <string>

#include "vomsg/foundation/VoErrorCode.h"
#include "vomsg/foundation/VoMsgExport.h"

extern "C" {
// Converts the C string `input` into `out` (at most outSize - 1 bytes and a NUL; nothing when outSize is 0),
// "?" for what the target cannot say. Returns the full length plus one, whatever was copied; 0 on failure.
// `*err`: kVoBadArgument for a null argument, kVoConversionFailed without a converter, else the converter's code.
VOMSG_API int voConvertCharset(char* out, unsigned int outSize, const char* toCharset, const char* input,
                               const char* fromCharset, VoErrorCode* err);
}

// Converts `text` and cuts the result into pieces that each fit into one encoded word, the first one into
// `firstRoom`. Source first. On success `*lines` is a new list of malloc'd strings, given back to voFreeLineTable.
VOMSG_API VoErrorCode voDivisionConvert(const char* fromCharset, const char* toCharset, std::string& text,
                                        unsigned int firstRoom, std::list<char*>** lines);
VOMSG_API void voFreeLineTable(std::list<char*>* lines);
