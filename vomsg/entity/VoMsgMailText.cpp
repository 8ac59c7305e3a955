#include "vomsg/entity/VoMsgMailText.h"

#include <algorithm>

#include "vomsg/charset/convert/VoCharsetName.h"
#include "vomsg/charset/convert/VoMsgTextConversion.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgDecodedBudget.h"
#include "vomsg/foundation/VoMsgTextTransfer.h"

namespace vomsg::detail {

namespace {

constexpr std::size_t kLongestLine = 998;  // RFC 5322, section 2.1.1
constexpr VoMsgResourceLocator::VoMsgResourceDataType kData = VoMsgResourceLocator::dataPart;

// Looks at a text that passes by.
class MailTextSink final : public TextSink {
 public:
  explicit MailTextSink(TextSink& target) : mTarget(target) {}

  bool put(std::string_view piece) override {
    mIsMail = mIsMail && isAscii(piece) && piece.find('\0') == piece.npos;
    for (std::string_view rest = piece; mIsMail && !rest.empty();) {
      const std::size_t end = rest.find('\n');
      mLine += std::min(end, rest.size());
      if (end == rest.npos) break;
      mIsMail = mLine <= kLongestLine + 1;  // the CR counts
      mLine = 0;
      rest.remove_prefix(end + 1);
    }
    return mTarget.put(piece);
  }
  bool isMail() const { return mIsMail && mLine <= kLongestLine; }

 private:
  TextSink& mTarget;
  std::uint64_t mLine = 0;  // bytes of the line so far
  bool mIsMail = true;
};

bool isOfStages(VoErrorCode code) { return voFailed(code) && code != kVoReadFailed && code != kVoWriteFailed; }

VoErrorCode transferTo(const VoMsgResourceLocator& target, const VoMsgResourceLocator& content, TextStage* stage) {
  const CountedTarget counted(target);
  ResourceSink sink(counted.target());
  const VoErrorCode code = transferText(content, {stage}, sink);
  return voFailed(code) || sink.finish() ? code : kVoWriteFailed;
}

VoErrorCode transferToNew(const VoMsgResourceLocator& content, TextStage* stage,
                          std::unique_ptr<VoMsgResourceLocator>& made) {
  TemporarySink sink(content.getSize(kData));
  const VoErrorCode code = transferText(content, {stage}, sink);
  if (voFailed(code)) return code;
  made = sink.take();
  return made ? kVoSuccess : kVoWriteFailed;
}

}  // namespace

VoErrorCode convertBody(const VoMsgResourceLocator& content, const char* to, const char* from,
                        const VoMsgResourceLocator* target, std::unique_ptr<VoMsgResourceLocator>& converted) {
  std::unique_ptr<TextConversion> conversion;
  if (from && to) conversion = std::make_unique<TextConversion>(to, from, Loss::replaced);
  if (conversion && !conversion->isOpen()) conversion.reset();
  // Written onto itself, a text has to be read first.
  if (!target || target == &content) {
    if (!conversion) return kVoSuccess;
    const VoErrorCode code = transferToNew(content, conversion.get(), converted);
    if (voFailed(code)) return isOfStages(code) ? kVoSuccess : code;
    return target ? transferTo(*target, *converted, nullptr) : kVoSuccess;
  }
  const VoErrorCode code = transferTo(*target, content, conversion.get());
  return isOfStages(code) ? transferTo(*target, content, nullptr) : code;
}

VoErrorCode convertExactly(const VoMsgResourceLocator& content, const char* to, const char* from,
                           std::unique_ptr<VoMsgResourceLocator>& converted) {
  TextConversion conversion(to, from, Loss::refused);
  if (!conversion.isOpen()) return kVoConversionFailed;
  const VoErrorCode code = transferToNew(content, &conversion, converted);
  return isOfStages(code) ? kVoConversionFailed : code;
}

VoErrorCode makeMailText(const VoMsgResourceLocator& content, const char* from, const char* to, MailText& text) {
  std::unique_ptr<WideReader> wide;
  if (voIsUnicode(from)) wide = std::make_unique<WideReader>(from);
  std::unique_ptr<TextConversion> conversion;
  if (to) conversion = std::make_unique<TextConversion>(to, wide ? "utf-8" : from, Loss::refused);
  if (conversion && !conversion->isOpen()) return kVoConversionFailed;
  const std::unique_ptr<TextStage> lines = newCrLfStage();
  TemporarySink bytes(content.getSize(kData));
  MailTextSink sink(bytes);
  const VoErrorCode code = transferText(content, {wide.get(), lines.get(), conversion.get()}, sink);
  if (voFailed(code)) return isOfStages(code) ? kVoConversionFailed : code;
  text.isMail = sink.isMail();
  text.bytes = bytes.take();
  return text.bytes ? kVoSuccess : kVoWriteFailed;
}

}  // namespace vomsg::detail
