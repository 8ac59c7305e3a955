#include "vomsg/entity/VoMsgMessageSource.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "vomsg/foundation/VoMsgRangeResource.h"
#include "vomsg/foundation/VoMsgStreamAccess.h"

namespace vomsg::detail {

namespace {

constexpr std::uint64_t kLargestSource = 0x7FFFFFFF;

// How many living sources read from files whose device and inode lead to a slot: no entry of its own for any of them,
// so it takes neither memory nor a lock.
constexpr unsigned kSlotBits = 10;
std::atomic<std::uint32_t> gSourceFiles[std::size_t{1} << kSlotBits];

std::atomic<std::uint32_t>& slotOf(const ResourceState& file) {
  constexpr std::uint64_t kOddFraction = 0x9E3779B97F4A7C15;  // of 2^64 by the golden ratio: spreads neighbours
  return gSourceFiles[((file.device * 31 + file.inode) * kOddFraction) >> (64 - kSlotBits)];
}

}  // namespace

MessageSource::MessageSource(const VoObjectStub<VoMsgResourceLocator>& resource, int options)
    : mResource(resource), mOptions(options) {}

MessageSource::MessageSource(const MessageSource& other)
    : mResource(other.mResource), mState(other.mState), mOptions(other.mOptions), mpBudget(other.mpBudget) {
  if (mState.kind == ResourceState::Kind::file) slotOf(mState).fetch_add(1, std::memory_order_relaxed);
}

MessageSource::~MessageSource() {
  if (mState.kind == ResourceState::Kind::file) slotOf(mState).fetch_sub(1, std::memory_order_relaxed);
}

VoMsgBufferedReader* MessageSource::openReader() {
  if (isOpen()) return mpReader.get();
  if (!mpReader && resource()) mpReader.reset(resource()->getInputStream(VoMsgResourceLocator::dataPart));
  if (!mpReader || !(mpReader->isOpen() || mpReader->open())) return nullptr;
  if (isAsRead(*mpReader)) return mpReader.get();
  closeReader();
  return nullptr;
}

bool MessageSource::isAsRead(VoMsgBufferedReader& reader) {
  if (const auto* const range = dynamic_cast<RangeResource*>(resource())) return range->isUnchanged(reader);
  const ResourceState now = ResourceState::of(reader);
  if (mState.isKnown()) return now == mState;
  mState = now;
  if (mState.kind == ResourceState::Kind::file) slotOf(mState).fetch_add(1, std::memory_order_relaxed);
  return true;
}

bool MessageSource::isUnchanged() {
  if (isOpen()) return isAsRead(*mpReader);
  const OpenSource opened(this);
  return opened.reader() != nullptr;
}

VoMsgResourceLocator* MessageSource::whole() const {
  const auto* const range = dynamic_cast<RangeResource*>(resource());
  return range ? range->getWhole() : resource();
}

const ResourceState& MessageSource::wholeState() const {
  const auto* const range = dynamic_cast<RangeResource*>(resource());
  return range ? range->wholeState() : mState;
}

// A closed file reader would keep its buffers, and a digest has as many sources as messages.
void MessageSource::closeReader() { mpReader.reset(); }

bool MessageSource::isOpen() const { return mpReader && mpReader->isOpen(); }

std::string_view MessageSource::lineEnd() {
  constexpr std::string_view kPair = "\r\n";
  if (!mLineEnd.empty()) return mLineEnd;
  const OpenSource open(this);
  VoMsgBufferedReader* const reader = open.reader();
  if (!reader || !moveTo(*reader, 0)) return kPair;
  mLineEnd = kPair;
  while (ReaderWindow::fill(*reader)) {
    const std::string_view window = ReaderWindow::buffered(*reader);
    const std::size_t at = window.find_first_of(kPair);
    if (at != window.npos) return mLineEnd = window[at] == '\n' ? kPair.substr(1) : kPair;
    ReaderWindow::consume(*reader, window.size());
  }
  return mLineEnd;
}

OpenSource::OpenSource(MessageSource* source)
    : mpSource(source), mScope(source ? source->budget() : std::shared_ptr<DecodedBudget>()) {
  if (!source) return;
  mWasOpen = source->isOpen();
  mpReader = source->openReader();
}

OpenSource::~OpenSource() {
  if (mpSource && !mWasOpen) mpSource->closeReader();
}

// Sizes are 32 bits wide, so a file is asked itself.
bool isTooLarge(VoMsgBufferedReader& reader) { return ResourceState::of(reader).size > kLargestSource; }

bool mayBeSource(const ResourceState& file) { return slotOf(file).load(std::memory_order_relaxed) != 0; }

}  // namespace vomsg::detail
