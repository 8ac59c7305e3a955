// What the tests of header blocks share.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "tests/support/WindowStreams.h"
#include "vomsg/foundation/VoMsgOptions.h"
#include "vomsg/header/VoMsgEntityHeader.h"

namespace vomsg::test {

// Restores the process-wide settings.
struct KeepOptions {
  int fields = MaxEntityHeaders, addresses = MaxHeaderAddress, params = MaxHeaderParams, extra = VoMsgExtraOption;
  bool noAddressLimit = NoMaxAddressForChild;
  ~KeepOptions() {
    MaxEntityHeaders = fields;
    MaxHeaderAddress = addresses;
    MaxHeaderParams = params;
    VoMsgExtraOption = extra;
    NoMaxAddressForChild = noAddressLimit;
  }
};

inline std::unique_ptr<VoMsgEntityHeader> parseBlock(std::string_view text, VoErrorCode* code = nullptr,
                                                     bool isChild = false) {
  auto header = std::make_unique<VoMsgEntityHeader>();
  header->setChild(isChild);
  ExactMemoryReader source(text);
  const VoErrorCode result = header->parseHeaderPart(&source, "us-ascii", nullptr);
  if (code) *code = result;
  return header;
}

// The block written anew.
inline std::string written(VoMsgEntityHeader& header) {
  LimitedWriter writer;
  const bool failed = voFailed(header.writeNewHeaderPart(&writer)) || !writer.flush();
  return failed ? "failed" : writer.text;
}

}  // namespace vomsg::test
