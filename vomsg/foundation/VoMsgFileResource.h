// Data in a file; the resource fork, when there is one, in a second file.
#pragma once

#include "vomsg/foundation/VoMsgResourceLocator.h"

class VOMSG_API VoMsgFileResource : public VoMsgResourceLocator {
 public:
  VoMsgFileResource(const char* path, const char* name, const char* charset);
  // With `temporary` set, the files are deleted with the resource.
  VoMsgFileResource(const char* path, signed char temporary, const char* name, const char* charset);
  ~VoMsgFileResource() override;
  int getResourceType() const override;
  VoMsgBufferedReader* getInputStream(VoMsgResourceDataType type) const override;
  VoMsgBufferedWriter* getOutputStream(VoMsgResourceDataType type) const override;
  bool equal(VoMsgResourceLocator* other) const override;
  unsigned getSize(VoMsgResourceDataType type) const override;
  bool hasResourceFork() const override;

  const char* getFilePath(VoMsgResourceDataType type) const;  // borrowed; null for a part that is not there

 private:
  vomsg::detail::CString mPath;
  mutable vomsg::detail::CString mForkPath;
  mutable bool mCreated[2] = {false, false};  // the temporary file of that part has been made
};
