// What the tests of header blocks share: limits that come back, and blocks in heap memory of their exact size.
#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>

#include "tests/support/WindowStreams.h"
#include "vomsg/foundation/VoMsgMemoryReader.h"
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

struct ExactReader {
  explicit ExactReader(std::string_view text)
      : bytes(new unsigned char[text.size()]), reader(bytes.get(), static_cast<unsigned>(text.size())) {
    std::copy(text.begin(), text.end(), bytes.get());
    reader.open();
  }
  std::unique_ptr<unsigned char[]> bytes;
  VoMsgMemoryReader reader;
};

inline std::unique_ptr<VoMsgEntityHeader> parseBlock(std::string_view text, VoErrorCode* code = nullptr,
                                                     bool isChild = false) {
  auto header = std::make_unique<VoMsgEntityHeader>();
  header->setChild(isChild);
  ExactReader source(text);
  const VoErrorCode result = header->parseHeaderPart(&source.reader, "us-ascii", nullptr);
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
