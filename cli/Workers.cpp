// Each worker writes its items into a pipe of its own, and the parent reads the pipes in turn: item n stands in pipe
// n % workers. A worker that is ahead waits on its full pipe, so no result has to be kept.
#include "cli/Workers.h"

#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <vector>

#include "cli/Failure.h"

namespace cli {

namespace {

struct Worker {
  pid_t process;
  int pipe;
};

bool writeAll(int fd, const char* data, std::size_t size) {
  while (size > 0) {
    const ssize_t n = write(fd, data, size);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    data += n;
    size -= static_cast<std::size_t>(n);
  }
  return true;
}

bool readAll(int fd, char* data, std::size_t size) {
  while (size > 0) {
    const ssize_t n = read(fd, data, size);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    data += n;
    size -= static_cast<std::size_t>(n);
  }
  return true;
}

// The sizes of the texts come first. `isEnd` instead of an item tells that there are no more.
struct Frame {
  std::uint64_t isEnd, bytesBefore, nameSize, outSize, errSize;
  std::int64_t exit;
};

bool sendItem(int fd, const Item& item) {
  const Frame frame{0, item.bytesBefore, item.name.size(), item.out.size(), item.err.size(), item.exit};
  return writeAll(fd, reinterpret_cast<const char*>(&frame), sizeof frame) &&
         writeAll(fd, item.name.data(), item.name.size()) && writeAll(fd, item.out.data(), item.out.size()) &&
         writeAll(fd, item.err.data(), item.err.size());
}

// False at the end. Failure: the worker is gone.
bool receiveItem(int fd, Item& item) {
  Frame frame;
  bool isWhole = readAll(fd, reinterpret_cast<char*>(&frame), sizeof frame);
  if (isWhole && frame.isEnd != 0) return false;
  if (isWhole) {
    item.exit = static_cast<int>(frame.exit);
    item.bytesBefore = frame.bytesBefore;
    item.name.resize(static_cast<std::size_t>(frame.nameSize));
    item.out.resize(static_cast<std::size_t>(frame.outSize));
    item.err.resize(static_cast<std::size_t>(frame.errSize));
    isWhole = readAll(fd, item.name.data(), item.name.size()) && readAll(fd, item.out.data(), item.out.size()) &&
              readAll(fd, item.err.data(), item.err.size());
  }
  if (!isWhole) throw Failure(kBadData, "a process of -j ended early");
  return true;
}

[[noreturn]] void beWorker(unsigned number, unsigned workers, int out,
                           const std::function<void(unsigned, unsigned, const SendItem&)>& work) {
  int exit = 1;
  try {
    work(number, workers, [out](const Item& item) {
      if (!sendItem(out, item)) _exit(1);  // the parent is gone
    });
    const Frame end{1, 0, 0, 0, 0, 0};
    if (writeAll(out, reinterpret_cast<const char*>(&end), sizeof end)) exit = 0;
  } catch (...) {
  }
  _exit(exit);
}

}  // namespace

void forEachItem(unsigned count, const std::function<void(unsigned worker, unsigned workers, const SendItem&)>& work,
                 const std::function<void(const Item&)>& receive) {
  struct Workers : std::vector<Worker> {
    ~Workers() {
      for (const Worker& worker : *this) close(worker.pipe);
      for (const Worker& worker : *this) waitpid(worker.process, nullptr, 0);
    }
  } workers;
  std::fflush(nullptr);  // what is still in a buffer must not be written twice
  for (unsigned i = 0; i < count; ++i) {
    int ends[2];
    if (pipe(ends) != 0) throw Failure(kCannotCreate, std::string("pipe: ") + std::strerror(errno));
    const pid_t process = fork();
    if (process == 0) {
      for (const Worker& worker : workers) close(worker.pipe);
      close(ends[0]);
      beWorker(i, count, ends[1], work);
    }
    close(ends[1]);
    if (process > 0) workers.push_back({process, ends[0]});
    if (process < 0) close(ends[0]);
    if (process < 0) throw Failure(kCannotCreate, std::string("fork: ") + std::strerror(errno));
  }
  Item item;
  for (std::size_t next = 0; receiveItem(workers[next].pipe, item); next = (next + 1) % workers.size()) receive(item);
}

}  // namespace cli
