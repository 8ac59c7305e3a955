#include "vomsg/charset/detect/VoMsgCharSetAnalysis.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "vomsg/charset/detect/VoMsgCharSetDetectorFacade.h"
#include "vomsg/charset/detect/VoMsgSBCSGroupDetector.h"
#include "vomsg/filter/VoMsgTextFilterSession.h"
#include "vomsg/filter/VoMsgTextFormatFilter.h"
#include "vomsg/filter/VoMsgTextFormatFilterPool.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgGuard.h"

namespace {

constexpr unsigned kBlock = 4096;

// Makes `next`, what an operation returned that was handed `session`, the session to go on with.
template <class Session>
bool goOn(std::unique_ptr<Session>& session, Session* next) {
  if (next != session.get()) session.reset(next);
  return next != nullptr;
}

const VoMsgDetectorSession* choiceOf(const VoMsgDetectorSession* group) {
  return static_cast<const VoMsgGroupDetectorSession*>(group)->getPrefSession();
}

bool isSingleByteChoice(const VoMsgDetectorSession* root) {
  const VoMsgDetectorSession* const choice = choiceOf(root);
  return choice && dynamic_cast<const VoMsgSBCSGroupDetector*>(choice->getDetector());
}

// The detector at the end of the chain of choices.
const VoMsgCharSetDetector* deciderOf(const VoMsgDetectorSession* session) {
  while (session && dynamic_cast<const VoMsgGroupDetector*>(session->getDetector())) session = choiceOf(session);
  return session ? session->getDetector() : nullptr;
}

bool mayHoldEscapes(std::string_view text) { return text.find('\x1B') != text.npos || text.find('~') != text.npos; }

bool isAscii(const char* text, unsigned size) {
  unsigned char all = 0;
  for (unsigned i = 0; i < size; ++i) all = static_cast<unsigned char>(all | static_cast<unsigned char>(text[i]));
  return all < 0x80;
}

}  // namespace

// Constructed on first use, because other static objects may ask while the library is loading, and touched below, so
// that loading builds it in any case and no analysis pays for it.
VoMsgCharSetAnalysis* VoMsgCharSetAnalysis::getInstance() {
  static VoMsgCharSetAnalysis analysis;
  return &analysis;
}

namespace {
[[maybe_unused]] const VoMsgCharSetAnalysis* const kBuiltAtLoad = VoMsgCharSetAnalysis::getInstance();
}  // namespace

VoMsgCharSetAnalysis::VoMsgCharSetAnalysis()
    : facade(std::make_unique<VoMsgCharSetDetectorFacade>()),
      filterPool(std::make_unique<VoMsgTextFormatFilterPool>()) {}

VoMsgCharSetAnalysis::~VoMsgCharSetAnalysis() = default;

char* VoMsgCharSetAnalysis::analysisText(VoMsgBufferedReader* reader, const char* format, char*& charset) {
  Evidence evidence;
  return analysisText(reader, format, charset, evidence);
}

// A text of ASCII alone has no charset to recognise, but some Hungarian models count its letters and may take it for
// theirs. So what a single-byte detector finds is told only with the first byte above 0x7F; the choice itself is made.
char* VoMsgCharSetAnalysis::analysisText(VoMsgBufferedReader* reader, const char* format, char*& charset,
                                         Evidence& evidence) {
  charset = nullptr;
  evidence = Evidence();
  VoMsgTextFormatFilter* const filter = reader ? filterPool->getFilter(format) : nullptr;
  if (!filter) return nullptr;
  return vomsg::detail::guardedOr<char*>(nullptr, [&]() -> char* {
    std::unique_ptr<VoMsgTextFilterSession> filtered;
    std::unique_ptr<VoMsgDetectorSession> detected;
    bool isAllAscii = true;
    bool isReadAhead = false;
    char blocks[2][kBlock];
    unsigned size = 0;
    for (unsigned turn = 0;; turn = 1 - turn) {
      if (!isReadAhead) size = reader->read(blocks[turn], kBlock);
      if (size == 0) return nullptr;
      const char* const block = blocks[turn];
      evidence.bytes += size;
      if (!goOn(filtered, filter->filterText(block, size, filtered.get()))) return nullptr;
      if (const char* const named = filtered->getCharSet()) return charset = ::strdup(named);
      const char* const text = filtered->getRecentContext();
      const unsigned length = filtered->getRecentContextSize();
      if (!text && length > 0) return nullptr;
      isAllAscii = isAllAscii && isAscii(text, length);
      // Of ASCII alone only escape sequences can tell something. Most texts are short and have none: then what comes
      // next is that nothing comes.
      isReadAhead = isAllAscii && !detected && !mayHoldEscapes({text, length});
      if (isReadAhead) size = reader->read(blocks[1 - turn], kBlock);
      if (isReadAhead && size == 0) return nullptr;
      const bool isChosen = detected && detected->getState() == VoMsgDetectorSession::kFound;
      if (!isChosen && !goOn(detected, facade->handleData(text, length, detected.get()))) return nullptr;
      if (detected->getState() == VoMsgDetectorSession::kNotMe || detected->getState() == VoMsgDetectorSession::kError)
        return nullptr;
      if (detected->getState() == VoMsgDetectorSession::kDetecting) continue;
      if (isAllAscii && isSingleByteChoice(detected.get())) continue;
      const char* const name = detected->getCharSet();
      if (!name) return nullptr;
      evidence.detector = deciderOf(detected.get());
      return charset = ::strdup(name);
    }
  });
}
