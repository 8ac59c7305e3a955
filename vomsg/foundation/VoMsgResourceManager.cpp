#include "vomsg/foundation/VoMsgResourceManager.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>

#include "vomsg/foundation/VoMsgCString.h"
#include "vomsg/foundation/VoMsgFileResource.h"
#include "vomsg/foundation/VoMsgLogLine.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"
#include "vomsg/foundation/VoMsgShortage.h"

using vomsg::detail::CString;

namespace {

constexpr char kLogSource[] = "VoMsgResourceManager";

constexpr unsigned kMemoryResourceFloor = 0x100000;
constexpr unsigned kTotalFloor = 0x2000000;

constexpr std::string_view kPrefix = "VOMSG_";
constexpr std::size_t kRandomChars = 20;  // of 5 bits each
constexpr char kAlphabet[] = "abcdefghijklmnopqrstuvwxyz234567";
static_assert(sizeof kAlphabet == 32 + 1);

bool readRandomDevice(unsigned char* out, std::size_t n) {
  const int file = ::open("/dev/urandom", O_RDONLY | O_CLOEXEC);
  if (file < 0) return false;
  const bool complete = ::read(file, out, n) == static_cast<ssize_t>(n);
  ::close(file);
  return complete;
}

// Unpredictable bytes from the system. Not from lrand48: its sequence belongs to the UUIDs, and can be guessed.
bool fillRandom(unsigned char* out, std::size_t n) {
  ssize_t count;
  do {
    count = ::getrandom(out, n, 0);
  } while (count < 0 && errno == EINTR);
  return count == static_cast<ssize_t>(n) || readRandomDevice(out, n);
}

bool isUsableDirectory(const char* path) {
  struct stat status;
  return ::stat(path, &status) == 0 && S_ISDIR(status.st_mode) && ::access(path, W_OK | X_OK) == 0;
}

bool isTaken(const char* path) {
  struct stat status;
  return ::lstat(path, &status) == 0 || errno != ENOENT;
}

// `directory` (ending in "/"), the prefix and random characters; null when that cannot be had.
CString makePath(std::string_view directory) {
  CString path(static_cast<char*>(std::malloc(directory.size() + kPrefix.size() + kRandomChars + 1)));
  unsigned char random[kRandomChars];
  if (!path || !fillRandom(random, sizeof random)) return nullptr;
  char* out = std::copy(directory.begin(), directory.end(), path.get());
  out = std::copy(kPrefix.begin(), kPrefix.end(), out);
  for (const unsigned char byte : random) *out++ = kAlphabet[byte & 31];
  *out = '\0';
  return path;
}

}  // namespace

constinit VoMsgResourceManager VoMsgResourceManager::instance;

VoMsgResourceManager::~VoMsgResourceManager() {
  std::free(mpTmpDirPath);
  // Static objects that are destroyed later may still make and release resources. The store is volatile because
  // the compiler may otherwise drop it: formally nobody looks at this object again.
  *const_cast<char* volatile*>(&mpTmpDirPath) = nullptr;
}

const char* VoMsgResourceManager::getTmpDirPath() { return instance.mpTmpDirPath; }

void VoMsgResourceManager::setTmpDirPath(const char* path) {
  CString stored;
  if (path) {
    const std::size_t length = std::strlen(path);
    stored.reset(static_cast<char*>(std::malloc(length + 2)));
    if (!stored) return;
    const bool closed = length > 0 && path[length - 1] == '/';
    std::snprintf(stored.get(), length + 2, closed ? "%s" : "%s/", path);
  }
  std::free(instance.mpTmpDirPath);
  instance.mpTmpDirPath = stored.release();
}

unsigned VoMsgResourceManager::getMaxMemoryResourceSize() { return instance.mMaxMemoryResourceSize; }

void VoMsgResourceManager::setMaxMemoryResourceSize(unsigned size) {
  instance.mMaxMemoryResourceSize = std::max(size, kMemoryResourceFloor);
}

unsigned VoMsgResourceManager::getTotalAllocateMemoryLimit() { return instance.mTotalLimit; }

void VoMsgResourceManager::setTotalAllocateMemoryLimit(unsigned limit) {
  instance.mTotalLimit = std::max(limit, kTotalFloor);
}

unsigned VoMsgResourceManager::currentAllocateMemorySize() { return instance.mAllocated; }

char* VoMsgResourceManager::createTmpFilePath() {
  constexpr char kSystemDirectory[] = P_tmpdir "/";
  const char* directory = instance.mpTmpDirPath ? instance.mpTmpDirPath : kSystemDirectory;
  if (directory != kSystemDirectory && !isUsableDirectory(directory)) {
    VO_DIAGNOSTIC(0, "", "The directory [%s] for temporary files can not be used, [%s] serves.", directory,
                  kSystemDirectory);
    directory = kSystemDirectory;
  }
  CString path;
  if (isUsableDirectory(directory)) path = makePath(directory);
  if (path && !isTaken(path.get())) return path.release();
  VO_LOG(9, "", "********* GetTempFileName error ********");
  return nullptr;
}

VoMsgResourceLocator* VoMsgResourceManager::createTmpFileResource() {
  const CString path(createTmpFilePath());
  auto* const resource = path ? new (std::nothrow) VoMsgFileResource(path.get(), 1, nullptr, "us-ascii") : nullptr;
  if (!resource)
    vomsg::detail::noteShortage(kVoWriteFailed);
  else
    resource->mParts[VoMsgResourceLocator::dataPart] = VoMsgFileResource::Part::toBeCreated;
  return resource;
}

// Takes `size` bytes off the budget; false when they are not there.
static bool takeMemory(std::atomic<unsigned>& allocated, unsigned size, unsigned limit) {
  unsigned before = allocated.load(std::memory_order_relaxed);
  do {
    if (std::uint64_t{before} + size > limit) return false;
  } while (!allocated.compare_exchange_weak(before, before + size, std::memory_order_relaxed));
  return true;
}

static void returnMemory(std::atomic<unsigned>& allocated, unsigned size) {
  unsigned before = allocated.load(std::memory_order_relaxed);
  while (!allocated.compare_exchange_weak(before, before - std::min(before, size), std::memory_order_relaxed)) {
  }
}

VoMsgResourceLocator* VoMsgResourceManager::createTmpResource(unsigned size) {
  if (size != 0 && size <= instance.mMaxMemoryResourceSize &&
      takeMemory(instance.mAllocated, size, instance.mTotalLimit)) {
    std::unique_ptr<VoMsgMemoryResource> resource(new (std::nothrow) VoMsgMemoryResource(size, nullptr, "us-ascii"));
    if (resource && resource->getMemoryPointer(VoMsgResourceLocator::dataPart)) {
      resource->mIsTemporary = 1;
      resource->mAllocated = size;
      return resource.release();
    }
    returnMemory(instance.mAllocated, size);
  }
  return createTmpFileResource();
}

void VoMsgResourceManager::freeTmpResource(VoMsgResourceLocator* resource) {
  const auto* const memoryResource = dynamic_cast<const VoMsgMemoryResource*>(resource);
  if (memoryResource) returnMemory(instance.mAllocated, memoryResource->mAllocated);
}
