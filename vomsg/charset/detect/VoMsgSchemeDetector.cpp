#include "vomsg/charset/detect/VoMsgSchemeDetector.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

namespace {

constexpr char kEscape = '\x1B';

bool isRemembered(char c) { return (c & 0x80) == 0 || c == '\xA0'; }

// For each byte whether it leaves all four machines at their start. Most of a text are such bytes, and then a look here
// is all that they cost.
class QuietBytes {
 public:
  template <std::size_t N>
  explicit QuietBytes(const VoMsgCodingStateMachine (&machines)[N]) {
    mQuiet.fill(true);
    for (VoMsgCodingStateMachine machine : machines) {
      for (unsigned byte = 0; byte < mQuiet.size(); ++byte) {
        machine.currentState = VoMsgCodingStateMachine::kStart;
        if (machine.nextState(static_cast<unsigned char>(byte)) != VoMsgCodingStateMachine::kStart)
          mQuiet[byte] = false;
      }
    }
  }
  bool operator[](unsigned char byte) const { return mQuiet[byte]; }

 private:
  std::array<bool, 256> mQuiet;
};

}  // namespace

// The order is part of what is found: the last machine that is active sees each byte first, so "ESC $ B" is ISO-2022-JP
// before ISO-2022-CN has a say, and "ESC ( B" alone retires nobody and is ISO-2022-CN.
VoMsgSchemeDetectorSession::VoMsgSchemeDetectorSession(VoMsgCharSetDetector* detector)
    : VoMsgDetectorSession(detector),
      machines{VoMsgCodingStateMachine(&HZSMModel), VoMsgCodingStateMachine(&gISO2022CNSMModel),
               VoMsgCodingStateMachine(&ISO2022JPSMModel), VoMsgCodingStateMachine(&ISO2022KRSMModel)} {}

VoMsgSchemeDetectorSession::~VoMsgSchemeDetectorSession() { std::free(charset); }

void VoMsgSchemeDetectorSession::found(const char* name) {
  char* const copy = ::strdup(name);
  if (!copy) return;
  std::free(charset);
  charset = copy;
  setState(kFound);
}

// A "{" counts after a "~" however many bytes above 0x7F lie between them, and across chunks.
void VoMsgSchemeDetectorSession::scanForEscapes(const char* data, unsigned length) {
  const char* const end = data + length;
  const auto lastRememberedBefore = [&](const char* at) {
    while (at != data)
      if (isRemembered(*--at)) return *at;
    return lastByte;
  };
  escState = length > 0 && std::memchr(data, kEscape, length) != nullptr;
  for (const char* at = data; !escState && at != end; ++at) {
    at = static_cast<const char*>(std::memchr(at, '{', static_cast<std::size_t>(end - at)));
    if (!at) break;
    escState = lastRememberedBefore(at) == '~';
  }
  lastByte = lastRememberedBefore(end);
}

void VoMsgSchemeDetectorSession::runMachines(const unsigned char* data, unsigned length) {
  static const QuietBytes kQuiet(VoMsgSchemeDetectorSession(getDetector()).machines);
  const auto allAtStart = [&] {
    for (int i = 0; i < activeCount; ++i)
      if (machines[i].currentState != VoMsgCodingStateMachine::kStart) return false;
    return true;
  };
  bool isQuiet = allAtStart();
  for (const unsigned char* at = data; at != data + length; ++at) {
    if (isQuiet && kQuiet[*at]) continue;
    for (int i = activeCount - 1; i >= 0; --i) {
      switch (machines[i].nextState(*at)) {
        case VoMsgCodingStateMachine::kFailed:
          if (--activeCount == 0) {
            setState(kNotMe);
            return;
          }
          std::swap(machines[i], machines[activeCount]);
          break;
        case VoMsgCodingStateMachine::kItsMe:
          found(machines[i].model->name);
          return;
        default:
          break;
      }
    }
    isQuiet = allAtStart();
  }
}

VoMsgDetectorSession* VoMsgSchemeDetector::handleData(const char* data, unsigned length,
                                                      VoMsgDetectorSession* session) {
  if (!session) return nullptr;
  auto* const scheme = static_cast<VoMsgSchemeDetectorSession*>(session);
  if (length >= 2 && (std::memcmp(data, "\xFE\xFF", 2) == 0 || std::memcmp(data, "\xFF\xFE", 2) == 0)) {
    scheme->found(data[0] == '\xFE' ? "UTF-16BE" : "UTF-16LE");
    return session;
  }
  if (!scheme->escState) scheme->scanForEscapes(data, length);
  if (scheme->escState) scheme->runMachines(reinterpret_cast<const unsigned char*>(data), length);
  return session;
}

const char* VoMsgSchemeDetector::getCharSetName(VoMsgDetectorSession* session) {
  return session ? static_cast<VoMsgSchemeDetectorSession*>(session)->getFoundCharSet() : nullptr;
}

VoMsgDetectorSession* VoMsgSchemeDetector::createSession() {
  return new (std::nothrow) VoMsgSchemeDetectorSession(this);
}
