#include "vomsg/foundation/VoUUID.h"

#include <cstdlib>
#include <cstring>
#include <ctime>

#include "vomsg/foundation/VoMsgLogLine.h"
#include "vomsg/foundation/VoMsgRandomDraws.h"

using vomsg::detail::RandomDraws;

namespace {

constexpr char kLogSource[] = "VoUUID";

void storeLittleEndian(std::uint8_t* out, std::uint32_t value) {
  for (int i = 0; i < 4; ++i) out[i] = static_cast<std::uint8_t>(value >> (8 * i));
}

// The `digits` low hexadecimal digits of `value`; the end of what was written.
char* putHex(char* out, std::uint32_t value, int digits) {
  for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4) *out++ = "0123456789ABCDEF"[(value >> shift) & 15];
  return out;
}

}  // namespace

VoErrorCode vo_createUUID(VoUUID_t* uuid) {
  if (!uuid) return VO_LOGGED("", kVoBadArgument);
  // The order of the draws is part of the contract: a host that seeds the generator gets the same identifiers again.
  RandomDraws random;
  uuid->Data1 = random.next();
  const std::uint32_t second = random.next();
  uuid->Data2 = static_cast<std::uint16_t>(second);
  uuid->Data3 = static_cast<std::uint16_t>(second >> 16);
  storeLittleEndian(uuid->Data4, random.next());
  storeLittleEndian(uuid->Data4 + 4, random.next());
  return kVoSuccess;
}

bool vo_isEqualUUID(const VoUUID_t* a, const VoUUID_t* b) {
  static_assert(sizeof(VoUUID_t) == 16, "compared as bytes, so there must be no padding");
  if (!a || !b) return a == b;
  return std::memcmp(a, b, sizeof *a) == 0;
}

VoErrorCode vo_stringFromUUID(const VoUUID_t* uuid, char* out) {
  if (!uuid || !out) return VO_LOGGED("", kVoNoMemory);
  // Written out by hand: every message and entity makes one, and a formatted print costs ten times as much.
  out = putHex(out, uuid->Data1, 8);
  *out++ = '-';
  out = putHex(out, uuid->Data2, 4);
  *out++ = '-';
  out = putHex(out, uuid->Data3, 4);
  *out++ = '-';
  for (int i = 0; i < 8; ++i) {
    if (i == 2) *out++ = '-';
    out = putHex(out, uuid->Data4[i], 2);
  }
  *out = '\0';
  return kVoSuccess;
}

VoMsgUUID_INIT::VoMsgUUID_INIT() {
  const std::time_t now = std::time(nullptr);
  RandomDraws().seed(static_cast<long>(now));
  std::srand(static_cast<unsigned>(now));
}

VoMsgUUID_INIT gVoMsgUUIDInit;
