// The library's process-wide limits and options as one value.
#pragma once

#include <string>

#include "vomsg/entity/VoMsgMailMessage.h"
#include "vomsg/foundation/VoMsgOptions.h"
#include "vomsg/foundation/VoMsgResourceManager.h"

namespace vomsg {

// As it is made it holds the library's defaults. Change what you need and apply() it once, before the first message
// and before a second thread: the library reads its settings without locks.
struct Settings {
  int maxFields = 100;                // header fields per block; 0: no limit
  int maxAddresses = 100;             // addresses per address field; 0: no limit
  int maxParameters = 100;            // parameters per field; 0: no limit
  bool limitAddressesInside = true;   // the limit of addresses holds below the top level too
  int maxNesting = 20;                // the deepest nesting level that is still opened
  unsigned maxMemoryEach = 0x100000;  // the largest temporary resource kept in memory, in bytes; 1 MiB at least
  unsigned maxMemory = 0x2000000;     // all temporary resources in memory, in bytes; 32 MiB at least
  std::string temporaryFolder;        // empty: the system's own
  int options = 0;                    // bits of VoMsgExtraOption

  void apply() const {
    MaxEntityHeaders = maxFields;
    MaxHeaderAddress = maxAddresses;
    MaxHeaderParams = maxParameters;
    VoMsgSetNoMaxAddressForChild(!limitAddressesInside);
    VoMsgMailMessage::mMaxExtractLevel = maxNesting;
    VoMsgResourceManager::setMaxMemoryResourceSize(maxMemoryEach);
    VoMsgResourceManager::setTotalAllocateMemoryLimit(maxMemory);
    VoMsgResourceManager::setTmpDirPath(temporaryFolder.empty() ? nullptr : temporaryFolder.c_str());
    VoMsgExtraOption = options;
  }
};

}  // namespace vomsg
