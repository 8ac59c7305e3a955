#include "vomsg/anomaly/VoMsgHeaderAnomalies.h"

#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/header/VoMsgHeaderLimits.h"
#include "vomsg/header/VoMsgUserAddress.h"

namespace vomsg::detail {
namespace {

constexpr std::size_t kMaxLine = 998;  // RFC 5322, section 2.1.1

struct Repetition {
  std::string_view name;
  VoMsgAnomalyCode same;
  VoMsgAnomalyCode different;
};
constexpr Repetition kSingleFields[] = {
    {"Content-Type", kVoAnomalyRepeatedContentType, kVoAnomalyConflictingContentType},
    {"Content-Transfer-Encoding", kVoAnomalyRepeatedTransferEncoding, kVoAnomalyConflictingTransferEncoding},
    {"Content-Disposition", kVoAnomalyRepeatedDisposition, kVoAnomalyConflictingDisposition},
    {"MIME-Version", kVoAnomalyRepeatedMimeVersion, kVoAnomalyRepeatedMimeVersion},
    {"From", kVoAnomalyRepeatedFrom, kVoAnomalyRepeatedFrom},
    {"Subject", kVoAnomalyRepeatedSubject, kVoAnomalyRepeatedSubject},
    {"Date", kVoAnomalyRepeatedDate, kVoAnomalyRepeatedDate},
    {"Message-ID", kVoAnomalyRepeatedMessageId, kVoAnomalyRepeatedMessageId},
};

bool isBlankLine(std::string_view line) { return line.find_first_not_of(" \t") == line.npos; }

RawField cutField(std::string_view block, const RawLine& line, std::size_t colon) {
  RawField field;
  field.offset = line.offset;
  std::size_t end = colon;
  while (end > 0 && isBlank(line.text[end - 1])) --end;
  field.name = line.text.substr(0, end);
  field.hasBlankInName = line.text.substr(0, colon).find_first_of(" \t") != std::string_view::npos;
  field.valueOffset = line.offset + colon + 1;
  field.value = block.substr(field.valueOffset, line.text.size() - colon - 1);
  return field;
}

// Reports each kind of odd byte once a block, where it stands first.
class ByteWatch {
 public:
  ByteWatch(std::uint64_t base, AnomalySink& sink) : mBase(base), mSink(sink) {}

  void look(std::string_view block, const RawLine& line) {
    for (std::size_t i = 0; i < line.text.size(); ++i) {
      if (line.text[i] == '\0')
        once(mNul, kVoAnomalyHeaderNul, line.offset + i);
      else if (static_cast<unsigned char>(line.text[i]) >= 0x80)
        once(m8Bit, kVoAnomalyHeader8Bit, line.offset + i);
    }
    if (line.text.size() > kMaxLine) mSink.add(kVoAnomalyLineTooLong, mBase + line.offset, line.text.size());
    if (line.length == line.text.size()) return;
    const std::size_t end = line.offset + line.text.size();
    if (block[end] == '\n') {
      if (!mHasLf) mFirstLf = end;
      mHasLf = true;
    } else if (line.length - line.text.size() == 2) {
      mHasCrLf = true;
    } else {
      once(mCr, kVoAnomalyHeaderLoneCr, end);
    }
  }
  void finish() {
    if (mHasLf && mHasCrLf) mSink.add(kVoAnomalyHeaderLoneLf, mBase + mFirstLf, 1);
  }

 private:
  void once(bool& seen, VoMsgAnomalyCode code, std::size_t at) {
    if (!seen) mSink.add(code, mBase + at, 1);
    seen = true;
  }

  std::uint64_t mBase;
  AnomalySink& mSink;
  bool mNul = false, m8Bit = false, mCr = false, mHasCrLf = false, mHasLf = false;
  std::size_t mFirstLf = 0;
};

// Junk lines that follow one another are one entry, so that a text without a header is not one for each line.
class JunkRun {
 public:
  JunkRun(std::uint64_t base, AnomalySink& sink) : mBase(base), mSink(sink) {}

  void add(std::size_t offset, std::size_t length) {
    if (!isOpen()) mBegin = offset;
    mEnd = offset + length;
  }
  bool isOpen() const { return mEnd > mBegin; }
  void finish() {
    if (isOpen()) mSink.add(kVoAnomalyHeaderJunkLine, mBase + mBegin, mEnd - mBegin);
    mBegin = mEnd = 0;
  }

 private:
  std::uint64_t mBase;
  AnomalySink& mSink;
  std::size_t mBegin = 0, mEnd = 0;
};

}  // namespace

std::vector<RawField> findLineAnomalies(std::string_view block, std::uint64_t base, AnomalySink& sink) {
  std::vector<RawField> fields;
  ByteWatch bytes(base, sink);
  JunkRun junk(base, sink);
  RawLine line{};
  for (std::size_t at = 0; at < block.size(); at += line.length) {
    line = rawLineAt(block, at);
    bytes.look(block, line);
    const bool isLast = at + line.length >= block.size();
    if (isBlankLine(line.text)) {
      // Behind another line it continues that; at the front it ends the block.
      const bool isFold = !line.text.empty() && at > 0;
      junk.finish();
      if (isFold)
        sink.add(kVoAnomalyHeaderBlankFold, base + at, line.text.size());
      else if (isLast && !line.text.empty())
        sink.add(kVoAnomalyHeaderBlankEnd, base + at, line.text.size());
      continue;
    }
    if (isBlank(line.text.front()) && !fields.empty()) {
      RawField& field = fields.back();
      field.value = block.substr(field.valueOffset, at + line.text.size() - field.valueOffset);
      continue;
    }
    const std::size_t colon = line.text.find(':');
    if (colon != line.text.npos) junk.finish();
    if (at == 0 && line.text.substr(0, 5) == "From ") {
      sink.add(kVoAnomalyHeaderMboxLine, base, line.text.size());
    } else if (colon == line.text.npos || colon == 0 || isBlank(line.text.front())) {
      junk.add(at, line.text.size());
      continue;
    } else {
      fields.push_back(cutField(block, line, colon));
      if (fields.back().hasBlankInName) sink.add(kVoAnomalyHeaderNameBlank, base + at, colon);
    }
  }
  junk.finish();
  bytes.finish();
  if (!block.empty() && !isBlankLine(line.text)) sink.add(kVoAnomalyHeaderUnterminated, base + block.size(), 0);
  return fields;
}

void findRepeatedFields(const std::vector<RawField>& fields, std::uint64_t base, AnomalySink& sink) {
  for (const Repetition& single : kSingleFields) {
    const RawField* first = nullptr;
    std::string said;
    for (const RawField& field : fields) {
      if (!equalNoCase(field.name, single.name)) continue;
      if (!first) {
        first = &field;
        said = normalised(field.value);
        continue;
      }
      sink.add(normalised(field.value) == said ? single.same : single.different, base + field.offset, field.length());
    }
  }
}

void findPassedLimits(const std::vector<RawField>& fields, std::uint64_t base, bool isChild, AnomalySink& sink) {
  const HeaderLimits limits = HeaderLimits::of(isChild);
  for (const RawField& field : fields) {
    std::string_view rest = field.value;
    std::string_view address;
    std::size_t count = 0;
    if (equalNoCase(field.name, "From") || equalNoCase(field.name, "To") || equalNoCase(field.name, "Cc") ||
        equalNoCase(field.name, "Bcc")) {
      while (limits.addresses > 0 && !limits.tooManyAddresses(count) && cutAddress(rest, address)) ++count;
      if (limits.tooManyAddresses(count)) sink.add(kVoAnomalyHeaderLimit, base + field.offset, field.length());
    } else if (limits.parameters > 0 &&
               (equalNoCase(field.name, "Content-Type") || equalNoCase(field.name, "Content-Disposition"))) {
      bool hasComment = false;
      if (limits.tooManyParameters(rawParameters(field.value, hasComment).size()))
        sink.add(kVoAnomalyHeaderLimit, base + field.offset, field.length());
    }
  }
  if (limits.tooManyFields(fields.size())) {
    const RawField& beyond = fields[static_cast<std::size_t>(limits.fields)];
    sink.add(kVoAnomalyHeaderLimit, base + beyond.offset, beyond.length());
  }
}

}  // namespace vomsg::detail
