// Streams that are all overhead: each shape grows by one piece at a time and claims as much as a piece can.
#pragma once

#include <string>

#include "tests/tnef/StreamBuilder.h"

namespace vomsg::test {

struct HostileShape {
  const char* name;
  std::string (*make)(unsigned pieces);
  VoErrorCode code;
};

inline std::string repeated(unsigned n, const std::string& piece) {
  std::string bytes;
  bytes.reserve(n * piece.size());
  for (unsigned i = 0; i < n; ++i) bytes += piece;
  return bytes;
}

// One property whose values are all the same.
inline std::string valueList(unsigned type, unsigned id, unsigned claimed, unsigned n, const std::string& value) {
  return stream(record(0x9003, le32(1) + le16(type) + le16(id) + le32(claimed) + repeated(n, value)));
}

// A list of properties that are all the same.
inline std::string propertyList(unsigned claimed, unsigned n, const std::string& property) {
  return stream(record(0x9003, le32(claimed) + repeated(n, property)));
}

inline std::string nestedStreams(unsigned depth, const std::string& records) {
  std::string bytes = stream(records);
  for (unsigned i = 0; i < depth; ++i) bytes = stream(record(0x9005, list({object(0x3701, bytes)})));
  return bytes;
}

inline const std::string kNameNine = std::string(16, 's') + le32(0) + le32(9);

inline const HostileShape kHostileShapes[] = {
    {"rendering records", [](unsigned n) { return stream(repeated(n, record(0x9002, ""))); }, kVoSuccess},
    {"unknown records", [](unsigned n) { return stream(repeated(n, record(0x1234, ""))); }, kVoSuccess},
    {"titles", [](unsigned n) { return stream(repeated(n, record(0x8010, "t"))); }, kVoSuccess},
    {"empty lists", [](unsigned n) { return stream(repeated(n, record(0x9005, le32(0)))); }, kVoSuccess},
    {"numbers", [](unsigned n) { return propertyList(n, n, property(3, 0x3705, "abcd")); }, kVoSuccess},
    {"named numbers", [](unsigned n) { return propertyList(n, n, property(3, 0x8000, kNameNine + "abcd")); },
     kVoSuccess},
    {"empty texts", [](unsigned n) { return valueList(0x101E, 0x0E04, n, n, le32(0)); }, kVoSuccess},
    {"numbers without end", [](unsigned n) { return valueList(0x1003, 0x0E04, 0xFFFFFFFF, n, "abcd"); }, kVoBadFormat},
    {"bodies", [](unsigned n) { return valueList(0x101E, 0x1000, n, n, prefixed("b")); }, kVoSuccess},
    {"rich bodies that claim to be large",
     [](unsigned n) { return valueList(0x0102, 0x1009, n, n, prefixed(le32(0xFFFFFFFF) + le32(0xFFFFFFFF))); },
     kVoSuccess},
    {"streams side by side",
     [](unsigned n) { return valueList(0x000D, 0x3701, n, n, prefixed(kInterfaceId + le32(kVoTnefSignature))); },
     kVoSuccess},
    {"streams with a record side by side",
     [](unsigned n) { return valueList(0x000D, 0x3701, n, n, prefixed(kInterfaceId + stream(record(0x9002, "")))); },
     kVoSuccess},
    {"deep streams side by side",
     [](unsigned n) {
       return valueList(0x000D, 0x3701, n, n, prefixed(kInterfaceId + nestedStreams(25, record(0x9002, ""))));
     },
     kVoSuccess},
    {"a deep stream", [](unsigned n) { return nestedStreams(15, repeated(n, record(0x9002, ""))); }, kVoSuccess},
    {"properties without end", [](unsigned n) { return propertyList(0xFFFFFFFF, n, property(3, 0x3705, "abcd")); },
     kVoTnefMalformed},
};

// How many pieces make about so many bytes.
inline unsigned piecesFor(const HostileShape& shape, std::size_t bytes) {
  unsigned pieces = 1000;
  while (shape.make(pieces).size() < bytes) pieces *= 2;
  return pieces;
}

}  // namespace vomsg::test
