#include "vomsg/charset/convert/VoMsgStagedConverter.h"

#include <utility>

#include "vomsg/charset/convert/VoMsgAsciiRun.h"

VoErrorCode VoMsgStagedConverter::convertWhole(vomsg::detail::TextStage& stage, bool keepsOnFailure, std::string& out,
                                               const std::string& in) {
  std::string result;
  result.reserve(in.size());
  const VoErrorCode code = stage.convert(vomsg::detail::untilNul(in), true, result);
  if (voFailed(code) && !keepsOnFailure) result.clear();
  out = std::move(result);
  return code;
}
