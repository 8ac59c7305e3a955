#include "vomsg/foundation/tables/VoMsgDefaultTokens.h"

#include "vomsg/foundation/VoMsgTokenizer.h"

namespace vomsg::detail {
namespace {

using T = VoMsgTokenizer;

constexpr VoMsgTokenEntry kStructured[] = {
    {T::semicolon, ";", 1, T::structured},     {T::commentOpen, "(", 1, T::comment},
    {T::commentClose, ")", 1, T::structured},  {T::quote, "\"", 1, T::quoted},
    {T::encodedStart, "=?", 2, T::structured}, {T::encodedEnd, "?=", 2, T::structured},
    {T::question, "?", 1, T::structured},      {T::equals, "=", 1, T::structured},
    {T::colon, ":", 1, T::structured},         {T::whitespace, "\t", 1, T::structured},
    {T::whitespace, " ", 1, T::structured},    {T::carriageReturn, "\r", 2, T::structured},
    {T::lineFeed, "\n", 2, T::structured},     {T::end, nullptr, 0, 0},
};
constexpr VoMsgTokenEntry kQuoted[] = {
    {T::quote, "\"", 1, T::structured},
    {T::end, nullptr, 0, 0},
};
constexpr VoMsgTokenEntry kComment[] = {
    {T::commentOpen, "(", 1, T::comment},
    {T::commentClose, ")", 1, T::structured},
    {T::end, nullptr, 0, 0},
};
constexpr VoMsgTokenEntry kParameterValue[] = {
    {T::semicolon, ";", 1, T::structured},
    {T::end, nullptr, 0, 0},
};

constexpr VoMsgTokenClasses kStructuredClasses = classifyTokens(kStructured, 0);
constexpr VoMsgTokenClasses kQuotedClasses = classifyTokens(kQuoted, 1);
constexpr VoMsgTokenClasses kCommentClasses = classifyTokens(kComment, 1);
constexpr VoMsgTokenClasses kParameterValueClasses = classifyTokens(kParameterValue, 1);

constexpr VoMsgTokenState kStates[] = {
    {0, kStructured, &kStructuredClasses},
    {1, kQuoted, &kQuotedClasses},
    {1, kComment, &kCommentClasses},
    {1, kParameterValue, &kParameterValueClasses},
};

}  // namespace

constexpr VoMsgTokenTableSet kDefaultTokens{kStates, sizeof kStates / sizeof kStates[0]};

}  // namespace vomsg::detail
