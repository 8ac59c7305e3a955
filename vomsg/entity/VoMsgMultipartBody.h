// The body of a multipart: the range of the source that its children lie in, and the text around them.
#pragma once

#include <string>

#include "vomsg/entity/VoMsgEntityBody.h"

class VOMSG_API VoMsgMultipartBody : public VoMsgEntityBody {
 public:
  VoMsgMultipartBody();
  ~VoMsgMultipartBody() override;
  bool isMultipart() const override;
  void dumpEntityBody(std::FILE* out) const override;

  // Makes it a body that the library writes: with the usual preamble.
  void setNewBody();
  const std::string& getPreamble() const { return mPreamble; }

 private:
  std::string mPreamble;
};
