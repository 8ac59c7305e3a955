// A full disk without a disk: while it lives, no file of this process, or of one that it starts, grows past a size.
#pragma once

#include <sys/resource.h>

#include <csignal>

namespace vomsg::test {

class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) : mSignal(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &mUsual);
    const rlimit tight{bytes, mUsual.rlim_max};
    setrlimit(RLIMIT_FSIZE, &tight);
  }
  ~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &mUsual);
    std::signal(SIGXFSZ, mSignal);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  void (*mSignal)(int);
  rlimit mUsual{};
};

}  // namespace vomsg::test
