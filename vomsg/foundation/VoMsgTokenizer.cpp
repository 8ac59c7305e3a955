#include "vomsg/foundation/VoMsgTokenizer.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string_view>

#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/tables/VoMsgDefaultTokens.h"

using vomsg::detail::classifyTokens;

namespace {

constexpr VoMsgTokenEntry kNoEntries[] = {{VoMsgTokenizer::end, nullptr, 0, 0}};
constexpr VoMsgTokenClasses kNoClasses = classifyTokens(kNoEntries, 0);
constexpr VoMsgTokenState kUnknownState = {0, kNoEntries, &kNoClasses};

}  // namespace

VoMsgTokenizer::VoMsgTokenizer(const char* text, const VoMsgTokenTableSet* set)
    : mpSet(set ? set : &vomsg::detail::kDefaultTokens), mpText(text ? text : "") {
  constexpr std::size_t longest = std::numeric_limits<int>::max();
  mTextLength = static_cast<int>(std::min(std::strlen(mpText), longest));
}

int VoMsgTokenizer::getNextToken(int expectedId) {
  if (expectedId != -1) {
    const int index = getIndexFromTokenID(expectedId);
    if (index >= 0 && isToken(index)) return consume(currentState().table[index]);
  }
  if (mPosition >= mTextLength) {
    setToken(mPosition, 0);
    return end;
  }
  if (mState == comment) return getCommentString();

  const VoMsgTokenState& state = currentState();
  VoMsgTokenClasses own;
  if (!state.classes) own = classifyTokens(state.table, state.escape);
  const VoMsgTokenClasses& classes = state.classes ? *state.classes : own;

  const VoMsgTokenEntry* found = nullptr;
  long long at = mPosition;
  while (at < mTextLength) {
    const unsigned char kind = classes.first[static_cast<unsigned char>(mpText[at])];
    if (kind == VoMsgTokenClasses::kText) {
      ++at;
      continue;
    }
    if (kind == VoMsgTokenClasses::kEscape) {
      at += 2;  // what it escapes is text too, whatever it is
      continue;
    }
    const VoMsgTokenEntry* entry = state.table + (kind - 1);
    while (entry->id != 0 && !matchesAt(*entry, static_cast<int>(at))) ++entry;
    if (entry->id != 0) {
      found = entry;
      break;
    }
    ++at;
  }

  if (found && at == mPosition) {
    if (found->id == commentOpen) ++mCommentDepth;
    return consume(*found);
  }
  const int start = mPosition;
  mPosition = capped(at);
  setToken(start, mPosition - start);
  return text;
}

// Nesting is a count, so that a value of nothing but "(" costs no stack.
int VoMsgTokenizer::getCommentString() {
  if (mPosition >= mTextLength) {
    mState = structured;
    setToken(mPosition, 0);
    return end;
  }
  const char first = mpText[mPosition];
  if (first == '(' || first == ')') {
    setToken(mPosition, 1);
    ++mPosition;
    if (first == '(') {
      ++mCommentDepth;
      return commentOpen;
    }
    --mCommentDepth;
    if (mCommentDepth == 0) mState = structured;
    return commentClose;
  }
  long long at = mPosition;
  while (at < mTextLength && mpText[at] != '(' && mpText[at] != ')') at += mpText[at] == '\\' ? 2 : 1;
  const int start = mPosition;
  mPosition = capped(at);
  setToken(start, mPosition - start);
  return commentText;
}

void VoMsgTokenizer::getTokenString(std::string& out) const {
  out.clear();
  if (mTokenLength < 1) return;
  vomsg::detail::guardedOr(false, [&] {
    out.assign(mpToken, static_cast<std::size_t>(mTokenLength));
    return true;
  });
}

void VoMsgTokenizer::getIllegalBoundary(std::string& out) {
  out.clear();
  if (mTokenLength < 1) return;
  std::string_view value(mpToken, static_cast<std::size_t>(mTokenLength));
  long long moved = -1;
  if (const std::size_t semicolonAt = value.find(';'); semicolonAt != value.npos) {
    moved = static_cast<long long>(semicolonAt);
    value = value.substr(0, semicolonAt);
  }
  const std::size_t blanks = std::min(value.find_first_not_of("\t "), value.size());
  value.remove_prefix(blanks);
  value = value.substr(0, value.find_first_of(" \""));
  vomsg::detail::guardedOr(false, [&] {
    out.assign(value);
    return true;
  });
  mPosition = capped(static_cast<long long>(mPosition) - mTokenLength + moved + static_cast<long long>(blanks));
  setToken(mPosition, 1);
}

bool VoMsgTokenizer::isToken(int index) const { return matchesAt(currentState().table[index], mPosition); }

int VoMsgTokenizer::fetchTokenTable() const {
  const VoMsgTokenEntry* table = currentState().table;
  for (int index = 0; table[index].id != 0; ++index)
    if (matchesAt(table[index], mPosition)) return index;
  return -1;
}

int VoMsgTokenizer::getIndexFromTokenID(int id) const {
  const VoMsgTokenEntry* table = currentState().table;
  for (int index = 0; table[index].id != 0; ++index)
    if (table[index].id == id) return index;
  return -1;
}

void VoMsgTokenizer::setToken(int start, int length) {
  const int from = capped(start);
  mpToken = mpText + from;
  mTokenLength = std::max(0, capped(static_cast<long long>(from) + length) - from);
}

const VoMsgTokenState& VoMsgTokenizer::currentState() const {
  if (mState < 0 || static_cast<unsigned>(mState) >= mpSet->count) return kUnknownState;
  return mpSet->states[mState];
}

int VoMsgTokenizer::capped(long long position) const {
  return static_cast<int>(std::clamp<long long>(position, 0, mTextLength));
}

bool VoMsgTokenizer::matchesAt(const VoMsgTokenEntry& entry, int position) const {
  const char* here = mpText + position;
  for (unsigned i = 0; i < entry.length; ++i) {
    if (here[i] != entry.text[i]) return false;
    if (here[i] == '\0') return true;  // both end here
  }
  return true;
}

int VoMsgTokenizer::consume(const VoMsgTokenEntry& entry) {
  const int start = mPosition;
  mPosition = capped(static_cast<long long>(start) + entry.length);
  setToken(start, mPosition - start);
  mState = entry.nextState;
  return entry.id;
}
