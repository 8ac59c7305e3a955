#include "vomsg/foundation/VoMsgResourceDump.h"

#include <algorithm>
#include <memory>

#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgDump.h"
#include "vomsg/foundation/VoMsgResourceLocator.h"

void dumpContentResource(std::FILE* out, VoMsgResourceLocator* resource) {
  if (!out || !resource) return;
  const std::unique_ptr<VoMsgBufferedReader> reader(resource->getInputStream(VoMsgResourceLocator::dataPart));
  if (!reader) return;
  char piece[1280];
  for (unsigned rest = reader->getSize(); rest > 0;) {
    const unsigned count = reader->read(piece, std::min<unsigned>(rest, sizeof piece));
    if (count == 0) return;
    dumpMemoryHex(out, piece, count);
    rest -= count;
  }
}
