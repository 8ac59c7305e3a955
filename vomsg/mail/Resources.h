// What the modern face hands to the library and gets from it: bytes in a string, descriptors, streams. Everything here
// is called by the library, so nothing here throws.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <istream>
#include <limits>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>

#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"
#include "vomsg/foundation/VoMsgResourceLocator.h"
#include "vomsg/foundation/VoMsgResourceManager.h"
#include "vomsg/mail/Error.h"

namespace vomsg::inner {

// Sizes in the library are 32 bits wide, and a message is smaller than this.
inline constexpr std::uint64_t kSizeLimit = std::uint64_t{1} << 31;

struct Descriptor {
  explicit Descriptor(int number) : fd(number) {}
  ~Descriptor() {
    if (fd >= 0) ::close(fd);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int fd;
};
using SharedDescriptor = std::shared_ptr<const Descriptor>;

// As many of `n` bytes at `offset` as are there; less only at the end of the data or when reading fails.
inline std::size_t readAt(int fd, char* target, std::size_t n, std::uint64_t offset) {
  std::size_t count = 0;
  while (count < n) {
    const ssize_t got = ::pread(fd, target + count, n - count, static_cast<off_t>(offset + count));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) break;
    count += static_cast<std::size_t>(got);
  }
  return count;
}

// Reads [base, base + size) of a file, wherever the descriptor stands.
class RangeReader : public VoMsgBufferedReader {
 public:
  RangeReader(SharedDescriptor source, std::uint64_t base, std::uint32_t size)
      : VoMsgBufferedReader(std::clamp<std::uint32_t>(size, 1, 32768)),
        mFile(std::move(source)),
        mBase(base),
        mSize(size) {}

  bool open() override {
    if (mpBuffer == nullptr) return false;
    if (!mIsOpen) moveTo(0);
    return mIsOpen = true;
  }
  void close() override {
    moveTo(0);
    mIsOpen = false;
  }
  bool isOpen() override { return mIsOpen; }
  unsigned getOffset() override { return mFilled - static_cast<unsigned>(mpEnd - mpCurrent); }
  bool seek(long delta) override { return rseek(delta, 1) >= 0; }
  long rseek(long offset, int whence) override {
    const std::int64_t from = whence == 0 ? 0 : whence == 1 ? std::int64_t{getOffset()} : std::int64_t{mSize};
    const std::int64_t target = from + offset;
    if (whence < 0 || whence > 2 || target < 0 || target > std::int64_t{mSize}) return -1;
    const auto position = static_cast<std::uint32_t>(target);
    const auto buffered = static_cast<std::uint32_t>(mpEnd - mpBuffer);
    if (position <= mFilled && position >= mFilled - buffered) {
      mpCurrent = mpEnd - (mFilled - position);
    } else {
      moveTo(position);
    }
    return static_cast<long>(target);
  }
  bool ungetChar() override { return seek(-1); }
  unsigned getSize() override { return mSize; }
  int readBuffer() override {
    if (mpBuffer == nullptr) return -1;
    if (!mIsOpen) return 0;
    const std::size_t want = std::min<std::size_t>(mBufferSize, mSize - mFilled);
    const std::size_t got = readAt(mFile->fd, mpBuffer, want, mBase + mFilled);
    mFilled += static_cast<std::uint32_t>(got);
    mpCurrent = mpBuffer;
    mpEnd = mpBuffer + got;
    return static_cast<int>(got);
  }

 private:
  void moveTo(std::uint32_t position) {
    mFilled = position;
    mpCurrent = mpEnd = mpBuffer;
  }

  SharedDescriptor mFile;
  std::uint64_t mBase;
  std::uint32_t mSize;
  std::uint32_t mFilled = 0;  // where mpEnd stands, from the start of the range
  bool mIsOpen = false;
};

// A resource of a kind of its own: type 0, neither the library's files nor its memory.
class OwnResource : public VoMsgResourceLocator {
 public:
  OwnResource() : VoMsgResourceLocator(nullptr, nullptr) {}
  int getResourceType() const override { return 0; }
  VoMsgBufferedReader* getInputStream(VoMsgResourceDataType) const override { return nullptr; }
  VoMsgBufferedWriter* getOutputStream(VoMsgResourceDataType) const override { return nullptr; }
  bool equal(VoMsgResourceLocator* other) const override { return this == other; }
  unsigned getSize(VoMsgResourceDataType) const override { return 0; }
  bool hasResourceFork() const override { return false; }
};

// A stretch of a file as a resource to read from; it keeps the descriptor open.
class RangeResource : public OwnResource {
 public:
  RangeResource(SharedDescriptor source, std::uint64_t base, std::uint32_t size)
      : mFile(std::move(source)), mBase(base), mSize(size) {}
  VoMsgBufferedReader* getInputStream(VoMsgResourceDataType type) const override {
    if (type != dataPart) return nullptr;
    auto* const reader = new (std::nothrow) RangeReader(mFile, mBase, mSize);
    if (reader != nullptr && !reader->open()) {
      delete reader;
      return nullptr;
    }
    return reader;
  }
  unsigned getSize(VoMsgResourceDataType type) const override { return type == dataPart ? mSize : 0; }

 private:
  SharedDescriptor mFile;
  std::uint64_t mBase;
  std::uint32_t mSize;
};

// Hands what the library writes to `sink(const char*, std::size_t) -> bool`, which must not throw.
template <class Sink>
class SinkWriter : public VoMsgBufferedWriter {
 public:
  SinkWriter(Sink& sink, bool& failed, unsigned bufferSize)
      : VoMsgBufferedWriter(bufferSize), mSink(sink), mFailed(failed) {}
  ~SinkWriter() override { writeBuffer(); }
  bool open() override { return true; }
  bool close() override { return writeBuffer(); }
  bool isOpen() override { return true; }
  bool writeBuffer() override {
    if (mpBuffer == nullptr) return false;
    if (mUsed > 0 && !mFailed && !mSink(static_cast<const char*>(mpBuffer), std::size_t{mUsed})) mFailed = true;
    mUsed = 0;
    return !mFailed;
  }

 private:
  Sink& mSink;
  bool& mFailed;
};

// A target for the library to write to, over such a sink.
template <class Sink>
class SinkResource : public OwnResource {
 public:
  explicit SinkResource(Sink sink, unsigned bufferSize = 0) : mSink(std::move(sink)), mBufferSize(bufferSize) {}
  VoMsgBufferedWriter* getOutputStream(VoMsgResourceDataType type) const override {
    return type == dataPart ? new (std::nothrow) SinkWriter<Sink>(mSink, mFailed, mBufferSize) : nullptr;
  }
  bool failed() const { return mFailed; }  // a write was refused, be it the last one

 private:
  mutable Sink mSink;
  mutable bool mFailed = false;
  unsigned mBufferSize;
};

struct StringSink {
  std::string* text;
  bool operator()(const char* data, std::size_t n) const noexcept {
#if defined(__cpp_exceptions)
    try {
      text->append(data, n);
    } catch (...) {
      return false;
    }
#else
    text->append(data, n);
#endif
    return true;
  }
};

struct DescriptorSink {
  int fd;
  bool operator()(const char* data, std::size_t n) const noexcept {
    while (n > 0) {
      const ssize_t done = ::write(fd, data, n);
      if (done < 0 && errno == EINTR) continue;
      if (done <= 0) return false;
      data += done;
      n -= static_cast<std::size_t>(done);
    }
    return true;
  }
};

struct StreamSink {
  std::ostream* out;
  bool operator()(const char* data, std::size_t n) const noexcept {
#if defined(__cpp_exceptions)
    try {
      out->write(data, static_cast<std::streamsize>(n));
    } catch (...) {
      return false;
    }
#else
    out->write(data, static_cast<std::streamsize>(n));
#endif
    return out->good();
  }
};

// The caller's bytes in place, for operations that copy what they need at once.
class View : public VoMsgMemoryResource {
 public:
  explicit View(std::string_view bytes, const char* name = nullptr)
      : VoMsgMemoryResource(const_cast<char*>(bytes.data()), static_cast<unsigned>(bytes.size()), 0, name, "utf-8") {}
};

// A resource of the manager with a copy of the bytes; null when there is neither memory nor space.
inline std::unique_ptr<VoMsgResourceLocator> copied(std::string_view bytes) {
  const auto size = static_cast<unsigned>(bytes.size());
  // An empty one would be a file that nobody makes.
  if (bytes.empty()) return std::make_unique<VoMsgMemoryResource>(nullptr, 0u, nullptr, nullptr);
  std::unique_ptr<VoMsgResourceLocator> resource(VoMsgResourceManager::createTmpResource(size));
  if (!resource) return nullptr;
  if (resource->getResourceType() == VoMsgResourceLocator::memory) {
    auto& block = static_cast<VoMsgMemoryResource&>(*resource);
    std::memcpy(block.getMemoryPointer(VoMsgResourceLocator::dataPart), bytes.data(), bytes.size());
    return resource;
  }
  const std::unique_ptr<VoMsgBufferedWriter> writer(resource->getOutputStream(VoMsgResourceLocator::dataPart));
  return writer && writer->write(bytes.data(), size) && writer->close() ? std::move(resource) : nullptr;
}

// Copies what `read(char*, std::size_t)` gives, until it gives 0 bytes, into a resource of the manager. A negative
// count is a failure. What is small is copied once its size is known; the rest goes to a file on the way.
template <class Read>
Status copyAll(Read&& read, std::unique_ptr<VoMsgResourceLocator>& resource) {
  std::string start;
  std::unique_ptr<VoMsgBufferedWriter> writer;
  std::uint64_t total = 0;
  char chunk[16384];
  for (;;) {
    const std::int64_t n = read(chunk, sizeof chunk);
    if (n < 0) return Error(kVoReadFailed);
    if (n == 0) break;
    total += static_cast<std::uint64_t>(n);
    if (total >= kSizeLimit) return Error(kVoReadFailed);
    if (!writer && total > VoMsgResourceManager::getMaxMemoryResourceSize()) {
      resource.reset(VoMsgResourceManager::createTmpFileResource());
      if (resource) writer.reset(resource->getOutputStream(VoMsgResourceLocator::dataPart));
      if (!writer) return Error(kVoNoMemory);
      if (!writer->write(start.data(), static_cast<unsigned>(start.size()))) return Error(kVoWriteFailed);
      start = {};
    }
    if (writer) {
      if (!writer->write(chunk, static_cast<unsigned>(n))) return Error(kVoWriteFailed);
    } else {
      start.append(chunk, static_cast<std::size_t>(n));
    }
  }
  if (!writer) resource = copied(start);
  if (writer && !writer->close()) return Error(kVoWriteFailed);
  return resource ? Status() : Status(Error(kVoNoMemory));
}

inline Status copyAll(int fd, std::unique_ptr<VoMsgResourceLocator>& resource) {
  return copyAll(
      [fd](char* target, std::size_t n) -> std::int64_t {
        for (;;) {
          const ssize_t got = ::read(fd, target, n);
          if (got >= 0 || errno != EINTR) return got;
        }
      },
      resource);
}

inline Status copyAll(std::istream& in, std::unique_ptr<VoMsgResourceLocator>& resource) {
  return copyAll(
      [&in](char* target, std::size_t n) -> std::int64_t {
        in.read(target, static_cast<std::streamsize>(n));
        return in.bad() ? -1 : static_cast<std::int64_t>(in.gcount());
      },
      resource);
}

// The whole content of a resource.
inline Result<std::string> readAll(const VoMsgResourceLocator& resource) {
  const std::unique_ptr<VoMsgBufferedReader> reader(resource.getInputStream(VoMsgResourceLocator::dataPart));
  if (!reader) return Error(kVoReadFailed);
  std::string bytes;
  const unsigned size = reader->getSize();
  if (size < kSizeLimit) bytes.reserve(size);
  char chunk[16384];
  while (const unsigned n = reader->read(chunk, sizeof chunk)) bytes.append(chunk, n);
  return bytes;
}

}  // namespace vomsg::inner
