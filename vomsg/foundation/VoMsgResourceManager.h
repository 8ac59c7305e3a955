// Makes temporary resources: in memory while they are small and the total allows, else in a temporary file.
#pragma once

#include <atomic>

#include "vomsg/foundation/VoMsgExport.h"

class VoMsgResourceLocator;

class VOMSG_API VoMsgResourceManager {
 public:
  static VoMsgResourceManager instance;

  // The directory for temporary files, ending in "/"; null: the system's own. The path is copied.
  static const char* getTmpDirPath();
  static void setTmpDirPath(const char* path);
  // The largest temporary resource kept in memory; never below 1 MiB.
  static unsigned getMaxMemoryResourceSize();
  static void setMaxMemoryResourceSize(unsigned size);
  // The limit of all temporary resources in memory; never below 32 MiB.
  static unsigned getTotalAllocateMemoryLimit();
  static void setTotalAllocateMemoryLimit(unsigned limit);
  static unsigned currentAllocateMemorySize();

  // A path "VOMSG_..." that nobody can predict and nothing stands on yet; the caller frees it. When the directory that
  // was set cannot be used, the system's own serves (P_tmpdir; no environment variable is read), and a line in the
  // host's warning and error log says so. Null when there is none at all.
  static char* createTmpFilePath();
  // A temporary file resource, made exclusively with mode 0600 when its first stream opens. Yours; null on failure.
  static VoMsgResourceLocator* createTmpFileResource();
  // A temporary resource for `size` bytes; size 0 always gives a file. Yours; null on failure.
  static VoMsgResourceLocator* createTmpResource(unsigned size);
  // Gives the memory of a temporary resource back to the budget; resources do it themselves when they are destroyed.
  static void freeTmpResource(VoMsgResourceLocator* resource);

 private:
  // Initialised at compile time, so that it serves the constructors of other static objects too.
  constexpr VoMsgResourceManager() {}
  ~VoMsgResourceManager();

  char* mpTmpDirPath = nullptr;
  unsigned mMaxMemoryResourceSize = 0x100000;
  std::atomic<unsigned> mAllocated{0};  // by messages of several threads
  unsigned mTotalLimit = 0x2000000;
};
