// A stretch of another resource, read in place: the source of a message that lies unencoded in its part.
#pragma once

#include <cstdint>

#include "vomsg/foundation/VoMsgResourceLocator.h"
#include "vomsg/foundation/VoMsgResourceState.h"
#include "vomsg/foundation/VoObjectStub.h"

namespace vomsg::detail {

class RangeResource : public VoMsgResourceLocator {
 public:
  static constexpr int kResourceType = 3;  // neither a whole file nor a whole block

  // [offset, offset + size) of `whole`, which it shares; the range must lie inside. `state` is that of the whole when
  // the range was cut: once the whole has changed, the range cannot be read any more. Unknown: it is not compared.
  RangeResource(const VoObjectStub<VoMsgResourceLocator>& whole, const ResourceState& state, std::uint32_t offset,
                std::uint32_t size);
  ~RangeResource() override;
  int getResourceType() const override;
  VoMsgBufferedReader* getInputStream(VoMsgResourceDataType type) const override;
  VoMsgBufferedWriter* getOutputStream(VoMsgResourceDataType type) const override;  // always null
  bool equal(VoMsgResourceLocator* other) const override;                           // true for the whole, too
  unsigned getSize(VoMsgResourceDataType type) const override;
  bool hasResourceFork() const override;
  // Whether the whole still is what it was, asked through `reader`, an open one that this range gave.
  bool isUnchanged(VoMsgBufferedReader& reader) const;
  const ResourceState& wholeState() const { return mState; }
  VoMsgResourceLocator* getWhole() const { return mWhole.getObject(); }  // borrowed; never a range itself

 private:
  VoObjectStub<VoMsgResourceLocator> mWhole;
  ResourceState mState;
  std::uint32_t mOffset;
  std::uint32_t mSize;
};

}  // namespace vomsg::detail
