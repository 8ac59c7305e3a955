#include "vomsg/foundation/VoMsgDump.h"

#include <algorithm>
#include <cstdint>

namespace {

constexpr unsigned kBytesPerLine = 16;

// One line of up to 16 bytes; false when the stream refuses it.
bool dumpLine(std::FILE* out, const char* data, unsigned length) {
  char hex[64];
  char text[kBytesPerLine + 1];
  int used = std::snprintf(hex, sizeof hex,
                           "%.8x: ", static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(data) & 0xFFFFFFFFu));
  for (unsigned i = 0; i < length; ++i) {
    const unsigned byte = static_cast<unsigned char>(data[i]);
    const char* const gap = i != 0 && i % 4 == 0 ? " " : "";
    used += std::snprintf(hex + used, sizeof hex - static_cast<std::size_t>(used), "%s%.2x", gap, byte);
    text[i] = byte >= 0x20 && byte <= 0x7E ? data[i] : '.';
  }
  text[length] = '\0';
  return std::fprintf(out, "%-54s%-16s\n", hex, text) >= 0;
}

}  // namespace

void dumpMemoryHex(std::FILE* out, const char* data, unsigned length) {
  if (!out || !data) return;
  while (length > 0) {
    const unsigned count = std::min(length, kBytesPerLine);
    if (!dumpLine(out, data, count)) return;
    data += count;
    length -= count;
  }
}
