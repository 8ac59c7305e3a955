// What data looked like when it was read, for whoever remembers where in it something stands: after a change the same
// offsets mean other bytes.
#pragma once

#include <cstdint>

class VoMsgBufferedReader;

namespace vomsg::detail {

// Two states are equal when the data is, as far as that can be told without reading it. A file that changed within one
// tick of the clock of its file system and kept its size goes unnoticed.
struct ResourceState {
  enum class Kind : std::uint8_t { unknown, file, other };

  // Of what `reader` has open. A file is asked through its descriptor, so that it is the one whose bytes are read,
  // whatever stands under its name by now; of anything else only the size is known.
  static ResourceState of(VoMsgBufferedReader& reader);
  // Of the file under a name; unknown when there is none.
  static ResourceState ofFile(const char* path);

  bool isKnown() const { return kind != Kind::unknown; }
  bool isSameFile(const ResourceState& other) const {
    return kind == Kind::file && other.kind == Kind::file && device == other.device && inode == other.inode;
  }
  bool operator==(const ResourceState& other) const {
    return kind == other.kind && size == other.size && device == other.device && inode == other.inode &&
           changedAt == other.changedAt;
  }
  bool operator!=(const ResourceState& other) const { return !(*this == other); }

  std::uint64_t size = 0;
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::int64_t changedAt = 0;  // nanoseconds
  Kind kind = Kind::unknown;
};

}  // namespace vomsg::detail
