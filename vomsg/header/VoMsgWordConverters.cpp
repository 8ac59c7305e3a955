#include "vomsg/header/VoMsgWordConverters.h"

#include <algorithm>

#include "vomsg/charset/convert/VoCharsetName.h"
#include "vomsg/charset/convert/VoMsgConverterFactory.h"

namespace vomsg::detail {
namespace {

constexpr std::size_t kSlots = 8;  // no honest value mixes more charsets, and a hostile one must not collect converters

}  // namespace

void WordConverters::GiveBack::operator()(VoMsgCharsetConverter* converter) const {
  VoMsgConverterFactory::getInstance()->destoryConverter(converter);
}

void WordConverters::append(std::string& out, std::string_view charset, std::string& bytes) {
  const Slot& slot = slotOf(charset);
  mConverted.clear();
  const bool converted = slot.converter && !voFailed(slot.converter->convert(mConverted, bytes));
  out += converted ? mConverted : bytes;
}

WordConverters::Slot& WordConverters::slotOf(std::string_view charset) {
  const auto known =
      std::find_if(mSlots.begin(), mSlots.end(), [&](const Slot& slot) { return slot.charset == charset; });
  if (known != mSlots.end()) return *known;

  Slot slot{std::string(charset), nullptr};
  if (!charset.empty() && !voIsEqualCharsetName(slot.charset.c_str(), mTarget))
    slot.converter.reset(VoMsgConverterFactory::getInstance()->createConverter(mTarget, slot.charset.c_str(), 1, '?'));
  if (mSlots.size() < kSlots) return mSlots.emplace_back(std::move(slot));
  Slot& replaced = mSlots[mOldest];
  mOldest = (mOldest + 1) % kSlots;
  return replaced = std::move(slot);
}

}  // namespace vomsg::detail
