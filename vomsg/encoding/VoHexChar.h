// Percent-hex ("%XX"), the escape of RFC 2231 parameter values. The byte 0xFF ends the input like the end of the data.
// Encoding escapes controls, the blank and * ' % ( ) < > @ , ; : \ " / [ ] ? =, which are all that a token may not hold
// or that the escape itself needs. Only ASCII survives it: every byte 0x80 to 0xFE comes out as "%FF".
#pragma once

#include "vomsg/foundation/VoErrorCode.h"
#include "vomsg/foundation/VoMsgExport.h"

class VoMsgBufferedReader;
class VoMsgBufferedWriter;
class VoMsgResourceLocator;

VOMSG_API extern const char hextable_char[17];
VOMSG_API extern const char hextable[17];

// The value of a hex digit of either case, else -1.
VOMSG_API int hexCharToInt(int character);

// Decodes the rest of `source`. "%" takes the next two bytes whatever they are ("%zz" is a NUL, "%1z" is 0x01); one
// that the end cuts is dropped. kVoNoMemory: no writer; kVoDecodeFailed: a write failed; kVoBadArgument: null.
VOMSG_API VoErrorCode voDecodeHexChar(VoMsgResourceLocator* target, VoMsgBufferedReader* source);
// Encodes all of `source`. kVoReadFailed: no reader; kVoEncodeFailed: a write failed; kVoBadArgument: null.
VOMSG_API VoErrorCode voEncodeHexChar(VoMsgBufferedWriter* target, const VoMsgResourceLocator* source);
// Directly between streams; kVoWriteFailed for any failure.
VOMSG_API VoErrorCode voDecodeHexChar(VoMsgBufferedWriter* target, VoMsgBufferedReader* source);
VOMSG_API VoErrorCode voEncodeHexChar(VoMsgBufferedWriter* target, VoMsgBufferedReader* source);
