#include "cli/Input.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "cli/Failure.h"
#include "vomsg/entity/VoMsgRfc822Message.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgFileResource.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"
#include "vomsg/tnef/VoMsgTnefMessage.h"
#include "vomsg/tnef/VoTnefInteger.h"

namespace cli {

namespace {

constexpr std::uint64_t kSizeLimit = std::uint64_t{1} << 31;

struct Bytes {
  std::string bytes;
};

// Memory that lives as long as the resource over it.
class BytesResource : private Bytes, public VoMsgMemoryResource {
 public:
  explicit BytesResource(std::string text)
      : Bytes{std::move(text)},
        VoMsgMemoryResource(bytes.data(), static_cast<unsigned>(bytes.size()), 0, nullptr, nullptr) {}
};

struct Descriptor {
  int fd;
  ~Descriptor() {
    if (fd > STDERR_FILENO) close(fd);
  }
};

Failure noInput(const std::string& file, const char* reason) { return {kNoInput, file + ": " + reason}; }

std::string readStream(int fd, const std::string& file) {
  std::string bytes;
  char chunk[65536];
  for (;;) {
    const ssize_t n = read(fd, chunk, sizeof chunk);
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) throw noInput(file, std::strerror(errno));
    if (n == 0) return bytes;
    bytes.append(chunk, static_cast<std::size_t>(n));
    if (bytes.size() >= kSizeLimit) throw noInput(file, "2 GiB and more cannot be read");
  }
}

// A TNEF stream that lies there without a message around it, as mail programs save "winmail.dat".
bool isTnefStream(VoMsgBufferedReader& source) { return _tnefGetInt32(&source) == kVoTnefSignature; }

}  // namespace

std::unique_ptr<VoMsgResourceLocator> openInput(const std::string& file) {
  if (file == "-") return std::make_unique<BytesResource>(readStream(STDIN_FILENO, "standard input"));
  const Descriptor input{open(file.c_str(), O_RDONLY | O_CLOEXEC)};
  struct stat status;
  if (input.fd < 0 || fstat(input.fd, &status) != 0) throw noInput(file, std::strerror(errno));
  if (S_ISDIR(status.st_mode)) throw noInput(file, "this is a folder");
  if (!S_ISREG(status.st_mode)) return std::make_unique<BytesResource>(readStream(input.fd, file));
  if (static_cast<std::uint64_t>(status.st_size) >= kSizeLimit) throw noInput(file, "2 GiB and more cannot be read");
  return std::make_unique<VoMsgFileResource>(file.c_str(), nullptr, nullptr);
}

std::string readAll(const VoMsgResourceLocator& resource, const std::string& file) {
  const std::unique_ptr<VoMsgBufferedReader> reader(resource.getInputStream(VoMsgResourceLocator::dataPart));
  if (!reader) throw failureOf(kVoReadFailed, file);
  std::string bytes;
  char chunk[65536];
  while (const unsigned n = reader->read(chunk, sizeof chunk)) bytes.append(chunk, n);
  return bytes;
}

OpenedMessage openMessage(const std::string& file, std::unique_ptr<VoMsgResourceLocator> source) {
  OpenedMessage opened{nullptr, kVoSuccess};
  const std::unique_ptr<VoMsgBufferedReader> reader(source->getInputStream(VoMsgResourceLocator::dataPart));
  if (!reader) throw failureOf(kVoReadFailed, file);
  if (isTnefStream(*reader))
    opened.message = std::make_unique<VoMsgTnefMessage>();
  else
    opened.message = std::make_unique<VoMsgRfc822Message>();
  opened.code = opened.message->readFrom(source.release());
  int err = 0;
  opened.message->getContextSource(err);  // keeps the file open for the many small reads that follow
  return opened;
}

void checkReading(const OpenedMessage& opened, const std::string& file) {
  // The source could be opened, so what was missing is its end.
  if (opened.code == kVoReadFailed)
    throw Failure(kBadData, file + ": it ends too early (" + hexCode(opened.code) + ")");
  if (voFailed(opened.code)) throw failureOf(opened.code, file);
}

std::vector<std::string> expandFolders(const std::vector<std::string>& arguments) {
  namespace fs = std::filesystem;
  std::vector<std::string> files;
  for (const std::string& argument : arguments) {
    std::error_code error;
    if (!fs::is_directory(argument, error)) {
      files.push_back(argument);
      continue;
    }
    const auto first = static_cast<std::ptrdiff_t>(files.size());
    // Of a Maildir's three folders "tmp" holds what is still being delivered.
    const bool isMaildir = fs::is_directory(argument + "/cur", error) && fs::is_directory(argument + "/new", error);
    for (const char* below : isMaildir ? std::vector<const char*>{"/cur", "/new"} : std::vector<const char*>{""}) {
      fs::recursive_directory_iterator entry(argument + below, error);
      for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
        std::error_code ignored;  // an entry that vanished is no file any more
        if (entry->is_regular_file(ignored)) files.push_back(entry->path().string());
      }
      if (error) throw noInput(argument, error.message().c_str());
    }
    std::sort(files.begin() + first, files.end());
  }
  return files;
}

}  // namespace cli
