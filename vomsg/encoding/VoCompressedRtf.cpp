// The dictionary of 4096 bytes is a ring of the latest output, so a reference to a place in it says how far back the
// bytes lie. The expansion therefore runs in one long block: the dictionary in the order of its age, behind it what
// comes out, copied from a constant distance. A full block is written and its last 4096 bytes move to the front; at the
// end of a piece they become the ring again that the state keeps. Where the buffer of the reader holds all that a
// control byte can announce, its eight items are taken without another look; else one item at a time.
#include "vomsg/encoding/VoCompressedRtf.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <string_view>

#include "vomsg/encoding/VoCodecSupport.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgLogLine.h"
#include "vomsg/foundation/VoMsgResourceLocator.h"
#include "vomsg/foundation/VoMsgStreamAccess.h"

namespace vomsg::detail {

namespace {

// References copy from it, so every byte stands as writers of these streams assume it, odd spellings included.
constexpr std::string_view kPrefix =
    "{\\rtf1\\ansi\\mac\\deff0\\deftab720{\\fonttbl;}{\\f0\\fnil \\fromen \\fswiss \\fmodern \\fscript .fdecor "
    "MS Sans SerifsymbolArialTimes New RomanCourier{\\colortbl\\red0\\green0\\blue0\r\n"
    "\\par \\pard\\plain\\f0\\fs20\\b\\i\\u\\tab.tx";
static_assert(kPrefix.size() == 207);

constexpr std::size_t kDictionary = sizeof LZFu::dictionary;
constexpr std::size_t kLeastRun = 2;
constexpr std::size_t kLongestRun = 15 + kLeastRun;
constexpr std::size_t kItems = 8;               // of a control byte
constexpr std::size_t kGroup = 1 + kItems * 2;  // bytes that a control byte and its items take at most
constexpr std::size_t kBlock = 16384;           // of output, so that it is still in the first cache when written
constexpr std::size_t kStride = 32;             // copied at once for a run, which is never longer

// The compressed bytes. Behind the end of the source they are 0xFF, but not for ever.
class Input {
 public:
  Input(VoMsgBufferedReader& reader, std::uint64_t length) : mReader(reader), mLeft(length) {}

  bool has(std::uint64_t n) const { return mLeft >= n; }
  unsigned next() {
    --mLeft;
    if (ReaderWindow::fill(mReader)) {
      const auto byte = static_cast<unsigned char>(ReaderWindow::buffered(mReader).front());
      ReaderWindow::consume(mReader, 1);
      ++mGiven;
      return byte;
    }
    if (mFiller++ == 0) mLeft = std::min(mLeft, mGiven + kMostFiller - 1);
    return 0xFF;
  }

  // What can be taken without asking, as far as it belongs to the length; take() says how much of it was.
  std::string_view window() const {
    const std::string_view all = ReaderWindow::buffered(mReader);
    return all.substr(0, static_cast<std::size_t>(std::min<std::uint64_t>(mLeft, all.size())));
  }
  void take(std::size_t n) {
    ReaderWindow::consume(mReader, n);
    mLeft -= n;
    mGiven += n;
  }

 private:
  VoMsgBufferedReader& mReader;
  std::uint64_t mLeft;
  std::uint64_t mGiven = 0;
  std::uint64_t mFiller = 0;
};

class Output {
 public:
  Output(LZFu& state, VoMsgBufferedWriter& target) : mState(state), mTarget(target) {
    const std::size_t oldest = state.position % kDictionary;
    std::memcpy(mBlock.data(), state.dictionary + oldest, kDictionary - oldest);
    std::memcpy(mBlock.data() + kDictionary - oldest, state.dictionary, oldest);
  }
  ~Output() { settle(); }
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  // All items of one control byte fit behind this.
  bool makeRoom() { return mTo - start() <= static_cast<std::ptrdiff_t>(kBlock) || emit(); }

  void put(unsigned char byte) { *mTo++ = byte; }
  void put(const char* bytes, std::size_t n) {
    std::memcpy(mTo, bytes, n);
    mTo += n;
  }
  // A reference to the place that is written next goes back by the whole ring.
  void copy(unsigned high, unsigned low) {
    const std::size_t place = high << 4 | low >> 4, run = (low & 15) + kLeastRun;
    const std::size_t distance = (position() - place - 1) % kDictionary + 1;
    const unsigned char* from = mTo - distance;
    if (distance >= kStride) {
      std::memcpy(mTo, from, kStride);
      mTo += run;
      return;
    }
    for (const unsigned char* const end = mTo + run; mTo != end;) *mTo++ = *from++;
  }

  // Writes what came out; the latest of it stays at hand.
  bool emit() {
    settle();
    const bool written =
        WriterAccess::writeThrough(mTarget, reinterpret_cast<char*>(start()), static_cast<std::size_t>(mTo - start()));
    std::memmove(mBlock.data(), mTo - kDictionary, kDictionary);
    mTo = start();
    mSettled = 0;
    return written;
  }

 private:
  unsigned char* start() { return mBlock.data() + kDictionary; }
  std::size_t position() { return mState.position + static_cast<std::size_t>(mTo - start()) - mSettled; }

  // Brings the state to where the output is.
  void settle() {
    mState.position = static_cast<std::uint32_t>(position());
    mSettled = static_cast<std::size_t>(mTo - start());
    const std::size_t oldest = mState.position % kDictionary;
    const unsigned char* const latest = mTo - kDictionary;
    std::memcpy(mState.dictionary + oldest, latest, kDictionary - oldest);
    std::memcpy(mState.dictionary, latest + kDictionary - oldest, oldest);
  }

  LZFu& mState;
  VoMsgBufferedWriter& mTarget;
  std::array<unsigned char, kDictionary + kBlock + kItems * kLongestRun + kStride> mBlock;
  unsigned char* mTo = start();
  std::size_t mSettled = 0;  // how much of the block the state's position counts
};

// As many whole groups as lie in the window. False when a write fails.
bool expandGroups(Input& in, Output& out) {
  for (;;) {
    const std::string_view window = in.window();
    if (window.size() < kGroup) return true;
    const char* at = window.data();
    for (const char* const last = at + window.size() - kGroup; at <= last;) {
      if (!out.makeRoom()) return false;
      auto control = static_cast<unsigned char>(*at++);
      if (control == 0) {
        out.put(at, kItems);
        at += kItems;
        continue;
      }
      for (std::size_t item = 0; item < kItems; ++item, control >>= 1) {
        if ((control & 1) == 0) {
          out.put(static_cast<unsigned char>(*at++));
        } else {
          out.copy(static_cast<unsigned char>(at[0]), static_cast<unsigned char>(at[1]));
          at += 2;
        }
      }
    }
    in.take(static_cast<std::size_t>(at - window.data()));
  }
}

}  // namespace

bool expandLZFu(LZFu& state, VoMsgBufferedWriter& target, VoMsgBufferedReader& source, std::uint64_t length) {
  if (length == 0) return state.flags < 0 || target.flush();
  Input in(source, length);
  Output out(state, target);
  while (in.has(1)) {
    if (state.flags <= 0) {
      state.flags = 0;
      if (!expandGroups(in, out) || !out.makeRoom()) return false;
      if (!in.has(1)) break;
      state.control = static_cast<std::uint8_t>(in.next());
      state.flags = kItems;
      continue;
    }
    if ((state.control & 1) == 0) {
      out.put(static_cast<unsigned char>(in.next()));
    } else {
      if (!in.has(2)) break;
      const unsigned high = in.next();
      out.copy(high, in.next());
    }
    state.control = static_cast<std::uint8_t>(state.control >> 1);
    --state.flags;
  }
  return out.emit() && target.flush();
}

VoErrorCode decodeLZFu(VoMsgResourceLocator& target, VoMsgBufferedReader& source, std::uint64_t length) {
  return decodeInto(target, [&](auto& writer) {
    const auto state = std::make_unique<LZFu>();
    return expandLZFu(*state, writer, source, length) ? kVoSuccess : kVoWriteFailed;
  });
}

}  // namespace vomsg::detail

using namespace vomsg::detail;

namespace {
constexpr char kLogSource[] = "VoCompressedRtf";
}

LZFu::LZFu() : position(kPrefix.size()) {
  std::memset(dictionary, ' ', sizeof dictionary);
  kPrefix.copy(reinterpret_cast<char*>(dictionary), kPrefix.size());
}

bool _decodeLZFu(LZFu* state, VoMsgBufferedWriter* target, VoMsgBufferedReader* source, long length) {
  if (!state || !target || !source) return !voFailed(VO_LOGGED("", kVoBadArgument));
  const std::uint64_t size = length > 0 ? static_cast<std::uint64_t>(length) : 0;
  return !voFailed(
      VO_LOGGED("", guarded([&] { return expandLZFu(*state, *target, *source, size) ? kVoSuccess : kVoWriteFailed; })));
}

VoErrorCode voDecodeLZFu(VoMsgResourceLocator* target, VoMsgBufferedReader* source, long length) {
  if (!target || !source) return VO_LOGGED("", kVoBadArgument);
  const std::uint64_t size = length > 0 ? static_cast<std::uint64_t>(length) : 0;
  return VO_LOGGED("", guarded([&] { return decodeLZFu(*target, *source, size); }));
}
