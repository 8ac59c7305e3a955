// Where a MIME entity lies in the resource that it is read from, and what its parser saw there: everything about an
// entity that is neither header block nor body. The parser fills one in for each entity, the writer goes by it, and
// copying, restructuring and taking an edit back hand it on as one value, so that nothing of it can be forgotten.
#pragma once

#include <cstdint>

struct VoMsgEntityLayout {
  VoMsgEntityLayout()
      : hasHeaderRange(false),
        hasBodyRange(false),
        isMultipartBody(false),
        unterminatedHeader(false),
        isChildHeader(false),
        childrenChanged(false),
        belowSigned(false),
        isMarked(false),
        subtreeMarked(false),
        mayBePartial(false),
        inPlace(false) {}

  std::uint64_t headerEnd() const { return std::uint64_t{headerOffset} + headerSize; }
  std::uint64_t bodyEnd() const { return std::uint64_t{bodyOffset} + bodySize; }
  void endBodyAt(std::uint64_t end) {  // not before its start
    bodySize = end > bodyOffset ? static_cast<std::uint32_t>(end - bodyOffset) : 0;
  }
  // For the part that the content moves to, under a new block: what describes the body, and where the delimiters of a
  // multipart are declared.
  VoMsgEntityLayout ofMovedBody() const {
    VoMsgEntityLayout moved = *this;
    moved.hasHeaderRange = moved.unterminatedHeader = moved.isChildHeader = moved.mayBePartial = false;
    moved.declaredType = moved.declaredEncoding = 0;
    moved.isMarked = moved.subtreeMarked = moved.inPlace = false;
    return moved;
  }

  // The boundary epoch in which no multipart below had the same boundary; 0: not known.
  std::uint32_t aloneInEpoch = 0;

  // Bytes from the start of the source. The header block includes the empty line that ends it; the body of a part ends
  // before the line end that belongs to the delimiter line behind it.
  std::uint32_t headerOffset = 0;
  std::uint32_t headerSize = 0;
  std::uint32_t bodyOffset = 0;
  std::uint32_t bodySize = 0;

  // What the block in the source declares, by the numbers of VoMsgCommonValue.h; 0: not among those, ask the block.
  std::uint8_t declaredType = 0;
  std::uint8_t declaredEncoding = 0;

  bool hasHeaderRange : 1;      // the block lies in the source
  bool hasBodyRange : 1;        // the body lies in the source
  bool isMultipartBody : 1;     // the body was cut into children
  bool unterminatedHeader : 1;  // no empty line ended the block
  bool isChildHeader : 1;       // the limits of blocks below the top level apply
  bool childrenChanged : 1;     // a caller appended, inserted or removed children
  bool belowSigned : 1;         // lies below a multipart/signed as it was parsed
  bool isMarked : 1;            // the block carries a parser's mark that counts
  bool subtreeMarked : 1;       // so does a block in the subtree, down to nested messages
  bool mayBePartial : 1;        // the block declares some message/* type
  bool inPlace : 1;             // lies between the delimiters of its parent's source
};
