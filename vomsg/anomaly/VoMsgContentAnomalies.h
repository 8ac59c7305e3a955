// What is odd about decoded content: a text against its label, the first bytes against the declared type.
#pragma once

#include <cstdint>
#include <string_view>

#include "vomsg/anomaly/VoMsgAnomalySink.h"

class VoMsgBufferedReader;

namespace vomsg::detail {

// The content of a part, decoded, as the next `size` bytes of a reader.
struct DecodedContent {
  std::string_view type;     // "text/plain"; as declared
  std::string_view charset;  // empty: none is declared
  std::uint64_t bodyOffset;  // where the body stands in the source, for the entries
  std::uint64_t bodySize;
};

void findTextAnomalies(VoMsgBufferedReader& reader, std::uint64_t size, const DecodedContent& content,
                       AnomalySink& sink);
void findTypeAnomalies(VoMsgBufferedReader& reader, std::uint64_t size, const DecodedContent& content,
                       AnomalySink& sink);

}  // namespace vomsg::detail
