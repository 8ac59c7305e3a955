// The coding-scheme machines: for each encoding, which byte sequences are possible in it. The numbers are in one source
// a machine; tools/make_detect_tables.py makes them.
#pragma once

#include <cstdint>

#include "vomsg/foundation/VoMsgExport.h"

// Small numbers packed into words. Entry i is (data[i >> idxsft] >> ((i & sftmsk) << bitsft)) & unitmsk; every table
// here uses 3, 7, 2, 15: eight 4-bit entries a word. Entry 10 of {0x11111111, 0x00111211} is the third of the second
// word, 2.
struct VoMsgPackedTable {
  std::uint32_t idxsft;
  std::uint32_t sftmsk;
  std::uint32_t bitsft;
  std::uint32_t unitmsk;
  const std::uint32_t* data;

  constexpr std::uint32_t at(std::uint32_t i) const {
    return (data[i >> idxsft] >> ((i & sftmsk) << bitsft)) & unitmsk;
  }
};

// States: 0 nothing begun or a character just completed, 1 error, 2 seen what only this encoding has; both are final.
struct SMModel {
  VoMsgPackedTable classTable;        // class of a byte value
  std::uint32_t classFactor;          // number of classes
  VoMsgPackedTable stateTable;        // next state, at state x classFactor + class
  const std::uint32_t* charLenTable;  // length of the character that a byte of a class begins
  const char* name;                   // charset reported
};

extern VOMSG_API const SMModel Big5SMModel;
extern VOMSG_API const SMModel EUCJPSMModel;
extern VOMSG_API const SMModel EUCKRSMModel;
extern VOMSG_API const SMModel EUCTWSMModel;
extern VOMSG_API const SMModel GB18030SMModel;
extern VOMSG_API const SMModel HZSMModel;
extern VOMSG_API const SMModel ISO2022CNSMModel;  // the published one; no detector uses it
extern VOMSG_API const SMModel ISO2022JPSMModel;
extern VOMSG_API const SMModel ISO2022KRSMModel;
extern VOMSG_API const SMModel SJISSMModel;
extern VOMSG_API const SMModel UCS2BESMModel;  // no detector uses it
extern VOMSG_API const SMModel UCS2LESMModel;  // no detector uses it
extern VOMSG_API const SMModel UTF8SMModel;
// Takes ESC $ ) A, ESC $ ) G, ESC $ * H and also ESC ( B for a proof; NUL and bytes above 0x7F rule it out.
extern VOMSG_API const SMModel gISO2022CNSMModel;
