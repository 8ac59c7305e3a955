// The converters of one value's encoded words. Making a converter costs far more than converting a word, and a long
// subject names its charset again in each of its words.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

class VoMsgCharsetConverter;

namespace vomsg::detail {

class WordConverters {
 public:
  explicit WordConverters(const char* target) : mTarget(target) {}  // borrowed

  // Appends `bytes`, which are in `charset`, converted to the target; as they are when the charsets are equal, no
  // converter handles the pair or the conversion fails. `bytes` is left in an unspecified state.
  void append(std::string& out, std::string_view charset, std::string& bytes);

 private:
  struct GiveBack {
    void operator()(VoMsgCharsetConverter* converter) const;
  };
  struct Slot {
    std::string charset;
    std::unique_ptr<VoMsgCharsetConverter, GiveBack> converter;  // null: the bytes pass
  };

  Slot& slotOf(std::string_view charset);

  const char* mTarget;
  std::vector<Slot> mSlots;
  std::size_t mOldest = 0;  // replaced next once the slots are used up
  std::string mConverted;
};

}  // namespace vomsg::detail
