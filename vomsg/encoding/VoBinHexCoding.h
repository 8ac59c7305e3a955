// The layers of BinHex 4.0 between a byte of the file and a character of the text, for one direction at a time:
//
//   getq/setq          a byte that the running CRC covers
//   getq_nocrc/setq_nocrc   run-length coding: 0x90 n repeats the byte before until it has appeared n times, 0x90 0
//                      is a literal 0x90
//   getq_raw/setq_raw  three bytes are four characters
//   get6bits/set6bits  one character; line ends are between them and mean nothing
//
// The run-length state goes on from section to section, CRCs included: the first bytes of a fork may repeat the last
// byte of the header's CRC.
#pragma once

#include <cstdint>
#include <string>

class VoMsgBufferedReader;
class VoMsgBufferedWriter;

namespace vomsg::detail {

class ByteSource;

struct q_data_t {
  std::uint32_t crc = 0;                  // of the section so far, in the low 16 bits
  int previous = 0;                       // the byte that a run repeats; encoding: -1 when a run has just been closed
  unsigned run = 0;                       // decoding: repetitions still due; encoding: repetitions not yet written
  std::uint32_t group = 0;                // bits on their way between bytes and characters
  unsigned groupBits = 0;                 // how many they are
  unsigned column = 0;                    // characters on the current output line
  bool isExact = true;                    // encoding: no run has been closed with a count too large
  ByteSource* reader = nullptr;           // decoding
  VoMsgBufferedWriter* writer = nullptr;  // encoding
};

struct macheader_t {
  std::string name;
  std::uint32_t type = 0;
  std::uint32_t creator = 0;
  std::uint16_t flags = 0;
  std::uint32_t dataLength = 0;
  std::uint32_t resourceLength = 0;
};

void q_init(q_data_t& q, ByteSource& reader);
void q_init(q_data_t& q, VoMsgBufferedWriter& writer);

// A character of the alphabet, or one that may stand between two: a line end or a blank.
bool isBinHexCharacter(int c);

std::uint32_t comp_q_crc(std::uint32_t crc, unsigned char byte);

// Decoding. Each is false at the end of the encoded data, which includes the closing colon and any character that is
// none of the alphabet.
bool get6bits(q_data_t& q, unsigned& bits);
bool getq_raw(q_data_t& q, unsigned char& byte);
bool getq_nocrc(q_data_t& q, unsigned char& byte);
bool getq(q_data_t& q, unsigned char& byte);
bool get2q(q_data_t& q, std::uint16_t& value);
bool get4q(q_data_t& q, std::uint32_t& value);
bool getqbuf(q_data_t& q, char* bytes, std::size_t n);
// Reads a CRC and compares it with that of the section, which ends here.
bool verify_crc(q_data_t& q);
// Reads the header with its CRC.
bool do_q_header(q_data_t& q, macheader_t& header);

// Encoding. Each is false when a write fails.
bool set6bits(q_data_t& q, unsigned bits);
bool setq_raw(q_data_t& q, unsigned char byte);
bool setq_nocrc(q_data_t& q, unsigned char byte);
bool setq(q_data_t& q, unsigned char byte);
bool set2q(q_data_t& q, std::uint16_t value);
bool set4q(q_data_t& q, std::uint32_t value);
bool setqbuf(q_data_t& q, const char* bytes, std::size_t n);
bool writeCRC(q_data_t& q);
// Writes what the run-length coder and the last group still hold.
bool setq_flush(q_data_t& q);

}  // namespace vomsg::detail
