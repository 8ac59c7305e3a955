// Data in a file; the resource fork, when there is one, in a second file.
#pragma once

#include "vomsg/foundation/VoMsgResourceLocator.h"

class VOMSG_API VoMsgFileResource : public VoMsgResourceLocator {
 public:
  VoMsgFileResource(const char* path, const char* name, const char* charset);
  // With `temporary` set, the files are deleted with the resource, also one that stood there before.
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
  friend class VoMsgResourceManager;
  // A file of the library's own making is created exclusively, by the first stream to write it; until then
  // whatever stands under its name is not ours.
  enum class Part { named, toBeCreated, created };

  vomsg::detail::CString mPath;
  mutable vomsg::detail::CString mForkPath;
  mutable Part mParts[2] = {Part::named, Part::named};
};
