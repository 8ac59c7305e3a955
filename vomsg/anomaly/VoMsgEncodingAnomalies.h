// What is odd about an encoded body as it stands in the source. Each search reports a kind once, where it stands first.
#pragma once

#include <cstdint>

#include "vomsg/anomaly/VoMsgAnomalySink.h"

class VoMsgBufferedReader;

namespace vomsg::detail {

void findBase64Anomalies(VoMsgBufferedReader& reader, std::uint64_t offset, std::uint64_t length, AnomalySink& sink);
void findQuotedPrintableAnomalies(VoMsgBufferedReader& reader, std::uint64_t offset, std::uint64_t length,
                                  AnomalySink& sink);
void findUuencodeAnomalies(VoMsgBufferedReader& reader, std::uint64_t offset, std::uint64_t length, AnomalySink& sink);
void findBinHexAnomalies(VoMsgBufferedReader& reader, std::uint64_t offset, std::uint64_t length, AnomalySink& sink);

// The records of a TNEF stream: whether they reach its end, with right checksums.
void findTnefAnomalies(VoMsgBufferedReader& reader, std::uint64_t size, AnomalySink& sink);

}  // namespace vomsg::detail
