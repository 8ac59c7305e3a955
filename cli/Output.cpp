#include "cli/Output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include "cli/Failure.h"

namespace cli {

namespace {

// The file that a signal must not leave behind. One at a time is in the making.
char gUnfinished[PATH_MAX] = "";

extern "C" void removeUnfinished(int signal) {
  if (gUnfinished[0] != '\0') unlink(gUnfinished);
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

void guardAgainstSignals(const std::string& path) {
  if (path.size() >= sizeof gUnfinished) return;
  for (const int signal : {SIGHUP, SIGINT, SIGPIPE, SIGTERM}) {
    if (std::signal(signal, removeUnfinished) == SIG_IGN) std::signal(signal, SIG_IGN);
  }
  std::memcpy(gUnfinished, path.c_str(), path.size() + 1);
}

Failure cannotCreate(const std::string& path, int error) { return {kCannotCreate, path + ": " + std::strerror(error)}; }

class DescriptorWriter : public VoMsgBufferedWriter {
 public:
  DescriptorWriter(int fd, int& error) : VoMsgBufferedWriter(0), mFile(fd), mError(error) {}
  ~DescriptorWriter() override { DescriptorWriter::writeBuffer(); }
  bool open() override { return true; }
  bool close() override { return writeBuffer(); }
  bool isOpen() override { return true; }
  bool writeBuffer() override {
    const char* data = mpBuffer;
    while (mUsed > 0 && mError == 0) {
      const ssize_t n = ::write(mFile, data, mUsed);
      if (n < 0 && errno == EINTR) continue;
      if (n <= 0) {
        mError = n < 0 ? errno : EIO;
        return false;
      }
      data += n;
      mUsed -= static_cast<unsigned>(n);
    }
    return mError == 0;
  }

 private:
  int mFile;
  int& mError;
};

}  // namespace

OutputFile::OutputFile(const std::string& path) : VoMsgResourceLocator(nullptr, nullptr), mPath(path) {
  if (path == "-") {
    mPath = "standard output";
    mFile = STDOUT_FILENO;
    return;
  }
  // What a link points to is replaced, not the link; and the place of a device is no place for a file.
  struct stat old;
  const bool exists = stat(path.c_str(), &old) == 0;
  if (exists && S_ISDIR(old.st_mode)) throw cannotCreate(path, EISDIR);
  if (exists && !S_ISREG(old.st_mode)) {
    mFile = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    if (mFile < 0) throw cannotCreate(path, errno);
    return;
  }
  if (exists) {
    char* resolved = realpath(path.c_str(), nullptr);
    if (resolved != nullptr) mPath = resolved;
    std::free(resolved);
  }
  const auto slash = mPath.rfind('/');
  std::string name = (slash == mPath.npos ? "" : mPath.substr(0, slash + 1)) + ".vomsg-XXXXXX";
  mFile = mkostemp(name.data(), O_CLOEXEC);
  if (mFile < 0) throw cannotCreate(path, errno);
  mTemporary = name;
  guardAgainstSignals(mTemporary);
  const mode_t mask = umask(0);
  umask(mask);
  if (fchmod(mFile, exists ? old.st_mode & 0777 : 0666 & ~mask) != 0) mError = errno;
}

OutputFile::OutputFile(int directory, const std::string& folder, const std::string& name)
    : VoMsgResourceLocator(nullptr, nullptr) {
  const auto dot = name.rfind('.');
  const std::string stem = name.substr(0, dot);
  const std::string extension = dot == name.npos ? "" : name.substr(dot);
  for (unsigned n = 1; n < 10000; ++n) {
    const std::string candidate = n == 1 ? name : stem + "-" + std::to_string(n) + extension;
    mFile = openat(directory, candidate.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
    if (mFile >= 0) {
      mPath = mTemporary = folder + "/" + candidate;
      guardAgainstSignals(mTemporary);
      return;
    }
    if (errno != EEXIST) break;
  }
  throw cannotCreate(folder + "/" + name, errno);
}

OutputFile::~OutputFile() {
  if (mFile > STDERR_FILENO) close(mFile);
  if (!mTemporary.empty()) unlink(mTemporary.c_str());
  gUnfinished[0] = '\0';
}

void OutputFile::commit() {
  if (mFile > STDERR_FILENO && close(mFile) != 0 && mError == 0) mError = errno;
  mFile = -1;
  if (mError != 0) throw cannotCreate(mPath, mError);
  if (mTemporary.empty()) return;
  if (mTemporary != mPath && rename(mTemporary.c_str(), mPath.c_str()) != 0) throw cannotCreate(mPath, errno);
  mTemporary.clear();
  gUnfinished[0] = '\0';
}

// Neither of the library's own kinds: nobody may take it for an object of their classes.
int OutputFile::getResourceType() const { return 0; }
VoMsgBufferedReader* OutputFile::getInputStream(VoMsgResourceDataType) const { return nullptr; }
VoMsgBufferedWriter* OutputFile::getOutputStream(VoMsgResourceDataType type) const {
  return type == dataPart && mFile >= 0 ? new DescriptorWriter(mFile, mError) : nullptr;
}
bool OutputFile::equal(VoMsgResourceLocator* other) const { return this == other; }
unsigned OutputFile::getSize(VoMsgResourceDataType) const { return 0; }
bool OutputFile::hasResourceFork() const { return false; }

}  // namespace cli
