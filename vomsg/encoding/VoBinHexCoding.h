// The layers of BinHex 4.0 between a byte of the file and a character of the text, for callers who have a file or an
// encoded text in pieces; voDecodeBinHex() and voEncodeBinHex() do the whole of it.
//
//   getq/setq          a byte that the running CRC covers
//   getq_nocrc/setq_nocrc   run-length coding: 0x90 n repeats the byte before until it has appeared n times, 0x90 0
//                      is a literal 0x90
//   getq_raw/setq_raw  three bytes are four characters
//   get6bits/set6bits  one character; line ends are between them and mean nothing
//
// The run-length state goes on from section to section, CRCs included: the first bytes of a fork may repeat the last
// byte of the header's CRC. A file is, in this order:
//
//   decoding   the caller steps behind the colon; q_init, do_q_header, getqbuf and verify_crc for the data fork, the
//              same for the resource fork
//   encoding   q_init, writeBinHexHeader, writeMacHeader, writeDataFork, writeResourceFork, writeBinHexFooter, and a
//              flush of the writer
//
// All of them are steps of an operation of the caller's, so none writes a log line. One coding state serves one
// direction at a time; a step in the other one fails.
#pragma once

#include <cstddef>
#include <cstdint>

#include "vomsg/foundation/VoErrorCode.h"
#include "vomsg/foundation/VoMsgExport.h"

class VoMsgBufferedReader;
class VoMsgBufferedWriter;

struct q_data_t {
  std::uint32_t crc = 0;                  // of the section so far, in the low 16 bits
  int previous = 0;                       // the byte that a run repeats; encoding: -1 when a run has just been closed
  unsigned run = 0;                       // decoding: repetitions still due; encoding: repetitions not yet written
  std::uint32_t group = 0;                // bits on their way between bytes and characters
  unsigned groupBits = 0;                 // how many they are
  unsigned column = 0;                    // characters on the current output line
  bool isExact = true;                    // encoding: no run has been closed with a count too large
  std::uint64_t left = UINT64_MAX;        // decoding: characters that may still be taken from `reader`
  VoMsgBufferedReader* reader = nullptr;  // decoding; borrowed
  VoMsgBufferedWriter* writer = nullptr;  // encoding; borrowed
};

// The header of a BinHex file. Numbers are big-endian in the stream and plain here.
struct macheader_t {
  unsigned char nameLength = 0;
  char name[256] = {};  // `nameLength` bytes of it, and a NUL
  std::uint32_t type = 0;
  std::uint32_t creator = 0;
  std::uint16_t flags = 0;
  std::uint32_t dataLength = 0;
  std::uint32_t resourceLength = 0;
};

// Begins a file: for decoding at the next byte of `reader`, which is the first behind the colon, or for encoding into
// `writer`. Between two steps the reader stands behind the last character taken.
VOMSG_API void q_init(q_data_t& q, VoMsgBufferedReader* reader);
VOMSG_API void q_init(q_data_t& q, VoMsgBufferedWriter* writer);

// The CRC of a section and one more byte (CRC-16, polynomial 0x1021, from 0, most significant bit first).
VOMSG_API std::uint32_t comp_q_crc(std::uint32_t crc, unsigned char byte);

// Decoding. Each is false at the end of the encoded data, which includes the closing colon and any character that is
// none of the alphabet; what it stores then is undefined. Only getq and the steps that are made of it move the CRC.
VOMSG_API bool get6bits(q_data_t& q, unsigned& bits);
VOMSG_API bool getq_raw(q_data_t& q, unsigned char& byte);
VOMSG_API bool getq_nocrc(q_data_t& q, unsigned char& byte);
VOMSG_API bool getq(q_data_t& q, unsigned char& byte);
VOMSG_API bool get2q(q_data_t& q, std::uint16_t& value);
VOMSG_API bool get4q(q_data_t& q, std::uint32_t& value);
VOMSG_API bool getqbuf(q_data_t& q, char* bytes, std::size_t n);
// Reads a CRC and compares it with that of the section, which ends here.
VOMSG_API bool verify_crc(q_data_t& q);
// Reads the header with its CRC. The lengths in it are the sender's: hold them against the data before use.
VOMSG_API bool do_q_header(q_data_t& q, macheader_t& header);

// Encoding. Each is false when a write fails.
VOMSG_API bool set6bits(q_data_t& q, unsigned bits);
VOMSG_API bool setq_raw(q_data_t& q, unsigned char byte);
VOMSG_API bool setq_nocrc(q_data_t& q, unsigned char byte);
VOMSG_API bool setq(q_data_t& q, unsigned char byte);
VOMSG_API bool set2q(q_data_t& q, std::uint16_t value);
VOMSG_API bool set4q(q_data_t& q, std::uint32_t value);
VOMSG_API bool setqbuf(q_data_t& q, const char* bytes, std::size_t n);
// Writes the CRC of the section, which ends here.
VOMSG_API bool writeCRC(q_data_t& q);
// Writes what the run-length coder and the last group still hold.
VOMSG_API bool setq_flush(q_data_t& q);

// The marker line and the opening colon.
VOMSG_API bool writeBinHexHeader(q_data_t& q);
// The header with its CRC.
VOMSG_API bool writeMacHeader(q_data_t& q, const macheader_t& header);
// As many bytes of a fork as the header says, and their CRC. `data` and `fork` stand at the fork's first byte; null
// does for an empty one. kVoReadFailed: there are fewer bytes; kVoWriteFailed.
VOMSG_API VoErrorCode writeDataFork(q_data_t& q, VoMsgBufferedReader* data, const macheader_t& header);
VOMSG_API VoErrorCode writeResourceFork(q_data_t& q, VoMsgBufferedReader* fork, const macheader_t& header);
// What is still held back, and the closing colon on the last line or one of its own.
VOMSG_API bool writeBinHexFooter(q_data_t& q);

namespace vomsg::detail {
// A character of the alphabet, or one that may stand between two: a line end or a blank.
bool isBinHexCharacter(int c);
}  // namespace vomsg::detail
