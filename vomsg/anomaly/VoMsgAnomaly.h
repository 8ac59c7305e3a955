// What can be odd about a message: where two readers may see different things, and known ways of hiding content.
// The numbers are stable: they are written into logs and policies. docs/anomalies.md explains each.
#pragma once

#include <cstdint>

#include "vomsg/foundation/VoMsgExport.h"

class VoMsgEntity;

// How much an anomaly matters.
enum VoMsgAnomalyLevel : int {
  kVoAnomalyNote = 0,       // untidy, but read alike by everybody
  kVoAnomalyAmbiguous = 1,  // readers may disagree about what is there
  kVoAnomalyDangerous = 2   // a known way of hiding content
};

enum VoMsgAnomalyCode : int {
  // Header blocks (RFC 5322, RFC 2045).
  kVoAnomalyRepeatedContentType = 101,
  kVoAnomalyConflictingContentType = 102,
  kVoAnomalyRepeatedTransferEncoding = 103,
  kVoAnomalyConflictingTransferEncoding = 104,
  kVoAnomalyRepeatedDisposition = 105,
  kVoAnomalyConflictingDisposition = 106,
  kVoAnomalyRepeatedMimeVersion = 107,
  kVoAnomalyRepeatedFrom = 108,
  kVoAnomalyRepeatedSubject = 109,
  kVoAnomalyRepeatedDate = 110,
  kVoAnomalyRepeatedMessageId = 111,
  kVoAnomalyHeaderUnterminated = 112,
  kVoAnomalyHeaderBlankEnd = 113,
  kVoAnomalyHeaderJunkLine = 114,
  kVoAnomalyHeaderMboxLine = 115,
  kVoAnomalyHeaderNul = 116,
  kVoAnomalyHeaderLoneCr = 117,
  kVoAnomalyHeaderLoneLf = 118,
  kVoAnomalyHeader8Bit = 119,
  kVoAnomalyHeaderNameBlank = 120,
  kVoAnomalyHeaderLimit = 121,
  kVoAnomalyLineTooLong = 122,
  kVoAnomalyHeaderBlankFold = 123,

  // Multiparts, boundaries and delimiters (RFC 2046).
  kVoAnomalyBoundaryRepeated = 201,
  kVoAnomalyBoundaryConflicting = 202,
  kVoAnomalyBoundaryEmpty = 203,
  kVoAnomalyBoundaryTooLong = 204,
  kVoAnomalyBoundaryUnquoted = 205,
  kVoAnomalyBoundaryFolded = 206,
  kVoAnomalyBoundaryRfc2231 = 207,
  kVoAnomalyBoundaryComment = 208,
  kVoAnomalyBoundaryBlankEnd = 209,
  kVoAnomalyBoundaryElsewhere = 210,
  kVoAnomalyMultipartNoBoundary = 211,
  kVoAnomalyMultipartNoParts = 212,
  kVoAnomalyMultipartUnclosed = 213,
  kVoAnomalyBoundaryEqualOutside = 214,
  kVoAnomalyBoundaryPrefixOutside = 215,
  kVoAnomalyDelimiterTrailingText = 216,
  kVoAnomalyDelimiterAfterCr = 217,
  kVoAnomalyDelimiterInDecoded = 218,
  kVoAnomalyPartBehindClose = 219,
  kVoAnomalyPreambleText = 220,
  kVoAnomalyEpilogueText = 221,
  kVoAnomalyEpilogueAttachment = 222,
  kVoAnomalyPreambleAttachment = 223,
  kVoAnomalyEncodedMultipart = 224,
  kVoAnomalyEncodingUnknown = 225,
  kVoAnomalyEncodingMisspelt = 226,

  // Transfer encodings of bodies.
  kVoAnomalyBase64Junk = 301,
  kVoAnomalyBase64Padding = 302,
  kVoAnomalyBase64BehindPadding = 303,
  kVoAnomalyQuotedPrintableBad = 304,
  kVoAnomalyUuencodeUnended = 305,
  kVoAnomalyUuencodeBadLine = 306,
  kVoAnomalyBinHexUnended = 307,

  // File names (RFC 2183, RFC 2231).
  kVoAnomalyNameDiffers = 401,
  kVoAnomalyNameExtensionDiffers = 402,
  kVoAnomalyNameExtensionHidden = 403,
  kVoAnomalyNameControl = 404,
  kVoAnomalyNameBidirectional = 405,
  kVoAnomalyNamePath = 406,
  kVoAnomalyNameFormsDisagree = 407,

  // Encoded words (RFC 2047).
  kVoAnomalyWordUnknownCharset = 501,
  kVoAnomalyWordBroken = 502,
  kVoAnomalyWordMisplaced = 503,
  kVoAnomalyWordLineBreak = 504,
  kVoAnomalyWordNul = 505,

  // Texts and their labels.
  kVoAnomalyTextNotUtf8 = 601,
  kVoAnomalyTextUtf7 = 602,
  kVoAnomalyTextUtf16NoMark = 603,
  kVoAnomalyText8BitInAscii = 604,
  kVoAnomalyTextUnknownCharset = 605,

  // Content and its declared type.
  kVoAnomalyExecutableDisguised = 701,
  kVoAnomalyContentTypeDiffers = 702,

  // What lies in what.
  kVoAnomalyNestingLimit = 801,
  kVoAnomalyMessagePartial = 802,
  kVoAnomalyMessageExternalBody = 803,
  kVoAnomalyBesideSignature = 804,
  kVoAnomalyNestedUnreadable = 805,

  // TNEF streams ("winmail.dat").
  kVoAnomalyTnefDamaged = 901,
  kVoAnomalyTnefNested = 902,
  kVoAnomalyTnefUnreadable = 903,

  // Addresses.
  kVoAnomalyAddressSeveralAt = 1001,
  kVoAnomalyAddressEncodedWord = 1002,
  kVoAnomalyAddressGroup = 1003,
  kVoAnomalyFromSeveral = 1004
};

// One thing that is odd, and where. Offsets and lengths are in bytes.
struct VoMsgAnomaly {
  VoMsgAnomalyCode code;
  VoMsgAnomalyLevel level;
  VoMsgEntity* entity;       // borrowed from the tree
  unsigned part;             // the entity's number in document order; the entity that was asked has 0
  unsigned offset;           // in the source that the entity was read from
  unsigned length;           // may be 0: the place where something is missing
  bool isDecoded;            // that source is decoded content, not a stretch of the outermost source
  unsigned outermostOffset;  // in the outermost source: the same bytes, or inside decoded content the body of the
  unsigned outermostLength;  // part that carries it
};

// One English sentence that tells what is odd; null for a number that is no code. Static.
VOMSG_API const char* voAnomalyText(VoMsgAnomalyCode code);
// A short stable name, such as "boundary-conflicting"; null for a number that is no code. Static.
VOMSG_API const char* voAnomalyName(VoMsgAnomalyCode code);
// One English sentence that tells which reading the library takes; null for a number that is no code. Static.
VOMSG_API const char* voAnomalyReading(VoMsgAnomalyCode code);
// The level of every entry with that code; kVoAnomalyNote for a number that is no code.
VOMSG_API VoMsgAnomalyLevel voAnomalyLevel(VoMsgAnomalyCode code);
// The codes, in rising order: the number of them, and the code at `i`, which must be below it.
VOMSG_API unsigned voCountAnomalyCodes();
VOMSG_API VoMsgAnomalyCode voAnomalyCodeAt(unsigned i);

// Whether messages whose readFrom() begins from now on tell what is odd about them; off at first. Process-wide, without
// a lock: set it before the first message.
VOMSG_API void VoMsgSetCollectAnomalies(bool collect);
VOMSG_API bool VoMsgGetCollectAnomalies();
