// What the codecs share.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgMemoryReader.h"
#include "vomsg/foundation/VoMsgMemoryWriter.h"

namespace vomsg::detail {

// What `source` still holds; 0 when it cannot tell.
inline std::uint64_t bytesLeft(VoMsgBufferedReader& source) {
  const std::uint64_t size = source.getSize(), here = source.getOffset();
  return size != 0xFFFFFFFFu && size > here ? size - here : 0;
}

// The string forms, a stream codec run from one C string to another:
// Calls `codec(writer, reader, length)`, which says whether it succeeded, over `text`. The result is the caller's,
// for free(): null for a null `text` and on failure, "" when nothing comes out. A NUL that comes out ends it.
template <class Codec>
char* convertText(const char* text, Codec&& codec) {
  if (!text) return nullptr;
  return guardedOr<char*>(nullptr, [&]() -> char* {
    const std::size_t length = std::strlen(text);
    if (length == 0) return strdup("");
    if (length > static_cast<std::size_t>(std::numeric_limits<long>::max()) ||
        length > std::numeric_limits<unsigned>::max()) {
      return nullptr;
    }
    // The reader's interface takes no const; it only reads.
    VoMsgMemoryReader reader(reinterpret_cast<unsigned char*>(const_cast<char*>(text)), static_cast<unsigned>(length));
    VoMsgMemoryWriter writer;
    if (!reader.open() || !codec(writer, reader, length)) return nullptr;
    const char* result = writer.getData();
    return strdup(result ? result : "");
  });
}

}  // namespace vomsg::detail
