#include "vomsg/header/VoMsgWordConverters.h"

#include <algorithm>

#include "vomsg/charset/convert/VoCharsetName.h"
#include "vomsg/charset/convert/VoMsgConverterFactory.h"

namespace vomsg::detail {
namespace {

constexpr std::size_t kSlots = 8;  // no honest value mixes more charsets, and a hostile one must not collect converters

}  // namespace

void WordConverters::append(std::string& out, std::string_view charset, std::string_view bytes) {
  Slot& slot = slotOf(charset);
  mConverted.clear();
  const bool converted = slot.stage && !voFailed(slot.stage->convert(bytes, true, mConverted));
  if (!converted && slot.stage) slot.stage = stageFor(slot.charset);
  out += converted ? std::string_view(mConverted) : bytes;
}

std::unique_ptr<TextStage> WordConverters::stageFor(const std::string& charset) const {
  return VoMsgConverterFactory::getInstance()->newStage(mTarget, charset.c_str(), {true, '?'});
}

WordConverters::Slot& WordConverters::slotOf(std::string_view charset) {
  const auto known =
      std::find_if(mSlots.begin(), mSlots.end(), [&](const Slot& slot) { return slot.charset == charset; });
  if (known != mSlots.end()) return *known;

  Slot slot{std::string(charset), nullptr};
  if (!charset.empty() && !voIsEqualCharsetName(slot.charset.c_str(), mTarget)) slot.stage = stageFor(slot.charset);
  if (mSlots.size() < kSlots) return mSlots.emplace_back(std::move(slot));
  Slot& replaced = mSlots[mOldest];
  mOldest = (mOldest + 1) % kSlots;
  return replaced = std::move(slot);
}

}  // namespace vomsg::detail
