#include "vomsg/encoding/VoBinHex.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string_view>

#include "vomsg/encoding/VoBinHexCoding.h"
#include "vomsg/encoding/VoCodecSupport.h"
#include "vomsg/encoding/VoPieceSink.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgLineWalk.h"
#include "vomsg/foundation/VoMsgLogLine.h"
#include "vomsg/foundation/VoMsgResourceLocator.h"

namespace vomsg::detail {

namespace {

constexpr std::size_t kLongestName = 63;
constexpr std::uint32_t kUnknownSize = 0xFFFFFFFF;  // what a reader says that cannot tell
// No character of the text yields more bytes: three characters hold the two bytes that stand for 254 repetitions.
constexpr std::uint64_t kMostExpansion = 192;

using Part = VoMsgResourceLocator::VoMsgResourceDataType;

// Steps over the lines up to and including the marker. `length` is reduced by what was taken. False without one.
bool skipMarkerLine(VoMsgBufferedReader& source, std::uint64_t& length) {
  while (length > 0) {
    std::array<char, kBinHexMarker.size()> start;
    std::size_t kept = 0;
    const WalkedLine line = walkLine(source, length, [&](std::string_view stretch, bool) {
      kept += stretch.copy(start.data() + kept, start.size() - kept);
      return true;
    });
    if (line.length == 0) return false;
    length -= line.length;
    if (equalNoCase(std::string_view(start.data(), kept), kBinHexMarker)) return true;
  }
  return false;
}

// Steps behind the first colon, counting as before.
bool skipColon(VoMsgBufferedReader& source, std::uint64_t& length) {
  while (length > 0 && ReaderWindow::fill(source)) {
    const std::string_view buffered = ReaderWindow::buffered(source);
    const std::string_view window =
        buffered.substr(0, static_cast<std::size_t>(std::min<std::uint64_t>(length, buffered.size())));
    const std::size_t colon = window.find(':');
    const std::size_t taken = colon == window.npos ? window.size() : colon + 1;
    ReaderWindow::consume(source, taken);
    length -= taken;
    if (colon != window.npos) return true;
  }
  return false;
}

bool isPlausible(const q_data_t& q, const macheader_t& header) {
  const std::uint64_t there = q.reader->getSize() == kUnknownSize ? q.left : std::min(q.left, bytesLeft(*q.reader));
  const std::uint64_t left = std::min<std::uint64_t>(there, UINT32_MAX);
  return std::uint64_t{header.dataLength} + header.resourceLength <= left * kMostExpansion + q.run;
}

// Reads from the marker line to the end of the header and holds the lengths in it against the data that is left.
bool readHeader(q_data_t& q, VoMsgBufferedReader& source, std::uint64_t length, macheader_t& header) {
  if (!skipMarkerLine(source, length) || !skipColon(source, length)) return false;
  q_init(q, &source);
  q.left = length;
  return do_q_header(q, header) && isPlausible(q, header);
}

const char* nameOf(const macheader_t& header) { return *header.name ? header.name : "noname"; }

// Decodes a fork, to nowhere without a `sink`, and compares its CRC.
VoErrorCode readFork(q_data_t& q, PieceSink* sink, std::uint32_t length) {
  std::array<char, 4096> bytes;
  while (length > 0) {
    const std::uint32_t n = std::min<std::uint32_t>(length, bytes.size());
    if (!getqbuf(q, bytes.data(), n)) return kVoDecodeFailed;
    if (sink && !sink->put({bytes.data(), n})) return kVoWriteFailed;
    length -= n;
  }
  return verify_crc(q) ? kVoSuccess : kVoDecodeFailed;
}

VoErrorCode readForkInto(q_data_t& q, VoMsgResourceLocator& target, Part part, std::uint32_t length) {
  const std::unique_ptr<VoMsgBufferedWriter> writer(target.getOutputStream(part));
  if (!writer) return part == VoMsgResourceLocator::dataPart ? kVoWriteFailed : readFork(q, nullptr, length);
  WriterSink sink(*writer);
  const VoErrorCode code = readFork(q, &sink, length);
  return voFailed(code) || writer->flush() ? code : kVoWriteFailed;
}

}  // namespace

VoErrorCode decodeBinHex(VoMsgResourceLocator& target, VoMsgBufferedReader& source, std::uint64_t length) {
  q_data_t q;
  macheader_t header;
  if (!readHeader(q, source, length, header)) return kVoDecodeFailed;
  target.setResourceName(nameOf(header), "us-ascii");
  target.setFileType(header.type);
  target.setFileCreator(header.creator);
  target.setFinderFlag(header.flags);
  // Empty data takes the place of what the target held, too: room that was made for it is not content.
  const VoErrorCode code = readForkInto(q, target, VoMsgResourceLocator::dataPart, header.dataLength);
  if (voFailed(code)) return code;
  if (header.resourceLength == 0) return readFork(q, nullptr, 0);
  return readForkInto(q, target, VoMsgResourceLocator::resourceForkPart, header.resourceLength);
}

VoErrorCode decodeBinHexTo(PieceSink& sink, VoMsgBufferedReader& source, std::uint64_t length) {
  q_data_t q;
  macheader_t header;
  return readHeader(q, source, length, header) ? readFork(q, &sink, header.dataLength) : kVoDecodeFailed;
}

VoErrorCode surveyBinHex(VoMsgBufferedReader& source, std::uint64_t length, BinHexSummary& summary) {
  q_data_t q;
  macheader_t header;
  if (!readHeader(q, source, length, header)) return kVoDecodeFailed;
  summary.name = nameOf(header);
  summary.dataSize = header.dataLength;
  return kVoSuccess;
}

std::uint32_t peekBinHexSize(VoMsgBufferedReader& source, std::uint64_t length) {
  const std::uint32_t start = source.getOffset();
  BinHexSummary summary;
  const VoErrorCode code = surveyBinHex(source, length, summary);
  return moveTo(source, start) && !voFailed(code) ? summary.dataSize : 0;
}

VoErrorCode encodeBinHex(VoMsgBufferedWriter& target, const VoMsgResourceLocator& source, const char* name,
                         bool* isExact) {
  // A file that cannot be read has no size either; it must not pass for an empty one.
  const std::unique_ptr<VoMsgBufferedReader> data(source.getInputStream(VoMsgResourceLocator::dataPart));
  if (!data) return kVoReadFailed;
  macheader_t header;
  std::string_view title = name ? name : source.getResourceName("us-ascii");
  if (title.empty()) title = "noname";
  header.nameLength = static_cast<unsigned char>(title.copy(header.name, kLongestName));
  header.type = source.getFileType();
  header.creator = source.getFileCreator();
  header.flags = source.getFinderFlag();
  header.dataLength = source.getSize(VoMsgResourceLocator::dataPart);
  std::unique_ptr<VoMsgBufferedReader> fork;
  if (source.hasResourceFork()) header.resourceLength = source.getSize(VoMsgResourceLocator::resourceForkPart);
  if (header.resourceLength > 0) fork.reset(source.getInputStream(VoMsgResourceLocator::resourceForkPart));
  q_data_t q;
  q_init(q, &target);
  if (!writeBinHexHeader(q) || !writeMacHeader(q, header)) return kVoWriteFailed;
  VoErrorCode code = writeDataFork(q, data.get(), header);
  if (!voFailed(code)) code = writeResourceFork(q, fork.get(), header);
  if (voFailed(code)) return code;
  if (isExact) *isExact = q.isExact;
  return writeBinHexFooter(q) && target.flush() ? kVoSuccess : kVoWriteFailed;
}

}  // namespace vomsg::detail

using namespace vomsg::detail;

namespace {
constexpr char kLogSource[] = "VoBinHex";
}

VoErrorCode voDecodeBinHex(VoMsgResourceLocator* target, VoMsgBufferedReader* source) {
  if (!target || !source) return VO_LOGGED("", kVoBadArgument);
  return VO_LOGGED("", guarded([&] { return decodeBinHex(*target, *source, UINT64_MAX); }));
}

VoErrorCode voEncodeBinHex(VoMsgBufferedWriter* target, const VoMsgResourceLocator* source) {
  if (!target || !source) return VO_LOGGED("", kVoBadArgument);
  return VO_LOGGED("", guarded([&] { return encodeBinHex(*target, *source, nullptr); }));
}
