#include "vomsg/foundation/VoMsgKeyedHash.h"

#include <chrono>
#include <cstring>
#include <random>

namespace vomsg::detail {
namespace {

struct State {
  std::uint64_t a, b, c, d;

  static constexpr std::uint64_t rotated(std::uint64_t x, unsigned by) { return (x << by) | (x >> (64 - by)); }

  void round() {
    a += b;
    b = rotated(b, 13) ^ a;
    a = rotated(a, 32);
    c += d;
    d = rotated(d, 16) ^ c;
    a += d;
    d = rotated(d, 21) ^ a;
    c += b;
    b = rotated(b, 17) ^ c;
    c = rotated(c, 32);
  }

  void take(std::uint64_t word) {
    d ^= word;
    round();
    a ^= word;
  }
};

}  // namespace

std::uint64_t keyedHash(const HashKey& key, std::string_view text) noexcept {
  State state{0x736f6d6570736575u ^ key.first, 0x646f72616e646f6du ^ key.second, 0x6c7967656e657261u ^ key.first,
              0x7465646279746573u ^ key.second};
  std::uint64_t last = static_cast<std::uint64_t>(text.size()) << 56;
  while (text.size() >= 8) {
    std::uint64_t word;
    std::memcpy(&word, text.data(), 8);
    state.take(word);
    text.remove_prefix(8);
  }
  for (std::size_t i = 0; i < text.size(); ++i)
    last |= static_cast<std::uint64_t>(static_cast<unsigned char>(text[i])) << (8 * i);
  state.take(last);
  state.c ^= 0xff;
  state.round();
  state.round();
  state.round();
  return state.a ^ state.b ^ state.c ^ state.d;
}

const HashKey& processHashKey() noexcept {
  static const HashKey key = []() noexcept {
    // Where the system gives no random bytes, the clock and the place of the library in memory must do.
    const auto now = static_cast<std::uint64_t>(std::chrono::high_resolution_clock::now().time_since_epoch().count());
    HashKey drawn{now, reinterpret_cast<std::uintptr_t>(&processHashKey)};
    try {
      std::random_device device;
      drawn.first ^= static_cast<std::uint64_t>(device()) << 32 | device();
      drawn.second ^= static_cast<std::uint64_t>(device()) << 32 | device();
    } catch (...) {
    }
    return drawn;
  }();
  return key;
}

}  // namespace vomsg::detail
