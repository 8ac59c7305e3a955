// Content to be read piece by piece.
#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>
#include <memory>

#include "vomsg/foundation/VoMsgBufferedReader.h"

namespace vomsg {

class Stream {
 public:
  explicit Stream(std::unique_ptr<VoMsgBufferedReader> reader) : mReader(std::move(reader)) {}

  // Up to `n` bytes to `target`; fewer only at the end.
  std::size_t read(char* target, std::size_t n) {
    return mReader->read(target, static_cast<unsigned>(std::min<std::size_t>(n, std::numeric_limits<int>::max())));
  }
  std::size_t size() const { return mReader->getSize(); }
  VoMsgBufferedReader* reader() const { return mReader.get(); }  // borrowed

 private:
  std::unique_ptr<VoMsgBufferedReader> mReader;
};

}  // namespace vomsg
