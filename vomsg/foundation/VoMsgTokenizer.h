// Cuts a structured header value into tokens, driven by tables of states.
#pragma once

#include <string>

#include "vomsg/foundation/VoMsgExport.h"
#include "vomsg/foundation/VoMsgTokenTableSet.h"

class VOMSG_API VoMsgTokenizer {
 public:
  // Token ids of the default tables, and those returned besides a table's own.
  enum Token : int {
    end = 0,
    semicolon = 1,
    commentOpen = 2,
    commentClose = 3,
    quote = 4,
    encodedStart = 5,
    encodedEnd = 6,
    question = 7,
    equals = 8,
    colon = 9,
    whitespace = 10,
    carriageReturn = 11,
    lineFeed = 12,
    text = 100,
    commentText = 300
  };
  // States of the default tables.
  enum State : int { structured = 0, quoted = 1, comment = 2, parameterValue = 3 };

  // Starts in state 0 at position 0. `text` and `set` are borrowed; a null set selects the default tables, a null
  // `text` is an empty one. Positions never leave the text, of which the first 2^31 - 1 bytes count.
  VoMsgTokenizer(const char* text, const VoMsgTokenTableSet* set);

  // The next token's id; 0 at the end of the text. When `expectedId` is not -1 and the first entry of that id
  // matches here, it is taken before the state's table is tried in order.
  int getNextToken(int expectedId = -1);
  // The current token's text; empty when it has no length.
  void getTokenString(std::string& out) const;
  // Recovers a boundary value written without quotes from the current token: what stands before its first ";",
  // without leading blanks, up to a blank or a double quote. Moves back to that ";" plus the number of leading
  // blanks, or to one before the token plus that number when it holds no ";". This is kept exactly, and capped
  // to the text.
  void getIllegalBoundary(std::string& out);

  void setState(int state) { mState = state; }  // a state the set does not have knows no tokens
  int getState() const { return mState; }
  int getPosition() const { return mPosition; }

  // Steps of getNextToken.
  bool isToken(int index) const;          // does that entry of the state's table match here?
  int fetchTokenTable() const;            // index of the first entry that matches here, or -1
  int getIndexFromTokenID(int id) const;  // index of the first entry with that id, or -1
  int getCommentString();                 // the next token inside a comment
  void setToken(int start, int length);

 private:
  const VoMsgTokenState& currentState() const;
  int capped(long long position) const;
  bool matchesAt(const VoMsgTokenEntry& entry, int position) const;
  int consume(const VoMsgTokenEntry& entry);

  const VoMsgTokenTableSet* mpSet;
  int mState = 0;
  int mPosition = 0;
  const char* mpText;
  const char* mpToken = nullptr;
  int mTokenLength = 0;
  int mCommentDepth = 0;
  int mTextLength = 0;
};
