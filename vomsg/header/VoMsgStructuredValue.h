// The value of Content-Type, Content-Transfer-Encoding or Content-Disposition, cut into main value and parameters.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vomsg::detail {

struct StructuredParameter {
  std::string name;
  std::string value;
  bool isEncoded = false;
};

// Meant to be reused: strings keep their storage, so `count` says how many parameters are meant.
struct StructuredValue {
  std::string value;
  std::vector<StructuredParameter> parameters;
  std::size_t count = 0;
  bool needsQuoting = false;  // a boundary stands without the quotes it needs

  // The first parameter of that name (case does not count), or null.
  const StructuredParameter* find(std::string_view name) const;
};

// At most `maxParameters` parameters are read when it is above 0. Linear, whatever the text.
//
// The main value is what stands before the first ";", without blanks, comments and quotes; from an encoded word on it
// is taken as written. A parameter is a name, "=" and a value: quoted (backslashes removed), an encoded word as
// written, or plain text up to a blank, a comment or ";". A name without "=" is dropped. Two rules for "boundary"
// alone: without quotes it is everything up to ";" (senders forget the quotes around blanks, and their delimiter lines
// hold those blanks), and an empty quoted one is a double quote.
void parseStructuredValue(StructuredValue& out, std::string_view text, int maxParameters);

// The boundary of a multipart: the last plain one counts; pieces of one (RFC 2231) where there is none. False without
// either.
bool findBoundary(const StructuredValue& type, std::string& boundary);

// The same main value (case does not count) and the same parameters: in order, names without case, values exactly.
bool sameStructuredValue(const StructuredValue& a, const StructuredValue& b);

}  // namespace vomsg::detail
