#include "vomsg/foundation/VoMsgResourceState.h"

#include <sys/stat.h>

#include "vomsg/foundation/VoMsgFileReader.h"
#include "vomsg/foundation/VoMsgRangeReader.h"
#include "vomsg/foundation/VoMsgStreamAccess.h"

namespace vomsg::detail {

namespace {

ResourceState stateOf(const struct stat& status) {
  ResourceState state;
  state.size = static_cast<std::uint64_t>(status.st_size);
  state.device = static_cast<std::uint64_t>(status.st_dev);
  state.inode = static_cast<std::uint64_t>(status.st_ino);
  state.changedAt = std::int64_t{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec;
  state.kind = ResourceState::Kind::file;
  return state;
}

}  // namespace

ResourceState ResourceState::of(VoMsgBufferedReader& reader) {
  if (auto* const range = dynamic_cast<RangeReader*>(&reader)) return of(range->whole());
  struct stat status;
  const auto* const file = dynamic_cast<VoMsgFileReader*>(&reader);
  if (file && ::fstat(ReaderWindow::descriptor(*file), &status) == 0) return stateOf(status);
  ResourceState state;
  state.size = reader.getSize();
  state.kind = Kind::other;
  return state;
}

ResourceState ResourceState::ofFile(const char* path) {
  struct stat status;
  return path && ::stat(path, &status) == 0 ? stateOf(status) : ResourceState();
}

}  // namespace vomsg::detail
