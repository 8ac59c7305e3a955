// LZFu, the compression of RTF bodies in TNEF messages (MS-OXRTFCP). Decoding only.
//
// A control byte announces eight items, from its lowest bit up: 0 a literal byte; 1 a reference of two bytes, twelve
// bits of position in a dictionary of 4096 bytes and four of length less two. Whatever comes out also goes into the
// dictionary, which wraps around; at first it holds a prefix of common RTF.
#pragma once

#include <cstdint>

#include "vomsg/foundation/VoErrorCode.h"
#include "vomsg/foundation/VoMsgExport.h"

class VoMsgBufferedReader;
class VoMsgBufferedWriter;
class VoMsgResourceLocator;

// Expands the next `length` compressed bytes of `source`, those behind the 16-byte header, into the data part of
// `target`, replacing what it held. Signature and CRC are the caller's to look at; a reference to the current position,
// which other writers mean as the end, is expanded like any other. A `length` that ends inside a reference drops it.
// `length` should not exceed what `source` still holds: bytes that are missing read as 0xFF, at most as many as were
// there and 4096 more. kVoWriteFailed: no writer, or a write failed; kVoNoMemory; kVoBadArgument: null.
VOMSG_API VoErrorCode voDecodeLZFu(VoMsgResourceLocator* target, VoMsgBufferedReader* source, long length);

// Where the expansion of one text stands, so that its compressed bytes can come in pieces. A new one is at the start.
struct VOMSG_API LZFu {
  LZFu();
  unsigned char dictionary[4096];
  std::uint32_t position;    // where the next byte goes, modulo 4096
  std::uint8_t control = 0;  // its lowest bit belongs to the next item
  std::int32_t flags = -1;   // of `control` that are unused; -1: none was read yet
};

// Expands the next `length` compressed bytes of `source`, writes what they yield to `target` and flushes it; a next
// call with the same `state` goes on where this one stopped. A piece may end between any two items; a reference of
// which only the first byte belongs to the piece stays unread, and the next piece begins with that byte. Bytes that
// `source` lacks read as with voDecodeLZFu(). False when a write fails, or for null.
VOMSG_API bool _decodeLZFu(LZFu* state, VoMsgBufferedWriter* target, VoMsgBufferedReader* source, long length);

namespace vomsg::detail {
// The two without their log lines.
bool expandLZFu(LZFu& state, VoMsgBufferedWriter& target, VoMsgBufferedReader& source, std::uint64_t length);
VoErrorCode decodeLZFu(VoMsgResourceLocator& target, VoMsgBufferedReader& source, std::uint64_t length);
}  // namespace vomsg::detail
