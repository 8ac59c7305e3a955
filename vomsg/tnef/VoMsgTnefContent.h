// Getting the bytes of records and property values into resources.
#pragma once

#include <cstdint>
#include <memory>

#include "vomsg/foundation/VoErrorCode.h"

class VoMsgBufferedReader;
class VoMsgResourceLocator;

namespace vomsg::detail {

// Opens a closed reader while it lives, and leaves an open one alone.
class OpenReader {
 public:
  explicit OpenReader(VoMsgBufferedReader* reader);
  ~OpenReader();
  OpenReader(const OpenReader&) = delete;
  OpenReader& operator=(const OpenReader&) = delete;
  bool isOpen() const { return mIsOpen; }

 private:
  VoMsgBufferedReader* mpReader;
  bool mIsOpen;
  bool mWasOpen;
};

// Sums the data of `resource` as a record does. False when it cannot all be read.
bool sumContent(const VoMsgResourceLocator& resource, unsigned short& sum);

// A temporary resource with the data of another one; null on failure.
std::unique_ptr<VoMsgResourceLocator> copyOfResource(const VoMsgResourceLocator& from);

// Each replaces the data part of `target`. kVoReadFailed: `from` gives no reader, or `target` no writer where a whole
// resource is copied; kVoWriteFailed: no writer, or it refused.
VoErrorCode copyResource(const VoMsgResourceLocator& from, const VoMsgResourceLocator& target);
VoErrorCode writeBytes(const VoMsgResourceLocator& target, const char* data, std::uint32_t length);
// kVoTnefMalformed: the source ends early; nothing is written then.
VoErrorCode copyStretch(const VoMsgResourceLocator& target, VoMsgBufferedReader& source, std::uint32_t offset,
                        std::uint32_t length);

// The content of the property value whose length field lies at `offset` of `source`: the bytes of a text or a binary
// value, what follows the interface id of an object, the expanded text of compressed RTF. A value has no content where
// it has no bytes (kVoNoContent).
enum class ValueContent : std::uint8_t { bytes, object, compressedRtf };
VoErrorCode copyValueContent(const VoMsgResourceLocator& target, VoMsgBufferedReader& source, std::uint32_t offset,
                             ValueContent content);
// How many bytes that is; compressed RTF is expanded to find out. 0 when the source ends early.
std::uint32_t valueContentSize(VoMsgBufferedReader& source, std::uint32_t offset, ValueContent content);

}  // namespace vomsg::detail
