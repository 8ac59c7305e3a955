// What a text filter leaves behind: the filtered form of the text handed to it last.
#pragma once

#include "vomsg/foundation/VoMsgExport.h"

class VOMSG_API VoMsgTextFilterSession {
 public:
  VoMsgTextFilterSession() = default;
  VoMsgTextFilterSession(const VoMsgTextFilterSession&) = delete;
  VoMsgTextFilterSession& operator=(const VoMsgTextFilterSession&) = delete;
  virtual ~VoMsgTextFilterSession();

  // The charset that the text itself names, as a static string; null when it names none, as here.
  virtual const char* getCharSet();
  virtual char* getRecentContext();  // borrowed; null for an empty text, and when memory ran out
  // Bytes. More than 0 with a null context: memory ran out.
  virtual unsigned getRecentContextSize();
  // Releases the present context and takes over `data`, a block from malloc, or null. Always 0.
  virtual int setRecentContext(char* data, unsigned size);
  virtual int releaseRecentContext();  // Always 0.

  // Makes `text` the context, in the present block when copyText made it and it is large enough. `text` may lie in it.
  void copyText(const char* text, unsigned size);

 private:
  unsigned mRecentContextSize = 0;
  char* mpRecentContext = nullptr;
  unsigned mCapacity = 0;  // of a block that copyText made, its slack left aside; else 0
};
