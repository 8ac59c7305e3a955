#include "vomsg/charset/convert/VoMsgTextStage.h"

#include <utility>

namespace vomsg::detail {

namespace {
constexpr std::size_t kPiece = 32768;
}  // namespace

TextStage::~TextStage() = default;

StageChain::StageChain(std::unique_ptr<TextStage> first, std::unique_ptr<TextStage> second)
    : mpFirst(std::move(first)), mpSecond(std::move(second)) {}

StageChain::~StageChain() = default;

VoErrorCode StageChain::convert(std::string_view piece, bool last, std::string& out) {
  for (;;) {
    const std::string_view now = piece.substr(0, kPiece);
    const bool isWhole = now.size() == piece.size();
    mBetween.clear();
    VoErrorCode code = mpFirst->convert(now, last && isWhole, mBetween);
    if (!voFailed(code)) code = mpSecond->convert(mBetween, last && isWhole, out);
    if (voFailed(code) || isWhole) return code;
    piece.remove_prefix(now.size());
  }
}

}  // namespace vomsg::detail
