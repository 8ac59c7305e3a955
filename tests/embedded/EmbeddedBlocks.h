// Blocks as senders put them into text.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "tests/support/WindowStreams.h"
#include "vomsg/encoding/VoBinHex.h"
#include "vomsg/encoding/VoUUEncode.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"

namespace vomsg::test {

inline std::string uuencode(const std::string& bytes, const char* name) {
  return through(bytes, 4096, [&](auto& out, auto& in) { EXPECT_TRUE(_encodeUUEncode(&out, &in, name)); });
}

inline std::string binHex(const std::string& bytes, const char* name) {
  const VoMsgMemoryResource source(const_cast<char*>(bytes.data()), static_cast<unsigned>(bytes.size()), name,
                                   "us-ascii");
  LimitedWriter writer;
  EXPECT_EQ(voEncodeBinHex(&writer, &source), kVoSuccess);
  return writer.text;
}

}  // namespace vomsg::test
