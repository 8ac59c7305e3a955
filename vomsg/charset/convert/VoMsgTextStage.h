// One step of a conversion, fed with a text in pieces. A converter is such steps in a row.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "vomsg/foundation/VoErrorCode.h"

namespace vomsg::detail {

class TextStage {
 public:
  TextStage() = default;
  TextStage(const TextStage&) = delete;
  TextStage& operator=(const TextStage&) = delete;
  virtual ~TextStage();
  // Appends to `out` what the next piece of the text becomes. `last` ends the text, after that the next piece begins
  // another one. Nobody can tell where the pieces were cut. A code ends the conversion; the stage is of no use then.
  virtual VoErrorCode convert(std::string_view piece, bool last, std::string& out) = 0;
};

// `first`, and `second` on what that gives; pieces are cut small in between.
class StageChain final : public TextStage {
 public:
  StageChain(std::unique_ptr<TextStage> first, std::unique_ptr<TextStage> second);
  ~StageChain() override;
  VoErrorCode convert(std::string_view piece, bool last, std::string& out) override;

 private:
  const std::unique_ptr<TextStage> mpFirst;
  const std::unique_ptr<TextStage> mpSecond;
  std::string mBetween;
};

}  // namespace vomsg::detail
