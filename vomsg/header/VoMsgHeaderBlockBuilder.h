// Turns the lines of a header block into the fields and addresses of a VoMsgEntityHeader.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "vomsg/foundation/VoErrorCode.h"
#include "vomsg/foundation/VoMsgBoundary.h"
#include "vomsg/header/VoMsgHeaderLimits.h"
#include "vomsg/header/VoMsgHeaderName.h"
#include "vomsg/header/VoMsgHeaderSurvey.h"
#include "vomsg/header/VoMsgStructuredValue.h"

class VoMsgBufferedReader;
class VoMsgEntityHeader;
class VoMsgHeaderField;

namespace vomsg::detail {

class HeaderBlockBuilder {
 public:
  enum class Purpose : std::uint8_t {
    parse,   // limits fail, the block is marked
    rebuild  // a survey has done both; what a limit cuts short is cut all the same
  };
  // `defaultCharset` is borrowed, may be null.
  HeaderBlockBuilder(VoMsgEntityHeader& header, const char* defaultCharset, Purpose purpose);

  // Reads a block at the reader's position and hands the charset down to everything read.
  VoErrorCode readBlock(VoMsgBufferedReader& reader, const VoMsgBoundaryList* boundaries);
  // One logical line.
  VoErrorCode readLine(std::string_view line, std::uint64_t offset);
  // A structured field; yours.
  VoMsgHeaderField* makeStructured(std::string_view name, std::string_view value, std::uint64_t offset);

  // What walkHeaderBlock asks for.
  VoErrorCode add(HeaderName kind, std::string_view name, std::string_view value, std::uint64_t offset);
  void mark(HeaderMark mark, std::uint64_t offset);

 private:
  void addStructured(HeaderName kind, std::string_view name, std::string_view value, std::uint64_t offset);
  void handDownCharset();

  VoMsgEntityHeader& mHeader;
  const char* mpDefaultCharset;
  const Purpose mPurpose;
  const HeaderLimits mLimits;
  std::size_t mContentTypeAt;  // its place in the list, if any
  std::size_t mParameterCount = 0;
  StructuredValue mValue;
  std::string mName;
  std::string mText;
  std::string mScratch;
};

}  // namespace vomsg::detail
