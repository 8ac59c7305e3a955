// What is odd about the lines and fields of a header block.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "vomsg/anomaly/VoMsgAnomalySink.h"
#include "vomsg/anomaly/VoMsgRawFields.h"

namespace vomsg::detail {

// Looks through the lines of `block`, which begins at `base` of the source, and returns its fields.
std::vector<RawField> findLineAnomalies(std::string_view block, std::uint64_t base, AnomalySink& sink);
// Fields that stand several times. `fields` are those of a block at `base`.
void findRepeatedFields(const std::vector<RawField>& fields, std::uint64_t base, AnomalySink& sink);
// More fields, addresses or parameters than the limits allow, in a block of the top level or below it.
void findPassedLimits(const std::vector<RawField>& fields, std::uint64_t base, bool isChild, AnomalySink& sink);

}  // namespace vomsg::detail
