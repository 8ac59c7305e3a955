#include "vomsg/tnef/VoMsgTnefContent.h"

#include <algorithm>

#include "vomsg/encoding/VoCompressedRtf.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgResourceBytes.h"
#include "vomsg/foundation/VoMsgResourceLocator.h"
#include "vomsg/foundation/VoMsgStreamAccess.h"
#include "vomsg/foundation/VoMsgStreamCopy.h"
#include "vomsg/tnef/VoTnefInteger.h"
#include "vomsg/tnef/tables/VoMapiTypes.h"
#include "vomsg/tnef/tables/VoTnefRecordKinds.h"

namespace vomsg::detail {

namespace {

constexpr std::uint32_t kLengthSize = 4;
constexpr std::uint32_t kRtfHeaderSize = 16;  // compressed size, raw size, kind of compression, checksum

std::unique_ptr<VoMsgBufferedReader> readerOf(const VoMsgResourceLocator& resource) {
  std::unique_ptr<VoMsgBufferedReader> reader(resource.getInputStream(VoMsgResourceLocator::dataPart));
  if (reader && !reader->isOpen() && !reader->open()) reader.reset();
  return reader;
}

std::unique_ptr<VoMsgBufferedWriter> writerOf(const VoMsgResourceLocator& resource) {
  std::unique_ptr<VoMsgBufferedWriter> writer(resource.getOutputStream(VoMsgResourceLocator::dataPart));
  if (writer && !writer->isOpen() && !writer->open()) writer.reset();
  return writer;
}

// The length field of a value, cut to what the source holds behind it. The reader stands behind the field.
std::uint32_t readValueLength(VoMsgBufferedReader& source, std::uint32_t offset) {
  const std::uint64_t size = source.getSize();
  if (std::uint64_t{offset} + kLengthSize > size || !moveTo(source, offset)) return 0;
  const std::uint64_t left = size - offset - kLengthSize;
  return static_cast<std::uint32_t>(std::min<std::uint64_t>(_tnefGetInt32(&source), left));
}

// Moves from the header of a compressed text behind it and tells how many bytes there are to expand. The compressed
// size counts from behind itself and covers four bytes too many for the decoder; a value may claim far more than it
// holds, and must not be believed: the decoder would take the end of the data for text.
std::uint64_t enterRtf(VoMsgBufferedReader& source, std::uint32_t length) {
  const std::int64_t claimed = std::int64_t{_tnefGetInt32(&source)} - kRtfHeaderSize;
  const std::int64_t held = std::int64_t{length} - kRtfHeaderSize;
  const std::int64_t take = std::max<std::int64_t>(0, std::min(claimed, held));
  const std::uint64_t behind = std::uint64_t{source.getOffset()} + kRtfHeaderSize - kLengthSize;
  return take > 0 && moveTo(source, behind) ? static_cast<std::uint64_t>(take) : 0;
}

}  // namespace

OpenReader::OpenReader(VoMsgBufferedReader* reader) : mpReader(reader) {
  mWasOpen = reader && reader->isOpen();
  mIsOpen = mWasOpen || (reader && reader->open());
}

OpenReader::~OpenReader() {
  if (mIsOpen && !mWasOpen) mpReader->close();
}

bool sumContent(const VoMsgResourceLocator& resource, unsigned short& sum) {
  const auto reader = readerOf(resource);
  std::uint64_t left = resource.getSize(VoMsgResourceLocator::dataPart);
  if (!reader) return false;
  sum = 0;
  while (left > 0 && ReaderWindow::fill(*reader)) {
    const std::string_view window = ReaderWindow::buffered(*reader);
    sum = static_cast<unsigned short>(sum + _tnefCalcCheckSum(window.data(), static_cast<unsigned>(window.size())));
    left -= std::min<std::uint64_t>(left, window.size());
    ReaderWindow::consume(*reader, window.size());
  }
  return left == 0;
}

std::unique_ptr<VoMsgResourceLocator> copyOfResource(const VoMsgResourceLocator& from) {
  auto copy = temporaryResource(from.getSize(VoMsgResourceLocator::dataPart));
  if (copy && voFailed(copyResource(from, *copy))) copy.reset();
  return copy;
}

VoErrorCode copyResource(const VoMsgResourceLocator& from, const VoMsgResourceLocator& target) {
  const auto reader = readerOf(from);
  if (!reader) return kVoReadFailed;
  const auto writer = writerOf(target);
  return writer ? copyRest(*reader, *writer) : kVoReadFailed;
}

VoErrorCode writeBytes(const VoMsgResourceLocator& target, const char* data, std::uint32_t length) {
  const auto writer = writerOf(target);
  if (!writer || !writer->write(data, length) || !writer->flush()) return kVoWriteFailed;
  return kVoSuccess;
}

VoErrorCode copyStretch(const VoMsgResourceLocator& target, VoMsgBufferedReader& source, std::uint32_t offset,
                        std::uint32_t length) {
  if (std::uint64_t{offset} + length > source.getSize()) return kVoTnefMalformed;
  const auto writer = writerOf(target);
  if (!writer) return kVoWriteFailed;
  const VoErrorCode code = copyRange(source, *writer, offset, length);
  if (voFailed(code)) return code == kVoReadFailed ? kVoTnefMalformed : kVoWriteFailed;
  return writer->flush() ? kVoSuccess : kVoWriteFailed;
}

VoErrorCode copyValueContent(const VoMsgResourceLocator& target, VoMsgBufferedReader& source, std::uint32_t offset,
                             ValueContent content) {
  const std::uint32_t length = readValueLength(source, offset);
  if (length == 0) return kVoNoContent;
  switch (content) {
    case ValueContent::bytes:
      return copyStretch(target, source, offset + kLengthSize, length);
    case ValueContent::object:
      if (length <= kInterfaceIdBytes) return kVoNoContent;
      return copyStretch(target, source, offset + kLengthSize + kInterfaceIdBytes, length - kInterfaceIdBytes);
    case ValueContent::compressedRtf:
      return decodeLZFu(const_cast<VoMsgResourceLocator&>(target), source, enterRtf(source, length));
  }
  return kVoNoContent;
}

std::uint32_t valueContentSize(VoMsgBufferedReader& source, std::uint32_t offset, ValueContent content) {
  const std::uint32_t length = readValueLength(source, offset);
  switch (content) {
    case ValueContent::bytes:
      return length;
    case ValueContent::object:
      return length - std::min(length, kInterfaceIdBytes);
    case ValueContent::compressedRtf: {
      CountingWriter counter;
      LZFu state;
      expandLZFu(state, counter, source, length > 0 ? enterRtf(source, length) : 0);
      return static_cast<std::uint32_t>(std::min<std::uint64_t>(counter.count(), kMostTnefBytes));
    }
  }
  return 0;
}

}  // namespace vomsg::detail
