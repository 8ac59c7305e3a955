#include "vomsg/foundation/VoMsgTextTransfer.h"

#include <algorithm>

#include "vomsg/charset/convert/VoMsgTextStage.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgDecodedBudget.h"
#include "vomsg/foundation/VoMsgResourceManager.h"
#include "vomsg/foundation/VoMsgStreamAccess.h"

namespace vomsg::detail {

namespace {

constexpr VoMsgResourceLocator::VoMsgResourceDataType kData = VoMsgResourceLocator::dataPart;
constexpr std::size_t kPiece = 16384;
// A text up to this size is collected and gets a resource of its exact size.
constexpr std::size_t kShortText = std::size_t{1} << 18;
// No charset of mail needs more than three bytes for what another says in one, escape sequences aside.
constexpr std::uint64_t kGrowth = 3;

class CrLfStage final : public TextStage {
 public:
  VoErrorCode convert(std::string_view piece, bool last, std::string& out) override {
    while (!piece.empty()) {
      if (mIsAfterCr && piece[0] == '\n') piece.remove_prefix(1);
      const std::size_t end = piece.find_first_of("\r\n");
      out += piece.substr(0, end);
      mIsAfterCr = end != piece.npos && piece[end] == '\r';
      if (end == piece.npos) break;
      out += "\r\n";
      piece.remove_prefix(end + 1);
    }
    if (last) mIsAfterCr = false;
    return kVoSuccess;
  }

 private:
  bool mIsAfterCr = false;
};

VoErrorCode throughStages(std::initializer_list<TextStage*> stages, std::string_view piece, bool last,
                          std::string (&rooms)[2], TextSink& sink) {
  std::size_t room = 0;
  for (TextStage* const stage : stages) {
    if (!stage) continue;
    std::string& next = rooms[room];
    room = 1 - room;
    next.clear();
    const VoErrorCode code = stage->convert(piece, last, next);
    if (voFailed(code)) return code;
    piece = next;
  }
  return sink.put(piece) ? kVoSuccess : kVoWriteFailed;
}

}  // namespace

VoErrorCode transferText(const VoMsgResourceLocator& source, std::initializer_list<TextStage*> stages, TextSink& sink) {
  const std::unique_ptr<VoMsgBufferedReader> reader(source.getInputStream(kData));
  std::uint64_t left = source.getSize(kData);
  if (!reader && left > 0) return kVoReadFailed;
  std::string rooms[2];
  while (left > 0) {
    if (!ReaderWindow::fill(*reader)) return kVoReadFailed;
    std::string_view piece = ReaderWindow::buffered(*reader);
    piece = piece.substr(0, static_cast<std::size_t>(std::min<std::uint64_t>({piece.size(), kPiece, left})));
    const VoErrorCode code = throughStages(stages, piece, false, rooms, sink);
    if (voFailed(code)) return code;
    ReaderWindow::consume(*reader, piece.size());
    left -= piece.size();
  }
  return throughStages(stages, {}, true, rooms, sink);
}

ResourceSink::ResourceSink(const VoMsgResourceLocator& target) : mpWriter(target.getOutputStream(kData)) {}
ResourceSink::~ResourceSink() = default;

bool ResourceSink::put(std::string_view piece) {
  return mpWriter && WriterAccess::writeThrough(*mpWriter, piece.data(), piece.size());
}

bool ResourceSink::finish() { return mpWriter && mpWriter->flush(); }

TemporarySink::TemporarySink(std::uint64_t sourceSize) : mSourceSize(sourceSize) {}
TemporarySink::~TemporarySink() = default;

bool TemporarySink::spill(std::uint64_t size) {
  mpResource = decodedResource(size);
  if (mpResource) mpWriter.reset(mpResource->getOutputStream(kData));
  const bool isWritten = mpWriter && WriterAccess::writeThrough(*mpWriter, mShort.data(), mShort.size());
  mShort = std::string();
  return isWritten;
}

bool TemporarySink::put(std::string_view piece) {
  if (!mpWriter) {
    if (mShort.size() + piece.size() <= kShortText) {
      const std::size_t size = mShort.size() + piece.size();
      if (size > mShort.capacity()) mShort.reserve(std::min(2 * size, kShortText));
      mShort.append(piece);
      return true;
    }
    if (!spill(std::max<std::uint64_t>(mSourceSize * kGrowth, mShort.size() + piece.size()))) return false;
  }
  return WriterAccess::writeThrough(*mpWriter, piece.data(), piece.size());
}

std::unique_ptr<VoMsgResourceLocator> TemporarySink::take() {
  if (!mpWriter && !spill(mShort.size())) return nullptr;
  const bool isWritten = mpWriter->flush();
  mpWriter.reset();
  return isWritten ? std::move(mpResource) : nullptr;
}

std::unique_ptr<TextStage> newCrLfStage() { return std::make_unique<CrLfStage>(); }

}  // namespace vomsg::detail
