// What is odd inside the values of fields: encoded words, addresses, file names.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "vomsg/anomaly/VoMsgAnomalySink.h"
#include "vomsg/anomaly/VoMsgRawFields.h"

class VoMsgEntity;

namespace vomsg::detail {

void findWordAnomalies(const std::vector<RawField>& fields, std::uint64_t base, AnomalySink& sink);
void findAddressAnomalies(const std::vector<RawField>& fields, std::uint64_t base, AnomalySink& sink);
// Compares the names in the block as they stand with what the entity makes of them.
void findNameAnomalies(const std::vector<RawField>& fields, std::uint64_t base, const VoMsgEntity& entity,
                       AnomalySink& sink);
// What is odd about one decoded name, in UTF-8, that stands at [offset, offset + length).
void findNameCharacters(std::string_view name, std::uint64_t offset, std::uint64_t length, AnomalySink& sink);

}  // namespace vomsg::detail
