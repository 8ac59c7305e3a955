#include "vomsg/encoding/VoMsgTransferEncoding.h"

#include <algorithm>
#include <memory>
#include <string_view>

#include "vomsg/encoding/VoBase64.h"
#include "vomsg/encoding/VoBinHex.h"
#include "vomsg/encoding/VoCodecSupport.h"
#include "vomsg/encoding/VoQuotedPrintable.h"
#include "vomsg/encoding/VoUUEncode.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgResourceBytes.h"
#include "vomsg/foundation/VoMsgStreamAccess.h"

namespace vomsg::detail {

namespace {

struct NamedEncoding {
  std::string_view name;
  TransferEncoding encoding;
};

constexpr NamedEncoding kEncodings[] = {
    {"base64", TransferEncoding::base64},       {"quoted-printable", TransferEncoding::quotedPrintable},
    {"uuencode", TransferEncoding::uuencode},   {"x-uuencode", TransferEncoding::uuencode},
    {"mac-binhex40", TransferEncoding::binHex}, {"7bit", TransferEncoding::identity},
    {"8bit", TransferEncoding::identity},       {"binary", TransferEncoding::identity},
};

const NamedEncoding* findEncoding(const char* name) {
  for (const NamedEncoding& row : kEncodings)
    if (equalNoCase(row.name, viewOf(name))) return &row;
  return nullptr;
}

VoErrorCode copyBytes(VoMsgBufferedReader& source, VoMsgBufferedWriter& target, std::uint32_t length) {
  const VoErrorCode code = copyRange(source, target, source.getOffset(), length);
  if (voFailed(code)) return code;
  return target.flush() ? kVoSuccess : kVoWriteFailed;
}

// Passes encoded lines on with LF alone. Encoders write no CR but in their line ends.
class LineFeedWriter : public VoMsgBufferedWriter {
 public:
  explicit LineFeedWriter(VoMsgBufferedWriter& target) : VoMsgBufferedWriter(0), mTarget(target) {}
  bool open() override { return true; }
  bool close() override { return flush(); }
  bool isOpen() override { return true; }
  bool writeBuffer() override {
    const char* const end = std::remove(mpBuffer, mpBuffer + mUsed, '\r');
    mUsed = 0;
    return WriterAccess::writeThrough(mTarget, mpBuffer, static_cast<std::uint64_t>(end - mpBuffer));
  }

 private:
  VoMsgBufferedWriter& mTarget;
};

}  // namespace

TransferEncoding transferEncodingOf(const char* name) {
  const NamedEncoding* const row = findEncoding(name);
  return row ? row->encoding : TransferEncoding::identity;
}

bool isKnownEncoding(const char* name) { return !name || findEncoding(name); }

std::uint32_t decodedRoom(TransferEncoding encoding, VoMsgBufferedReader& source, std::uint32_t length) {
  return encoding == TransferEncoding::binHex ? std::max(length, peekBinHexSize(source, length)) : length;
}

VoErrorCode decodeTransfer(TransferEncoding encoding, VoMsgResourceLocator& target, VoMsgBufferedReader& source,
                           std::uint32_t length) {
  switch (encoding) {
    case TransferEncoding::base64:
      return decodeInto(target, [&](auto& writer) { return decodeBase64(writer, source, length); });
    case TransferEncoding::quotedPrintable:
      return decodeInto(target, [&](auto& writer) {
        return decodeQuotedPrintable(writer, source, length) ? kVoSuccess : kVoWriteFailed;
      });
    case TransferEncoding::uuencode:
      return decodeUUEncode(target, source, length);
    case TransferEncoding::binHex:
      return decodeBinHex(target, source, length);
    case TransferEncoding::identity:
      break;
  }
  return decodeInto(target, [&](auto& writer) {
    WriterAccess::expect(writer, length);
    return copyBytes(source, writer, length);
  });
}

VoErrorCode countDecoded(TransferEncoding encoding, VoMsgBufferedReader& source, std::uint32_t length, unsigned& size) {
  std::uint64_t count = length;
  CountingWriter counter;
  switch (encoding) {
    case TransferEncoding::base64:
      count = countBase64(source, length);
      break;
    case TransferEncoding::quotedPrintable:
      count = countQuotedPrintable(source, length);
      break;
    case TransferEncoding::uuencode: {
      CString name;
      decodeUUEncode(counter, source, length, name);
      count = counter.count();
      break;
    }
    case TransferEncoding::binHex: {
      BinHexSummary summary;
      const VoErrorCode code = surveyBinHex(source, length, summary);
      if (voFailed(code)) return code;
      count = summary.dataSize;
      break;
    }
    case TransferEncoding::identity:
      break;
  }
  size = static_cast<unsigned>(std::min<std::uint64_t>(count, 0xFFFFFFFFu));
  return kVoSuccess;
}

VoErrorCode encodeTransfer(TransferEncoding encoding, VoMsgBufferedWriter& target, const VoMsgResourceLocator& source,
                           const char* name, std::string_view lineEnd, std::string_view wireEnd) {
  if (wireEnd == "\n" && encoding != TransferEncoding::identity) {
    LineFeedWriter lines(target);
    const VoErrorCode code = encodeTransfer(encoding, lines, source, name, lineEnd);
    if (voFailed(code)) return code;
    return lines.flush() && target.flush() ? kVoSuccess : kVoWriteFailed;
  }
  switch (encoding) {
    case TransferEncoding::base64:
      return encodeFrom(source, [&](auto& reader) { return encodeBase64(target, reader, true); });
    case TransferEncoding::uuencode:
      return encodeUUEncode(target, source, name);
    case TransferEncoding::binHex:
      return encodeBinHex(target, source, name);
    case TransferEncoding::quotedPrintable:
    case TransferEncoding::identity:
      break;
  }
  const std::unique_ptr<VoMsgBufferedReader> reader(source.getInputStream(VoMsgResourceLocator::dataPart));
  if (!reader) return source.getSize(VoMsgResourceLocator::dataPart) == 0 ? kVoSuccess : kVoReadFailed;
  if (encoding == TransferEncoding::quotedPrintable)
    return encodeQuotedPrintableExactly(target, *reader, lineEnd) ? kVoSuccess : kVoWriteFailed;
  return copyBytes(*reader, target, source.getSize(VoMsgResourceLocator::dataPart));
}

}  // namespace vomsg::detail
