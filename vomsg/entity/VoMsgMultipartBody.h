// The body of a multipart: the range of the source that its children lie in, and the text around them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "vomsg/entity/VoMsgEntityBody.h"

class VOMSG_API VoMsgMultipartBody : public VoMsgEntityBody {
 public:
  VoMsgMultipartBody();
  ~VoMsgMultipartBody() override;
  bool isMultipart() const override;
  void dumpEntityBody(std::FILE* out) const override;

  // Makes it a body that the library writes: with the usual preamble.
  void setNewBody();
  const std::string& getPreamble() const { return mPreamble; }  // empty while the body comes from the source

  // What was removed from the source: a part with its header block, which takes its delimiter line along, or the text
  // behind the close delimiter.
  struct Range {
    std::uint32_t begin;
    std::uint32_t end;
    bool isPart;
  };
  // In any order; the writer sorts them. Ranges are within the body's.
  void addRemoved(Range range) { mRemoved.push_back(range); }
  const std::vector<Range>& getRemoved() const { return mRemoved; }

 private:
  std::string mPreamble;
  std::vector<Range> mRemoved;
};
