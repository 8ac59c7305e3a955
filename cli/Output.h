// Where the subcommands put data: files that appear only when they are complete.
#pragma once

#include <string>

#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgResourceLocator.h"

namespace cli {

// A file being made, as a resource that the library can write to. It exists under its name once commit() succeeded;
// until then it is a temporary file beside it, which goes with this object and when a signal ends the program.
class OutputFile : public VoMsgResourceLocator {
 public:
  // Replaces `path` on commit(); "-" is the standard output and a device or pipe is written to directly.
  // Failure: kCannotCreate.
  explicit OutputFile(const std::string& path);
  // A new file in the opened folder `directory`, whose path `folder` is for messages and signals. A name that is
  // taken gets a number, a link is never followed. Failure: kCannotCreate.
  OutputFile(int directory, const std::string& folder, const std::string& name);
  ~OutputFile() override;

  void commit();                                     // Failure: kCannotCreate
  const std::string& path() const { return mPath; }  // as it is after commit()

  int getResourceType() const override;
  VoMsgBufferedReader* getInputStream(VoMsgResourceDataType type) const override;  // null: it is written only
  VoMsgBufferedWriter* getOutputStream(VoMsgResourceDataType type) const override;
  bool equal(VoMsgResourceLocator* other) const override;
  unsigned getSize(VoMsgResourceDataType type) const override;
  bool hasResourceFork() const override;

 private:
  std::string mPath;
  std::string mTemporary;  // empty: nothing to rename or to remove
  int mFile = -1;
  mutable int mError = 0;  // the first one that a writer met
};

}  // namespace cli
