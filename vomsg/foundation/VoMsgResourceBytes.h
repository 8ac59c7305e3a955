// The data part of a resource as one string, for texts that are worked on as a whole, and what such work needs.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "vomsg/foundation/VoErrorCode.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgResourceLocator.h"

namespace vomsg::detail {

// kVoReadFailed: there is no reader, or it ends before the resource's size.
VoErrorCode readBytes(const VoMsgResourceLocator& resource, std::string& bytes);
// Replaces what is there. kVoWriteFailed: no writer, or it fails.
VoErrorCode writeBytes(const VoMsgResourceLocator& resource, std::string_view bytes);
// A temporary resource that expects `size` bytes; null without memory.
std::unique_ptr<VoMsgResourceLocator> temporaryResource(std::uint64_t size);

// The text with every line end, a lone CR or LF too, as CR LF.
std::string withCrLf(std::string_view text);
// The text with every CR LF as LF; a CR alone stays.
std::string withoutCrLf(std::string_view text);

// Takes everything and keeps the number of bytes.
class CountingWriter : public VoMsgBufferedWriter {
 public:
  CountingWriter() : VoMsgBufferedWriter(0) {}
  bool open() override { return true; }
  bool close() override { return true; }
  bool isOpen() override { return true; }
  bool writeBuffer() override {
    mCount += mUsed;
    mUsed = 0;
    return true;
  }
  std::uint64_t count() const { return mCount + mUsed; }

 private:
  std::uint64_t mCount = 0;
};

}  // namespace vomsg::detail
