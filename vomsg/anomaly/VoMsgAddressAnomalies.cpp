#include "vomsg/anomaly/VoMsgValueAnomalies.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/header/VoMsgUserAddress.h"

namespace vomsg::detail {
namespace {

constexpr std::string_view kAddressFields[] = {"From", "Sender", "Reply-To", "To", "Cc", "Bcc"};

struct Shape {
  unsigned ats = 0;  // outside of quotes and comments
  bool hasAngle = false;
  bool hasWordInside = false;  // an encoded word in what a mail program would send to
  bool hasGroup = false;
};

Shape shapeOf(std::string_view address) {
  Shape shape;
  unsigned comments = 0;
  bool isQuoted = false;
  bool isInside = false;
  unsigned outsideAts = 0;
  for (std::size_t i = 0; i < address.size(); ++i) {
    const char c = address[i];
    if (c == '\\')
      ++i;
    else if (c == '"' && comments == 0)
      isQuoted = !isQuoted;
    else if (isQuoted)
      continue;
    else if (c == '(')
      ++comments;
    else if (c == ')' && comments > 0)
      --comments;
    else if (comments > 0)
      continue;
    else if (c == '<')
      shape.hasAngle = isInside = true;
    else if (c == '>')
      isInside = false;
    else if (c == ':' && !isInside)
      shape.hasGroup = true;
    else if (c == '@')
      ++(isInside ? shape.ats : outsideAts);
    else if (c == '=' && isInside && address.substr(i, 2) == "=?")
      shape.hasWordInside = true;
  }
  if (!shape.hasAngle) shape.ats = outsideAts;
  return shape;
}

}  // namespace

void findAddressAnomalies(const std::vector<RawField>& fields, std::uint64_t base, AnomalySink& sink) {
  for (const RawField& field : fields) {
    bool isList = false;
    for (const std::string_view name : kAddressFields) isList = isList || equalNoCase(field.name, name);
    if (!isList) continue;
    unsigned count = 0;
    std::string_view rest = field.value;
    std::string_view address;
    while (cutAddress(rest, address)) {
      const auto at = base + field.valueOffset + static_cast<std::size_t>(address.data() - field.value.data());
      const Shape shape = shapeOf(address);
      if (shape.ats > 1 && address.find("<@") == address.npos)  // a route has several, and nobody uses routes
        sink.add(kVoAnomalyAddressSeveralAt, at, address.size());
      if (shape.hasWordInside) sink.add(kVoAnomalyAddressEncodedWord, at, address.size());
      if (shape.hasGroup) sink.add(kVoAnomalyAddressGroup, at, address.size());
      if (shape.ats > 0) ++count;
    }
    if (count > 1 && equalNoCase(field.name, "From"))
      sink.add(kVoAnomalyFromSeveral, base + field.offset, field.length());
  }
}

}  // namespace vomsg::detail
