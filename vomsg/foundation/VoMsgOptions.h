// The process-wide limits and options. Plain globals without locks: set them before the first message.
#pragma once

#include "vomsg/foundation/VoMsgExport.h"

VOMSG_API extern int MaxEntityHeaders;       // header fields per block; more fail with kVoMalformed; <= 0: no limit
VOMSG_API extern int MaxHeaderAddress;       // addresses per From, To, Cc or Bcc; <= 0: no limit
VOMSG_API extern int MaxHeaderParams;        // parameters per field; exactly this many fail already; <= 0: no limit
VOMSG_API extern bool NoMaxAddressForChild;  // no address limit below the top level
VOMSG_API extern int VoMsgExtraOption;       // the bits below
// The most decoded and converted bytes that a message, with all that is inside it, keeps or is producing; 0: no limit.
// What would be more fails with kVoWriteFailed, and ends the reading where the message cannot be looked into without
// it. Bytes that are kept already are handed out for nothing. It holds for messages that are read from then on.
VOMSG_API extern unsigned long long MaxDecodedSize;

// Mask values of VoMsgExtraOption.
inline constexpr int kVoOptionEncodeDot = 1;            // quoted-printable writes "." as "=2E"
inline constexpr int kVoOptionKeepFoldSpace = 4;        // unfolding drops a leading tab, but keeps a leading space
inline constexpr int kVoOptionStrictUUEncode = 8;       // uuencoded lines must hold whole groups
inline constexpr int kVoOptionRawSubject = 16;          // Subject is written exactly as stored
inline constexpr int kVoOptionNoChildHeaderLimit = 32;  // no header-count limit below the top level
inline constexpr int kVoOptionNoChildParamLimit = 64;   // no parameter-count limit below the top level
// The tree shows what is there, and the first code comes back at the end: conflicting Content-Type fields (the last one
// counts), an empty boundary (a leaf), a nested message that is malformed, partial or broken no longer end the reading.
// In a multipart/digest a part without a type is a message, message/global is opened like message/rfc822, a boundary
// that ends in blanks matches, and a byte order mark does not hide the first field. Limits still end the reading.
// Taken when readFrom begins, for the message with its nested messages and copies. See docs/reading-and-writing.md.
inline constexpr int kVoOptionReadOn = 1024;

// A negative limit restores 100; 0 switches the limit off.
VOMSG_API void VoMsgSetMaxEntityHeaders(int limit);
VOMSG_API void VoMsgSetMaxHeaderAddress(int limit);
VOMSG_API void VoMsgSetMaxHeaderParams(int limit);
VOMSG_API void VoMsgSetNoMaxAddressForChild(bool noLimit);
VOMSG_API void VoMsgSetMaxDecodedSize(unsigned long long bytes);
// ORs `bits` into VoMsgExtraOption; bits are never cleared.
VOMSG_API void VoMsgSetExtraOption(int bits);
// Sets kVoOptionEncodeDot when the lowest bit of `flag` is set; does nothing otherwise.
VOMSG_API void VoMsgSetEncodeDot(int flag);
