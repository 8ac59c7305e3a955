#include "vomsg/encoding/VoCompressedRtf.h"

#include <array>
#include <cstring>
#include <memory>
#include <string_view>

#include "vomsg/encoding/VoCodecSupport.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgResourceLocator.h"

namespace vomsg::detail {

namespace {

// References copy from it, so every byte stands as writers of these streams assume it, odd spellings included.
constexpr std::string_view kPrefix =
    "{\\rtf1\\ansi\\mac\\deff0\\deftab720{\\fonttbl;}{\\f0\\fnil \\fromen \\fswiss \\fmodern \\fscript .fdecor "
    "MS Sans SerifsymbolArialTimes New RomanCourier{\\colortbl\\red0\\green0\\blue0\r\n"
    "\\par \\pard\\plain\\f0\\fs20\\b\\i\\u\\tab.tx";
static_assert(kPrefix.size() == 207);

constexpr std::size_t kDictionary = sizeof LZFu::dictionary;
constexpr int kLeastRun = 2;

// The compressed bytes. Behind the end of the source they are 0xFF, but not for ever.
class Input {
 public:
  Input(VoMsgBufferedReader& reader, std::uint64_t length) : mSource(reader), mLeft(length) {}

  bool has(std::uint64_t n) const { return mLeft >= n; }
  unsigned next() {
    --mLeft;
    const int c = mSource.next();
    if (c >= 0) {
      ++mGiven;
      return static_cast<unsigned>(c);
    }
    if (mFiller++ == 0) mLeft = std::min(mLeft, mGiven + kMostFiller - 1);
    return 0xFF;
  }

 private:
  ByteSource mSource;
  std::uint64_t mLeft;
  std::uint64_t mGiven = 0;
  std::uint64_t mFiller = 0;
};

class Output {
 public:
  Output(LZFu& state, VoMsgBufferedWriter& target) : mState(state), mTarget(target) {}

  void put(unsigned char byte) {
    mState.dictionary[mState.position++ % kDictionary] = byte;
    mPending[mUsed++] = static_cast<char>(byte);
  }
  // The references of one control byte fit behind this.
  bool makeRoom() { return mUsed < mPending.size() - 8 * 17 || emit(); }
  bool emit() { return mTarget.write(mPending.data(), static_cast<unsigned>(std::exchange(mUsed, 0))); }

 private:
  LZFu& mState;
  VoMsgBufferedWriter& mTarget;
  std::array<char, 4096> mPending;
  std::size_t mUsed = 0;
};

bool expand(LZFu* state, VoMsgBufferedWriter* target, VoMsgBufferedReader* source, long length) {
  if (length < 1) return state->flags < 0 || target->flush();
  Input in(*source, static_cast<std::uint64_t>(length));
  Output out(*state, *target);
  while (in.has(1)) {
    if (state->flags <= 0) {
      if (!out.makeRoom()) return false;
      state->control = static_cast<std::uint8_t>(in.next());
      state->flags = 8;
      continue;
    }
    if ((state->control & 1) == 0) {
      out.put(static_cast<unsigned char>(in.next()));
    } else {
      if (!in.has(2)) break;
      const unsigned high = in.next();
      const unsigned low = in.next();
      unsigned at = high << 4 | low >> 4;
      for (int run = static_cast<int>(low & 15) + kLeastRun; run > 0; --run)
        out.put(state->dictionary[at++ % kDictionary]);
    }
    state->control = static_cast<std::uint8_t>(state->control >> 1);
    --state->flags;
  }
  return out.emit() && target->flush();
}

}  // namespace

}  // namespace vomsg::detail

LZFu::LZFu() : position(vomsg::detail::kPrefix.size()) {
  std::memset(dictionary, ' ', sizeof dictionary);
  vomsg::detail::kPrefix.copy(reinterpret_cast<char*>(dictionary), vomsg::detail::kPrefix.size());
}

bool _decodeLZFu(LZFu* state, VoMsgBufferedWriter* target, VoMsgBufferedReader* source, long length) {
  return state && target && source &&
         vomsg::detail::guardedOr(false, [&] { return vomsg::detail::expand(state, target, source, length); });
}

VoErrorCode voDecodeLZFu(VoMsgResourceLocator* target, VoMsgBufferedReader* source, long length) {
  if (!target || !source) return kVoBadArgument;
  return vomsg::detail::guarded([&] {
    const std::unique_ptr<VoMsgBufferedWriter> writer(target->getOutputStream(VoMsgResourceLocator::dataPart));
    if (!writer) return kVoWriteFailed;
    const auto state = std::make_unique<LZFu>();
    return vomsg::detail::expand(state.get(), writer.get(), source, length) ? kVoSuccess : kVoWriteFailed;
  });
}
