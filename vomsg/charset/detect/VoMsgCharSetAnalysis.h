// Recognises the charset of a text that declares none.
//
//   char* charset = nullptr;
//   if (VoMsgCharSetAnalysis::getInstance()->analysisText(reader, "text/plain", charset)) use(charset);
//   free(charset);
#pragma once

#include <memory>

#include "vomsg/foundation/VoMsgExport.h"

class VoMsgBufferedReader;
class VoMsgCharSetDetector;
class VoMsgCharSetDetectorFacade;
class VoMsgTextFormatFilterPool;

class VOMSG_API VoMsgCharSetAnalysis {
 public:
  // How a name was found, for those who want to know more than the name.
  struct Evidence {
    unsigned bytes = 0;  // of the text, read until the decision or the end
    // The one that decided; null when none did. It lives as long as the analysis.
    const VoMsgCharSetDetector* detector = nullptr;
  };

  // The only instance, built when the library is loaded.
  static VoMsgCharSetAnalysis* getInstance();

  // Reads from `reader` (borrowed) on until a detector decides or the text ends; there is no guess at the end. `format`
  // is the content type; only "text/plain" is known. The name is returned and put into `charset`: a new string, the
  // caller's to free(). Null in both when no charset is recognised, whatever the reason.
  char* analysisText(VoMsgBufferedReader* reader, const char* format, char*& charset);
  char* analysisText(VoMsgBufferedReader* reader, const char* format, char*& charset, Evidence& evidence);

  VoMsgCharSetAnalysis(const VoMsgCharSetAnalysis&) = delete;
  VoMsgCharSetAnalysis& operator=(const VoMsgCharSetAnalysis&) = delete;
  ~VoMsgCharSetAnalysis();

 private:
  VoMsgCharSetAnalysis();

  std::unique_ptr<VoMsgCharSetDetectorFacade> facade;
  std::unique_ptr<VoMsgTextFormatFilterPool> filterPool;
};
