// The limits against abusive header blocks, as they hold for one block.
#pragma once

#include <cstddef>

#include "vomsg/foundation/VoMsgOptions.h"

namespace vomsg::detail {

struct HeaderLimits {
  int fields = 0;      // more fields fail; <= 0: no limit
  int addresses = 0;   // more addresses in one of the four lists fail; <= 0: no limit
  int parameters = 0;  // as many parameters in one field fail already; <= 0: no limit

  // A block below the top level may be exempt, limit by limit; then nothing is cut short there either.
  static HeaderLimits of(bool isChild) {
    HeaderLimits limits;
    if (!isChild || !(VoMsgExtraOption & kVoOptionNoChildHeaderLimit)) limits.fields = MaxEntityHeaders;
    if (!isChild || !NoMaxAddressForChild) limits.addresses = MaxHeaderAddress;
    if (!isChild || !(VoMsgExtraOption & kVoOptionNoChildParamLimit)) limits.parameters = MaxHeaderParams;
    return limits;
  }

  static bool isAbove(std::size_t count, int limit) { return limit > 0 && count > static_cast<std::size_t>(limit); }
  bool tooManyFields(std::size_t count) const { return isAbove(count, fields); }
  bool tooManyAddresses(std::size_t count) const { return isAbove(count, addresses); }
  // One less than might be expected: a field with exactly the limit fails, and always has.
  bool tooManyParameters(std::size_t count) const { return isAbove(count + 1, parameters); }
};

}  // namespace vomsg::detail
