// Where the searches leave what they find: they know offsets in one source, the sink knows whose they are.
#pragma once

#include <cstdint>

#include "vomsg/anomaly/VoMsgAnomalyList.h"

namespace vomsg::detail {

// A source within the outermost one. As long as nothing was decoded on the way, `base` is where it begins there; behind
// a decoding, `carrierOffset` and `carrierLength` are the body of the outermost part that was decoded.
struct AnomalySource {
  bool isDecoded = false;
  std::uint64_t base = 0;
  std::uint32_t carrierOffset = 0;
  std::uint32_t carrierLength = 0;

  // The source of what lies in [offset, offset + length) of this one.
  AnomalySource inside(bool decoded, std::uint64_t offset, std::uint32_t length) const {
    if (isDecoded) return *this;
    if (!decoded) return {false, base + offset, 0, 0};
    return {true, 0, static_cast<std::uint32_t>(base + offset), length};
  }
};

class AnomalySink {
 public:
  explicit AnomalySink(VoMsgAnomalyList& list) : mList(list) {}

  // What is added from now on belongs to `entity`, number `part`, read from `source`.
  void enter(VoMsgEntity* entity, unsigned part, const AnomalySource& source) {
    mpEntity = entity;
    mPart = part;
    mSource = source;
  }

  void add(VoMsgAnomalyCode code, std::uint64_t offset, std::uint64_t length) {
    VoMsgAnomaly entry{};
    entry.code = code;
    entry.level = voAnomalyLevel(code);
    entry.entity = mpEntity;
    entry.part = mPart;
    entry.offset = static_cast<unsigned>(offset);
    entry.length = static_cast<unsigned>(length);
    entry.isDecoded = mSource.isDecoded;
    entry.outermostOffset = mSource.isDecoded ? mSource.carrierOffset : static_cast<unsigned>(mSource.base + offset);
    entry.outermostLength = mSource.isDecoded ? mSource.carrierLength : entry.length;
    mList.add(entry);
  }

 private:
  VoMsgAnomalyList& mList;
  VoMsgEntity* mpEntity = nullptr;
  unsigned mPart = 0;
  AnomalySource mSource;
};

}  // namespace vomsg::detail
