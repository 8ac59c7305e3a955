#include "cli/SafeName.h"

#include <cstdio>

#include "vomsg/mail/SafeName.h"

namespace cli {

std::string safeFileName(unsigned number, std::string_view name, std::string_view contentType) {
  char prefix[16];
  std::snprintf(prefix, sizeof prefix, "%03u_", number);
  return prefix + vomsg::safeFileName(name, contentType);
}

}  // namespace cli
