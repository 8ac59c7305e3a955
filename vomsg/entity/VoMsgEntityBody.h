// The body of a MIME entity: where it lies in the source, and whether it still comes from there.
#pragma once

#include <cstdint>
#include <cstdio>

#include "vomsg/foundation/VoMsgExport.h"

class VOMSG_API VoMsgEntityBody {
 public:
  VoMsgEntityBody(const VoMsgEntityBody&) = delete;
  VoMsgEntityBody& operator=(const VoMsgEntityBody&) = delete;
  virtual ~VoMsgEntityBody();
  virtual bool isMultipart() const = 0;                   // a VoMsgMultipartBody, else a VoMsgSingleBody
  virtual void dumpEntityBody(std::FILE* out) const = 0;  // for people; nothing for null

  // Bytes from the start of the source, and a length. Signed by contract: sources of 2 GiB and more are refused.
  std::int32_t getBodyOffset() const { return mBodyOffset; }
  std::int32_t getBodySize() const { return mBodySize; }
  bool isNewBody() const { return mIsNewBody; }  // replaced: its bytes no longer come from the source
  // The parser's; not checked against any source.
  void setBodyRange(std::int32_t offset, std::int32_t size) {
    mBodyOffset = offset;
    mBodySize = size;
  }

 protected:
  VoMsgEntityBody() = default;

  std::int32_t mBodyOffset = 0;
  std::int32_t mBodySize = 0;
  bool mIsNewBody = false;
};
