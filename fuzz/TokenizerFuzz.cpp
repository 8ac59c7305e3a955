// The tokens of a value are the value: nothing is lost, repeated or read outside it, in whatever order the steps of a
// tokenizer are taken. The table of boundaries answers as the plain functions do.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "vomsg/foundation/VoMsgBoundary.h"
#include "vomsg/foundation/VoMsgBoundaryTable.h"
#include "vomsg/foundation/VoMsgTokenizer.h"

namespace {

void require(bool holds) {
  if (!holds) std::abort();
}

void readAll(const std::string& value, int state) {
  VoMsgTokenizer tokenizer(value.c_str(), nullptr);
  tokenizer.setState(state);
  std::string all, token;
  while (tokenizer.getNextToken() != VoMsgTokenizer::end) {
    tokenizer.getTokenString(token);
    require(!token.empty());
    all += token;
  }
  require(all == value.c_str());
}

void recoverBoundaries(const std::string& value) {
  VoMsgTokenizer tokenizer(value.c_str(), nullptr);
  const int length = static_cast<int>(std::strlen(value.c_str()));
  std::string token;
  for (std::size_t i = 0; i < value.size(); ++i) {
    tokenizer.setState(value[i] % 5);
    tokenizer.getNextToken(value[i] % 16);
    if (i % 3 == 0) tokenizer.getIllegalBoundary(token);
    tokenizer.getTokenString(token);
    require(tokenizer.getPosition() >= 0 && tokenizer.getPosition() <= length);
  }
}

// Lines up to the last are boundaries, outermost first; each is also asked for as a line.
void matchBoundaries(const std::string& value) {
  std::vector<std::string> lines;
  vomsg::detail::BoundaryTable table;
  VoMsgBoundaryList list;
  for (std::size_t at = 0; at <= value.size() && lines.size() < 40;) {
    const std::size_t end = std::min(value.find('\n', at), value.size());
    lines.emplace_back(value.substr(at, end - at).c_str());
    table.push(lines.back());
    at = end + 1;
  }
  for (const std::string& line : lines) list.insert(list.begin(), line.c_str());
  for (const std::string& line : lines) {
    for (const std::string& candidate : {line, "--" + line, "--" + line + "-- \t"}) {
      const auto match = table.match(candidate);
      std::size_t inner = 0;
      while (inner < list.size() && voGetBoundaryType(candidate.c_str(), 0, list[inner]) == kVoBoundaryNone) ++inner;
      require((match.type == kVoBoundaryNone) == (inner == list.size()));
      if (inner == list.size()) continue;
      require(match.depth == list.size() - 1 - inner);
      require(match.type == voGetBoundaryType(candidate.c_str(), 0, list[inner]));
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string value(reinterpret_cast<const char*>(data), size);
  for (int state = 0; state < 5; ++state) readAll(value, state);
  recoverBoundaries(value);
  matchBoundaries(value);
  return 0;
}
