// Where a codec's output goes when it need not be stored as one: it comes in pieces of some kilobytes.
#pragma once

#include <cstdint>
#include <string_view>

#include "vomsg/foundation/VoMsgStreamAccess.h"

namespace vomsg::detail {

class PieceSink {
 public:
  // False ends the codec's work.
  virtual bool put(std::string_view piece) = 0;

 protected:
  ~PieceSink() = default;
};

class WriterSink final : public PieceSink {
 public:
  explicit WriterSink(VoMsgBufferedWriter& writer) : mWriter(writer) {}
  bool put(std::string_view piece) override { return WriterAccess::writeThrough(mWriter, piece.data(), piece.size()); }

 private:
  VoMsgBufferedWriter& mWriter;
};

class CountingSink final : public PieceSink {
 public:
  bool put(std::string_view piece) override {
    count += piece.size();
    return true;
  }
  std::uint64_t count = 0;
};

}  // namespace vomsg::detail
