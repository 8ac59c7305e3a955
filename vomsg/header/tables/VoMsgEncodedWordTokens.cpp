#include "vomsg/header/tables/VoMsgEncodedWordTokens.h"

#include "vomsg/foundation/VoMsgTokenizer.h"

namespace vomsg::detail {
namespace {

using T = VoMsgTokenizer;

constexpr VoMsgTokenEntry kValue[] = {
    {T::encodedStart, "=?", 2, wordAtom},    {T::whitespace, "\t", 1, wordValue}, {T::whitespace, " ", 1, wordValue},
    {T::carriageReturn, "\r", 1, wordValue}, {T::lineFeed, "\n", 1, wordValue},   {T::end, nullptr, 0, 0},
};
constexpr VoMsgTokenEntry kAtom[] = {
    {T::question, "?", 1, wordAtom},        {T::whitespace, "\t", 1, wordAtom}, {T::whitespace, " ", 1, wordAtom},
    {T::carriageReturn, "\r", 1, wordAtom}, {T::lineFeed, "\n", 1, wordAtom},   {T::end, nullptr, 0, 0},
};
constexpr VoMsgTokenEntry kNone[] = {
    {T::end, nullptr, 0, 0},
};
constexpr VoMsgTokenEntry kText[] = {
    {T::encodedEnd, "?=", 2, wordValue},
    {T::carriageReturn, "\r", 1, wordText},
    {T::lineFeed, "\n", 1, wordText},
    {T::end, nullptr, 0, 0},
};

constexpr VoMsgTokenClasses kValueClasses = classifyTokens(kValue, 0);
constexpr VoMsgTokenClasses kAtomClasses = classifyTokens(kAtom, 0);
constexpr VoMsgTokenClasses kNoClasses = classifyTokens(kNone, 0);
constexpr VoMsgTokenClasses kTextClasses = classifyTokens(kText, 0);

constexpr VoMsgTokenState kStates[] = {
    {0, kValue, &kValueClasses},
    {0, kAtom, &kAtomClasses},
    {0, kNone, &kNoClasses},
    {0, kText, &kTextClasses},
};

}  // namespace

constexpr VoMsgTokenTableSet kEncodedWordTokens{kStates, sizeof kStates / sizeof kStates[0]};

}  // namespace vomsg::detail
