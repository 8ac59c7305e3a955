// The conversions of one value's encoded words. Making one costs more than converting a word, and a long
// subject names its charset again in each of its words.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "vomsg/charset/convert/VoMsgTextStage.h"

namespace vomsg::detail {

class WordConverters {
 public:
  explicit WordConverters(const char* target) : mTarget(target) {}  // borrowed

  // Appends `bytes`, which are in `charset`, converted to the target; as they are when the charsets are equal, no
  // converter handles the pair or the conversion fails.
  void append(std::string& out, std::string_view charset, std::string_view bytes);

 private:
  struct Slot {
    std::string charset;
    std::unique_ptr<TextStage> stage;  // null: the bytes pass
  };

  Slot& slotOf(std::string_view charset);
  std::unique_ptr<TextStage> stageFor(const std::string& charset) const;

  const char* mTarget;
  std::vector<Slot> mSlots;
  std::size_t mOldest = 0;  // replaced next once the slots are used up
  std::string mConverted;
};

}  // namespace vomsg::detail
