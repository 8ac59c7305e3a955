// A hash for tables whose keys a sender chooses (SipHash, one round per word and three to finish), under a key that is
// drawn once per process: without it nobody can prepare keys that all land in one slot.
#pragma once

#include <cstdint>
#include <string_view>

namespace vomsg::detail {

struct HashKey {
  std::uint64_t first;
  std::uint64_t second;
};

std::uint64_t keyedHash(const HashKey& key, std::string_view text) noexcept;
const HashKey& processHashKey() noexcept;

}  // namespace vomsg::detail
