// A named piece of data in a file or in memory: what messages are read from and written to. It has a data part
// and, for Macintosh files carried in BinHex, perhaps a resource fork.
#pragma once

#include <cstdint>
#include <memory>

#include "vomsg/foundation/VoErrorCode.h"
#include "vomsg/foundation/VoMsgCString.h"
#include "vomsg/foundation/VoMsgExport.h"

class VoMsgBufferedReader;
class VoMsgBufferedWriter;
class VoMsgMultiString;

class VOMSG_API VoMsgResourceLocator {
 public:
  enum VoMsgResourceDataType : int { dataPart = 0, resourceForkPart = 1 };
  enum ResourceType : int { file = 1, memory = 2 };

  VoMsgResourceLocator(const VoMsgResourceLocator&) = delete;
  VoMsgResourceLocator& operator=(const VoMsgResourceLocator&) = delete;

  virtual ~VoMsgResourceLocator();
  virtual int getResourceType() const = 0;  // a ResourceType
  // A new opened stream on one part, which the caller deletes; null when it cannot be opened.
  virtual VoMsgBufferedReader* getInputStream(VoMsgResourceDataType type) const = 0;
  // The same for writing; what is written replaces the part's content.
  virtual VoMsgBufferedWriter* getOutputStream(VoMsgResourceDataType type) const = 0;
  // True when both designate the same data.
  virtual bool equal(VoMsgResourceLocator* other) const = 0;
  virtual unsigned getSize(VoMsgResourceDataType type) const = 0;  // bytes; 0 when it cannot be told
  virtual std::uint32_t getFileType() const;                       // Macintosh file type, "????" at first
  virtual std::uint32_t getFileCreator() const;                    // Macintosh creator, "????" at first
  virtual std::uint16_t getFinderFlag() const;                     // Finder flags, 0 at first
  virtual void setFileType(std::uint32_t type);
  virtual void setFileCreator(std::uint32_t creator);
  virtual void setFinderFlag(std::uint16_t flag);
  virtual bool hasResourceFork() const = 0;

  // The name in `charset` (converted from the charset it was given in, "?" for what that cannot say), or as
  // given when `charset` is null. Borrowed; "" when there is no name or no conversion. Never null.
  const char* getResourceName(const char* charset) const;
  // Replaces name and name charset; both are copied. A null name leaves none.
  void setResourceName(const char* name, const char* charset);

  // Tells the resource manager that a temporary resource goes; nothing for other resources.
  void freeTmpResource();

 protected:
  // `charset` null means "us-ascii"; a null name leaves none.
  VoMsgResourceLocator(const char* name, const char* charset);

  vomsg::detail::CString mNameCharset;
  std::unique_ptr<VoMsgMultiString> mpName;
  signed char mIsTemporary = 0;
  std::uint32_t mFileType;
  std::uint32_t mFileCreator;
  std::uint16_t mFinderFlag = 0;

  friend class VoMsgResourceManager;
};
