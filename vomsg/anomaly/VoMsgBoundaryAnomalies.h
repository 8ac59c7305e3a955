// What is odd about how a multipart names its boundary, about the delimiters in its source, and about the transfer
// encoding a part declares.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "vomsg/anomaly/VoMsgAnomalySink.h"
#include "vomsg/anomaly/VoMsgRawFields.h"

class VoMsgBufferedReader;

namespace vomsg::detail {

// How Content-Type and the other fields give a boundary, and what the block says of its transfer encoding.
void findBoundaryParameters(const std::vector<RawField>& fields, std::uint64_t base, AnomalySink& sink);
void findDeclaredEncoding(const std::vector<RawField>& fields, std::uint64_t base, AnomalySink& sink);

// The boundaries in force at some place, outermost first. Only the innermost ones are compared with lines, so that a
// line costs the same however deep it lies.
class OpenBoundaries {
 public:
  void push(std::string boundary) { mOpen.push_back(std::move(boundary)); }
  void pop() { mOpen.pop_back(); }
  bool empty() const { return mOpen.empty(); }
  // How `boundary`, which is about to be pushed, collides with one that is open.
  void findCollision(const std::string& boundary, std::uint64_t offset, std::uint64_t length, AnomalySink& sink) const;
  enum class Match { none, delimiter, trailingText };
  // What a line, given without its line end, is to them.
  Match match(std::string_view line) const;

 private:
  static constexpr std::size_t kCompared = 32;
  std::vector<std::string> mOpen;
};

// A stretch of source between, before or behind the parts of a multipart.
enum class GapKind : std::uint8_t { preamble, between, epilogue };
struct Gap {
  GapKind kind;
  std::uint64_t offset;
  std::uint64_t length;
};
// Looks at the delimiters of `boundary` in a gap, and at the text beside them. `isClosed` is set when a close delimiter
// is met.
void findGapAnomalies(VoMsgBufferedReader& reader, const Gap& gap, std::string_view boundary, bool& isClosed,
                      AnomalySink& sink);
// Looks through [offset, offset + length), a body as it stands, for lines that are nearly delimiters or, with
// `limitLines`, too long. At most one entry of each kind.
void findNearDelimiters(VoMsgBufferedReader& reader, std::uint64_t offset, std::uint64_t length,
                        const OpenBoundaries& open, bool limitLines, AnomalySink& sink);
// Whether a line of the `length` bytes of decoded content is a delimiter.
bool holdsDelimiter(VoMsgBufferedReader& reader, std::uint64_t length, const OpenBoundaries& open);

}  // namespace vomsg::detail
