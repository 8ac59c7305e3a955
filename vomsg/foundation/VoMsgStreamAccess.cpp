#include "vomsg/foundation/VoMsgStreamAccess.h"

#include <algorithm>
#include <limits>
#include <typeinfo>

#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgFileReader.h"
#include "vomsg/foundation/VoMsgFileWriter.h"
#include "vomsg/foundation/VoMsgLineWalk.h"
#include "vomsg/foundation/VoMsgMemoryWriter.h"

namespace vomsg::detail {

std::string_view ReaderWindow::buffered(const VoMsgBufferedReader& reader) {
  return {reader.mpCurrent, static_cast<std::size_t>(reader.mpEnd - reader.mpCurrent)};
}

void ReaderWindow::consume(VoMsgBufferedReader& reader, std::size_t n) { reader.mpCurrent += n; }

bool ReaderWindow::fill(VoMsgBufferedReader& reader) {
  return reader.mpCurrent != reader.mpEnd || (reader.readBuffer() > 0 && reader.mpCurrent != reader.mpEnd);
}

bool ReaderWindow::moveWithin(VoMsgBufferedReader& reader, std::int64_t delta) {
  if (delta < reader.mpBuffer - reader.mpCurrent || delta > reader.mpEnd - reader.mpCurrent) return false;
  reader.mpCurrent += delta;
  return true;
}

int ReaderWindow::descriptor(const VoMsgFileReader& reader) { return reader.mFile; }

bool WriterAccess::writeThrough(VoMsgBufferedWriter& writer, const char* data, std::uint64_t n) {
  if (n >= writer.mBufferSize && writer.mpBuffer) {
    // Only the library's own writers are known to do nothing but pass bytes on; a class derived from one of them
    // may rely on seeing every byte in its buffer.
    if (typeid(writer) == typeid(VoMsgMemoryWriter)) {
      auto& memory = static_cast<VoMsgMemoryWriter&>(writer);
      return memory.writeBuffer() && memory.append(data, n);
    }
    if (typeid(writer) == typeid(VoMsgFileWriter) && writer.isOpen()) {
      auto& file = static_cast<VoMsgFileWriter&>(writer);
      return file.writeBuffer() && file.put(data, static_cast<std::size_t>(n)) == n;
    }
  }
  while (n > 0) {
    const auto piece = static_cast<unsigned>(std::min<std::uint64_t>(n, std::numeric_limits<int>::max()));
    if (!writer.write(data, piece)) return false;
    data += piece;
    n -= piece;
  }
  return true;
}

void WriterAccess::expect(VoMsgBufferedWriter& writer, std::uint64_t total) {
  if (typeid(writer) == typeid(VoMsgMemoryWriter)) static_cast<VoMsgMemoryWriter&>(writer).reserve(total, true);
}

void WriterAccess::expectFrom(VoMsgBufferedWriter& writer, VoMsgBufferedReader& source, std::uint64_t n) {
  // A reader that shows everything at once is written in one piece anyway.
  if (n <= ReaderWindow::buffered(source).size() || typeid(writer) != typeid(VoMsgMemoryWriter)) return;
  const unsigned size = source.getSize(), offset = source.getOffset();
  if (size == std::numeric_limits<unsigned>::max() || size <= offset) return;
  auto& memory = static_cast<VoMsgMemoryWriter&>(writer);
  memory.reserve(std::uint64_t{memory.mLength} + memory.mUsed + std::min<std::uint64_t>(n, size - offset), false);
}

bool readLine(VoMsgBufferedReader& reader, std::string& line, unsigned& terminatorLength) {
  line.clear();
  const WalkedLine walked = walkLine(reader, kNoLimit, [&](std::string_view stretch, bool) {
    line.append(stretch);
    return true;
  });
  terminatorLength = walked.terminatorLength;
  return walked.length > 0;
}

bool skipLine(VoMsgBufferedReader& reader, std::uint64_t& length, unsigned& terminatorLength) {
  const WalkedLine walked = walkLine(reader, kNoLimit, [](std::string_view, bool) { return true; });
  length = walked.length;
  terminatorLength = walked.terminatorLength;
  return walked.length > 0;
}

bool moveTo(VoMsgBufferedReader& reader, std::uint64_t offset) {
  constexpr std::uint64_t kFarthest = std::numeric_limits<std::int64_t>::max();
  if (offset > kFarthest) return false;
  const std::int64_t delta = static_cast<std::int64_t>(offset) - std::int64_t{reader.getOffset()};
  if (ReaderWindow::moveWithin(reader, delta)) return true;
  if (offset <= static_cast<std::uint64_t>(std::numeric_limits<long>::max()))
    return reader.rseek(static_cast<long>(offset), 0) >= 0;
  // Where long has 32 bits, the upper half of a large file is reached by steps from where the reader stands.
  return delta >= std::numeric_limits<long>::min() && delta <= std::numeric_limits<long>::max() &&
         reader.seek(static_cast<long>(delta));
}

VoErrorCode copyRange(VoMsgBufferedReader& source, VoMsgBufferedWriter& target, std::uint64_t offset,
                      std::uint64_t size) {
  if (size == 0) return kVoSuccess;
  if (!moveTo(source, offset)) return kVoReadFailed;
  WriterAccess::expectFrom(target, source, size);
  while (size > 0) {
    if (!ReaderWindow::fill(source)) return kVoReadFailed;
    std::string_view window = ReaderWindow::buffered(source);
    if (window.size() > size) window = window.substr(0, static_cast<std::size_t>(size));
    if (!WriterAccess::writeThrough(target, window.data(), window.size())) return kVoWriteFailed;
    ReaderWindow::consume(source, window.size());
    size -= window.size();
  }
  return kVoSuccess;
}

}  // namespace vomsg::detail
